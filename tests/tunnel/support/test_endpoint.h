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

// One connection of a client, as whoever answers it sees it. All on the connection's own thread.
class TestPeer {
 public:
  void answer(std::int32_t stream, const std::string& body, const Fields& more = {},
              const std::string& status = "200", const std::string& contentType = "application/dns-message");
  void reset(std::int32_t stream, std::uint32_t code = NGHTTP2_INTERNAL_ERROR);
  // Takes no stream after the last one that it has seen, or after this one.
  void goAway(std::int32_t lastStream);
  // Nothing more is said or heard.
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

// An endpoint that does with each question what a test wants.
class TestEndpoint {
 public:
  using Answering = std::function<void(TestPeer&, std::int32_t stream, const std::string& question)>;

  // `otherAuthority`: TLS with a certificate for localhost that nobody vouches for. `nothing`: it takes
  // connections and stays silent.
  enum class Speaks { http2, http1, plainText, otherAuthority, nothing };

  // Its certificate is for localhost and 127.0.0.1, where it is.
  explicit TestEndpoint(Answering answering, Speaks speaks = Speaks::http2);
  // Its certificate is for that name, and it is at every address of this machine.
  TestEndpoint(Answering answering, const std::string& name);
  ~TestEndpoint();
  TestEndpoint(const TestEndpoint&) = delete;
  TestEndpoint& operator=(const TestEndpoint&) = delete;

  std::string url(const std::string& host = "localhost") const;
  std::string caFile() const;
  int port() const { return port_; }
  int connections() const { return connections_; }
  int resumptions() const { return resumptions_; }
  // Of all requests so far.
  std::vector<Fields> requests() const;
  // Closes what is connected.
  void disconnectAll();
  // Closes what is connected, too, and speaks so on the next connections.
  void speak(Speaks speaks);
  // Connections are refused until they are accepted again.
  void refuse();
  void acceptAgain();
  // Waits for an HTTP/2 connection that began after the last request. False after a timeout.
  bool awaitFreshConnection();
  // Called on a connection's own thread when the client has begun to speak HTTP/2.
  void greeted();

 private:
  using TlsContext = std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)>;

  TlsContext tlsContext(const std::filesystem::path& certificate, const std::filesystem::path& key);
  void start(std::uint32_t address);
  void accept();
  void serve(int socket);
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
  std::vector<std::thread> threads_;
  std::thread accepting_;
};

}  // namespace quillmar::tunnel::test
