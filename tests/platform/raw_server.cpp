#include "tests/platform/raw_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>

#include <array>
#include <cstdlib>
#include <utility>

#include "platform/common/thread_signals.h"

namespace quillmar {
namespace {

std::size_t bodyLength(std::string_view head) {
  constexpr std::string_view name = "content-length:";
  for (std::size_t line = head.find("\r\n"); line != std::string_view::npos;
       line = head.find("\r\n", line + 2)) {
    const auto header = head.substr(line + 2);
    if (header.size() > name.size() && strncasecmp(header.data(), name.data(), name.size()) == 0) {
      return static_cast<std::size_t>(std::strtoul(header.data() + name.size(), nullptr, 10));
    }
  }
  return 0;
}

}  // namespace

RawConnection::RawConnection(FileDescriptor socket, SSL_CTX* tls) : socket_(std::move(socket)) {
  if (tls) {
    tls_.reset(SSL_new(tls));
    SSL_set_fd(tls_.get(), socket_.get());
  }
}

RawConnection::~RawConnection() = default;

bool RawConnection::fill() {
  if (!open_) {
    return false;
  }
  std::array<char, 16384> buffer{};
  const auto count = tls_ ? SSL_read(tls_.get(), buffer.data(), buffer.size())
                          : static_cast<int>(recv(socket_.get(), buffer.data(), buffer.size(), 0));
  open_ = count > 0;
  if (open_) {
    received_.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return open_;
}

// After a handshake where there is one.
bool RawConnection::isReady() {
  return !tls_ || SSL_is_init_finished(tls_.get()) || SSL_accept(tls_.get()) == 1;
}

std::optional<std::string> RawConnection::readSome() {
  if (!isReady() || (received_.empty() && !fill())) {
    return std::nullopt;
  }
  return std::exchange(received_, {});
}

std::optional<std::string> RawConnection::readRequest() {
  if (!isReady()) {
    return std::nullopt;
  }
  constexpr std::string_view end = "\r\n\r\n";
  while (received_.find(end) == std::string::npos) {
    if (!fill()) {
      return std::nullopt;
    }
  }
  const std::size_t head = received_.find(end) + end.size();
  const std::size_t size = head + bodyLength(std::string_view(received_).substr(0, head));
  while (received_.size() < size) {
    if (!fill()) {
      return std::nullopt;
    }
  }
  std::string request = received_.substr(0, size);
  received_.erase(0, size);
  return request;
}

bool RawConnection::send(std::string_view bytes) {
  while (open_ && !bytes.empty()) {
    const auto count =
        tls_ ? SSL_write(tls_.get(), bytes.data(), static_cast<int>(bytes.size()))
             : static_cast<int>(::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL));
    open_ = count > 0;
    bytes.remove_prefix(open_ ? static_cast<std::size_t>(count) : 0);
  }
  return open_;
}

void RawConnection::waitForClose() {
  while (fill()) {
  }
}

bool RawConnection::waitForClose(int milliseconds) {
  pollfd descriptor{socket_.get(), POLLIN, 0};
  return poll(&descriptor, 1, milliseconds) > 0 && !fill();
}

void RawConnection::reset() {
  const linger now{1, 0};
  setsockopt(socket_.get(), SOL_SOCKET, SO_LINGER, &now, sizeof now);
  open_ = false;
}

void RawConnection::closeNotify() {
  if (tls_) {
    SSL_shutdown(tls_.get());
  }
  shutdown(socket_.get(), SHUT_WR);
}

void RawConnection::interrupt() { shutdown(socket_.get(), SHUT_RDWR); }

RawServer::RawServer(Handler handler, SSL_CTX* tls, bool v6)
    : handler_(std::move(handler)),
      tls_(tls),
      listener_(socket(v6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address4{};
  address4.sin_family = AF_INET;
  address4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  sockaddr_in6 address6{};
  address6.sin6_family = AF_INET6;
  address6.sin6_addr = in6addr_loopback;
  auto* address = v6 ? reinterpret_cast<sockaddr*>(&address6) : reinterpret_cast<sockaddr*>(&address4);
  socklen_t size = v6 ? sizeof address6 : sizeof address4;
  constexpr int backlog = 256;
  if (bind(listener_.get(), address, size) == 0 && listen(listener_.get(), backlog) == 0) {
    getsockname(listener_.get(), address, &size);
    port_ = ntohs(v6 ? address6.sin6_port : address4.sin_port);
    acceptor_ = std::thread([this] { accept(); });
  }
}

RawServer::~RawServer() {
  shutdown(listener_.get(), SHUT_RDWR);
  if (acceptor_.joinable()) {
    acceptor_.join();
  }
  {
    const std::scoped_lock lock(mutex_);
    for (RawConnection& connection : open_) {
      connection.interrupt();
    }
  }
  for (std::thread& thread : threads_) {
    thread.join();
  }
}

std::string RawServer::url(std::string_view path, std::string_view host) const {
  return std::string(tls_ ? "https://" : "http://").append(host) + ':' + std::to_string(port_) +
         std::string(path);
}

void RawServer::accept() {
  while (true) {
    FileDescriptor socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!socket) {
      return;
    }
    ++connections_;
    const std::scoped_lock lock(mutex_);
    const auto connection = open_.emplace(open_.end(), std::move(socket), tls_);
    threads_.emplace_back([this, connection] {
      blockSignalsOfThisThread();
      handler_(*connection);
      const std::scoped_lock done(mutex_);
      open_.erase(connection);
    });
  }
}

void agreeOn(const char* protocol, SSL_CTX* tls) {
  SSL_CTX_set_alpn_select_cb(
      tls,
      [](SSL*, const unsigned char** out, unsigned char* size, const unsigned char*, unsigned, void* chosen) {
        const std::string_view name(static_cast<const char*>(chosen));
        *out = reinterpret_cast<const unsigned char*>(name.data());
        *size = static_cast<unsigned char>(name.size());
        return SSL_TLSEXT_ERR_OK;
      },
      const_cast<char*>(protocol));  // NOLINT: a C interface that only reads
}

RawServer::Handler answering(std::string response) {
  return [response = std::move(response)](RawConnection& connection) {
    while (connection.readRequest() && connection.send(response)) {
    }
  };
}

std::string httpResponse(int status, std::string_view body, std::string_view headers) {
  return "HTTP/1.1 " + std::to_string(status) + " Reason\r\n" + std::string(headers) +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + std::string(body);
}

}  // namespace quillmar
