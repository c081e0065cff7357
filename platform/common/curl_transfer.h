#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/result.h"
#include "platform/common/curl_connections.h"
#include "platform/common/curl_headers.h"
#include "platform/common/http_target.h"
#include "platform/http_session.h"
#include "platform/transport_error.h"

namespace quillmar {

struct EasyCleanup {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using EasyHandle = std::unique_ptr<CURL, EasyCleanup>;

// The same for all transfers of a session.
struct TransferSettings {
  // Trusted authorities, by hashed names and in one file; empty for none.
  std::string caDirectory;
  std::string caFile;
  std::string certificates;  // PEM; replaces both unless empty
  std::size_t sizeLimit = 0;
  std::chrono::seconds longestTransfer{0};
  std::chrono::seconds longestIdle{0};
  std::function<std::chrono::steady_clock::time_point()> now;
};

// One request in progress: its libcurl handle and what has arrived. Session's thread only.
class CurlTransfer {
 public:
  using Clock = std::chrono::steady_clock;

  CurlTransfer(HttpRequest request, HttpSession::Completion completion, const TransferSettings& settings,
               CurlConnections& connections);
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;
  ~CurlTransfer() { request_.wipeSecrets(); }

  // Fails if the request can't be sent. Called first.
  Result<void> prepare() { return setTarget(HttpTarget::parse(request_.url)); }
  bool hasSameOrigin(const CurlTransfer& other) const { return target_->hasSameOrigin(*other.target_); }

  // Sets up the handle. The request goes out on a kept connection if there is one, else on a new one.
  enum class On { anyConnection, newConnection };
  void begin(EasyHandle handle, On on = On::anyConnection);
  CURL* handle() const { return handle_.get(); }
  bool isConnected() const { return connected_; }
  EasyHandle takeHandle() { return std::move(handle_); }

  // When the transfer times out, without progress or in total.
  Clock::time_point deadline() const;

  // Called when libcurl has finished. Returns the real result: libcurl reports success for an answer whose
  // headers were cut.
  CURLcode end(CURLcode code);
  // Whether the request must be sent again, on a new connection. True if it was not sent because the kept
  // connection was unusable, and for a GET whose kept connection ended before the status line.
  bool needsNewConnection(CURLcode code) const;

  // Whether the answer is a redirect. `redirect` then prepares the next request, or says why it can't be
  // followed.
  bool isRedirect() const;
  Result<void> redirect();

  void complete(CURLcode code, bool hasNetwork);
  void fail(const TransportError& error);

  static CurlTransfer& of(CURL* handle);

 private:
  Result<void> setTarget(Result<HttpTarget> target);
  void setUpMethod();
  void setUpHeaders();
  TransportError errorOf(CURLcode code, bool hasNetwork) const;
  std::string redirectLocation() const;
  int status() const;
  std::optional<Date> date() const;

  void madeProgress() { lastProgress_ = settings_.now(); }
  bool takesHeader(std::string_view line);
  bool mayBeSent(const char* localAddress, int localPort);
  bool isFitForReuse() const;

  static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count, void* self);
  static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self);
  static int onConnected(void* self, char*, char* localAddress, int, int localPort);
  static int onProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent);
  static curl_socket_t openSocket(void* self, curlsocktype purpose, curl_sockaddr* address);
  static int closeSocket(void* connections, curl_socket_t socket);

  HttpRequest request_;
  HttpSession::Completion completion_;
  const TransferSettings& settings_;
  CurlConnections& connections_;
  EasyHandle handle_;
  std::optional<HttpTarget> target_;
  CurlHeaders headers_;
  int redirects_ = 0;
  std::string body_;
  bool connected_ = false;
  bool reused_ = false;  // sent on a kept connection
  bool unfit_ = false;   // a kept connection was rejected before anything was sent
  bool isHttp2_ = false;
  bool headersEnded_ = false;
  std::size_t headerSize_ = 0;
  curl_socket_t socket_ = CURL_SOCKET_BAD;  // HTTP/1.1 only
  curl_off_t sent_ = 0;
  const Clock::time_point start_;
  Clock::time_point lastProgress_ = start_;
};

}  // namespace quillmar
