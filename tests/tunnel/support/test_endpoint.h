#pragma once

#include <nghttp2/nghttp2.h>
#include <openssl/ssl.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace quillmar::tunnel::test {

using Fields = std::vector<std::pair<std::string, std::string>>;

// A client's connection, for the code that answers it. Used on the connection's thread only.
class TestPeer {
 public:
  void answer(std::int32_t stream, const std::string& body, const Fields& more = {},
              const std::string& status = "200", const std::string& contentType = "application/dns-message");
  void reset(std::int32_t stream, std::uint32_t code = NGHTTP2_INTERNAL_ERROR);
  // Sends GOAWAY: streams after this one are not processed.
  void goAway(std::int32_t lastStream);
  // Closes the connection without another frame.
  void hangUp() { hasHungUp_ = true; }

  nghttp2_session* http = nullptr;

 private:
  friend class TestEndpoint;
  struct Stream {
    Fields fields{};  // of the request
    std::string question{};
    std::string body{};
    std::size_t sent = 0;
  };

  std::map<std::int32_t, Stream> streams_;
  bool hasHungUp_ = false;
};

// An endpoint whose answers are chosen by a test.
class TestEndpoint {
 public:
  using Answering = std::function<void(TestPeer&, std::int32_t stream, const std::string& question)>;

  // `otherAuthority`: its certificate is of an unknown authority. `nothing`: it accepts connections and sends
  // nothing.
  enum class Speaks { http2, http1, plainText, otherAuthority, nothing };

  // Listens at 127.0.0.1, with a certificate for localhost and 127.0.0.1.
  explicit TestEndpoint(Answering answering, Speaks speaks = Speaks::http2);
  // Listens at every address of this machine, with a certificate for this name.
  TestEndpoint(Answering answering, const std::string& name);
  ~TestEndpoint();
  TestEndpoint(const TestEndpoint&) = delete;
  TestEndpoint& operator=(const TestEndpoint&) = delete;

  std::string url(const std::string& host = "localhost") const;
  std::string caFile() const;
  int port() const { return port_; }
  int connections() const { return connections_; }
  int resumptions() const { return resumptions_; }
  // The header fields of all requests so far, up to a number that no test reaches.
  std::vector<Fields> requests() const;
  // Closes all connections.
  void disconnectAll();
  // Closes all connections, and uses this protocol on new ones.
  void speak(Speaks speaks);
  // Refuses connections until `acceptAgain`.
  void refuse();
  void acceptAgain();
  // Waits for an HTTP/2 connection that began after the last request. False after a timeout.
  bool awaitFreshConnection();
  // Called on a connection's thread when the client's HTTP/2 settings have arrived.
  void greeted();

 private:
  using TlsContext = std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)>;

  TlsContext tlsContext(const std::filesystem::path& certificate, const std::filesystem::path& key);
  void start(std::uint32_t address);
  void accept();
  void serve(int socket);
  void joinEnded();
  void serveTls(int socket);
  void serveHttp(TestPeer& peer, SSL* tls);
  nghttp2_session_callbacks* callbacks();

  const Answering answering_;
  std::atomic<Speaks> speaks_;
  std::filesystem::path directory_;
  std::filesystem::path authority_;
  TlsContext context_{nullptr, &SSL_CTX_free};
  TlsContext untrusted_{nullptr, &SSL_CTX_free};
  int listener_ = -1;
  int port_ = 0;
  std::atomic<int> connections_ = 0;
  std::atomic<int> resumptions_ = 0;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  int greetings_ = 0;  // HTTP/2 connections so far
  int greetingsAtLastRequest_ = 0;
  std::set<int> sockets_;
  std::vector<Fields> requests_;
  std::map<int, std::thread> threads_;  // by their connection's number
  std::vector<int> ended_;
  std::thread accepting_;
};

}  // namespace quillmar::tunnel::test
