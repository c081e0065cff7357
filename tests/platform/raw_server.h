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

// What TLS servers show: a key and a certificate, and what they accept.
using TlsContext = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

// One accepted connection, byte by byte, on a thread of its own.
class RawConnection {
 public:
  RawConnection(FileDescriptor socket, SSL_CTX* tls);
  ~RawConnection();
  RawConnection(const RawConnection&) = delete;
  RawConnection& operator=(const RawConnection&) = delete;

  // The next request with its body, as it came; nothing when the client has gone.
  std::optional<std::string> readRequest();
  // Whatever comes next; nothing when the client has gone.
  std::optional<std::string> readSome();
  // False when the client has gone.
  bool send(std::string_view bytes);
  // Blocks until the client closes.
  void waitForClose();
  // Waits this long for the client to close; true when it has.
  bool waitForClose(int milliseconds);
  // Ends the connection with a reset.
  void reset();
  // Says goodbye in TLS and ends what it sends.
  void closeNotify();
  // Ends every wait of the handler; any thread.
  void interrupt();

 private:
  bool isReady();
  bool fill();

  FileDescriptor socket_;
  std::unique_ptr<SSL, decltype(&SSL_free)> tls_{nullptr, &SSL_free};
  bool open_ = true;
  std::string received_;
};

// A server on a loopback address that does with each connection what its handler says, however wrong.
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

// Makes servers with this context agree on a protocol (ALPN): "h2" or "http/1.1".
void agreeOn(const char* protocol, SSL_CTX* tls);

// Answers each request on a connection with the same bytes.
RawServer::Handler answering(std::string response);
std::string httpResponse(int status, std::string_view body, std::string_view headers = "");

}  // namespace quillmar
