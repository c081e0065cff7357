#pragma once

#include <openssl/ssl.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "platform/common/file_descriptor.h"

namespace quillmar {

// The configuration of a TLS server: key, certificate, accepted versions.
using TlsContext = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

// An accepted connection, byte by byte, on its own thread.
class RawConnection {
 public:
  RawConnection(FileDescriptor socket, SSL_CTX* tls);
  ~RawConnection();
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  // The next request with its body, unparsed; nullopt if the client closed.
  std::optional<std::string> readRequest();
  // The next bytes; nullopt if the client closed.
  std::optional<std::string> readSome();
  // False if the client closed.
  bool send(std::string_view bytes);
  // Blocks until the client closes.
  void waitForClose();
  // Waits this long at most. Returns whether the client closed.
  bool waitForClose(int milliseconds);
  // Closes the connection with a TCP reset.
  void reset();
  // Sends TLS's close_notify and shuts down writing.
  void closeNotify();
  // Wakes the handler from every wait. Thread-safe.
  void interrupt();

 private:
  bool isReady();
  bool fill();

  FileDescriptor socket_;
  std::unique_ptr<SSL, decltype(&SSL_free)> tls_{nullptr, &SSL_free};
  bool open_ = true;
  std::string received_;
};

// A server on a loopback address. The handler decides what happens on each connection, also against the
// protocol.
class RawServer {
 public:
  using Handler = std::function<void(RawConnection&)>;

  explicit RawServer(Handler handler, SSL_CTX* tls = nullptr, bool v6 = false);
  ~RawServer();
  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;

  std::uint16_t port() const { return port_; }
  std::string url(std::string_view path, std::string_view host = "127.0.0.1") const;
  int connections() const { return connections_; }

 private:
  void accept();

  const Handler handler_;
  SSL_CTX* const tls_;
  FileDescriptor listener_;
  std::uint16_t port_ = 0;
  std::atomic<int> connections_ = 0;
  std::mutex mutex_;
  std::list<RawConnection> open_;
  std::list<std::thread> threads_;
  std::thread acceptor_;
};

// Sets the ALPN result of servers with this context: "h2" or "http/1.1".
void agreeOn(const char* protocol, SSL_CTX* tls);

// Sends the same bytes for each request.
RawServer::Handler answering(std::string response);
std::string httpResponse(int status, std::string_view body, std::string_view headers = "");

}  // namespace quillmar
