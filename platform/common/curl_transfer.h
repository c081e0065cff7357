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
#include "platform/common/http_target.h"
#include "platform/http_session.h"
#include "platform/transport_error.h"

namespace quillmar {

struct EasyCleanup {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using EasyHandle = std::unique_ptr<CURL, EasyCleanup>;

// What all transfers of a session have in common.
struct TransferSettings {
  // Whom to trust: whoever is in this folder, by hashes, and in this file; empty for neither.
  std::string caDirectory;
  std::string caFile;
  std::string certificates;  // PEM, in place of both where there is any
  std::size_t sizeLimit = 0;
  std::chrono::seconds longestTransfer{0};
  std::chrono::seconds longestIdle{0};
  std::function<std::chrono::steady_clock::time_point()> now;
};

// One data task on its way: a handle of libcurl set up for it, and what has come so far. Used on the
// session's thread.
class CurlTransfer {
 public:
  using Clock = std::chrono::steady_clock;

  CurlTransfer(HttpRequest request, HttpSession::Completion completion, const TransferSettings& settings,
               CurlConnections& connections);
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;
  ~CurlTransfer() { request_.wipeSecrets(); }

  // Tells why the request can't be sent. It comes first.
  Result<void> prepare() { return aim(HttpTarget::parse(request_.url)); }
  bool hasSameOrigin(const CurlTransfer& other) const { return target_->hasSameOrigin(*other.target_); }

  // Sets the handle up for the request, which goes out on a kept connection if there is one, or on one of its
  // own.
  enum class On { anyConnection, newConnection };
  void begin(EasyHandle handle, On on = On::anyConnection);
  CURL* handle() const { return handle_.get(); }
  bool isConnected() const { return connected_; }
  EasyHandle takeHandle() { return std::move(handle_); }

  // When it has been without progress for too long, or has gone on for ever.
  Clock::time_point deadline() const;

  // Once libcurl is done with it. Returns how it really ended: libcurl takes an answer whose headers were cut
  // for a whole one.
  CURLcode end(CURLcode code);
  // Whether the request must begin anew, on a new connection: it was never sent, because the kept connection
  // was no good; or it is a GET, and the kept connection ended before the first line of an answer.
  bool needsNewConnection(CURLcode code) const;

  // Whether the answer that has come asks to look elsewhere; then it must begin anew, or the error says why
  // it can't.
  bool isRedirect() const;
  Result<void> redirect();

  void complete(CURLcode code, bool hasNetwork);
  void fail(const TransportError& error);

  static CurlTransfer& of(CURL* handle);

 private:
  // One of them may be a token.
  struct WipingFree {
    void operator()(curl_slist* list) const;
  };
  using HeaderList = std::unique_ptr<curl_slist, WipingFree>;

  Result<void> aim(Result<HttpTarget> target);
  void setUpMethod();
  void setUpHeaders();
  void addHeader(std::string line);
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
  HeaderList headers_;
  int redirects_ = 0;
  std::string body_;
  bool connected_ = false;
  bool reused_ = false;  // sent on a kept connection
  bool unfit_ = false;   // a kept connection was turned down, and nothing sent
  bool isHttp2_ = false;
  bool headersEnded_ = false;
  std::size_t headerSize_ = 0;
  curl_socket_t socket_ = CURL_SOCKET_BAD;  // of HTTP/1.1
  curl_off_t sent_ = 0;
  const Clock::time_point start_;
  Clock::time_point lastProgress_ = start_;
};

}  // namespace quillmar
