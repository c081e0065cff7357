#include "tests/tunnel/support/running_server.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

#include "tests/sandbox/support/loopback.h"
#include "tunnel/dns/wire.h"

namespace quillmar::tunnel::test {

RunningServer::RunningServer(const std::string& url, const std::string& caFile, const MakeBootstrap& make) {
  auto sockets = std::get<Sockets>(bindSockets(context_, *parseListenAddress("127.0.0.1:0")));
  port_ = sockets.tcp.local_endpoint().port();
  auto tls = TlsClient::make(caFile);
  std::vector<Sockets> listening;
  listening.push_back(std::move(sockets));
  server_ =
      std::make_unique<Server>(context_, std::move(listening),
                               Outgoing{std::get<std::unique_ptr<TlsClient>>(std::move(tls)),
                                        make ? make(context_) : std::make_unique<SystemBootstrap>(context_)},
                               [this](const std::string& line) {
                                 const std::scoped_lock lock(mutex_);
                                 told_.push_back(line);
                               });
  server_->take(parseEndpoint(url).value());
  thread_ = std::thread([this] { server_->run(); });
}

RunningServer::~RunningServer() {
  context_.stop();
  thread_.join();
}

std::vector<std::string> RunningServer::told() const {
  const std::scoped_lock lock(mutex_);
  return told_;
}

ClientSocket::ClientSocket(int port, Channel channel)
    : channel_(channel),
      socket_(sandbox::test::connectedSocket(channel == Channel::udp ? SOCK_DGRAM : SOCK_STREAM, port)) {
  if (socket_ < 0) {
    throw std::runtime_error("no connection");
  }
}

ClientSocket::~ClientSocket() { ::close(socket_); }

bool ClientSocket::sendRaw(const std::string& bytes) {
  return ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

void ClientSocket::send(const std::string& message) {
  std::string text;
  if (channel_ == Channel::tcp) {
    append16(text, static_cast<std::uint16_t>(message.size()));
  }
  sendRaw(text + message);
}

void ClientSocket::endSending() { ::shutdown(socket_, SHUT_WR); }

bool ClientSocket::seesEnd() {
  char byte = 0;
  return ::recv(socket_, &byte, 1, 0) == 0;
}

std::string ClientSocket::receiveExactly(std::size_t size) {
  std::string text(size, '\0');
  const auto got = size == 0 ? 0 : ::recv(socket_, text.data(), size, MSG_WAITALL);
  return got == static_cast<ssize_t>(size) ? text : std::string();
}

std::string ClientSocket::receive() {
  if (channel_ == Channel::tcp) {
    const auto length = receiveExactly(2);
    return length.empty() ? std::string() : receiveExactly(get16(length, 0));
  }
  std::array<char, 65'536> buffer{};
  const auto size = ::recv(socket_, buffer.data(), buffer.size(), 0);
  return size > 0 ? std::string(buffer.data(), static_cast<std::size_t>(size)) : std::string();
}

std::string askServer(int port, const std::string& message, Channel channel) {
  ClientSocket client(port, channel);
  client.send(message);
  return client.receive();
}

}  // namespace quillmar::tunnel::test
