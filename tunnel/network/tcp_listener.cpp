#include "tunnel/network/tcp_listener.h"

#include <algorithm>
#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <list>
#include <utility>

#include "tunnel/dns/wire.h"
#include "tunnel/network/timer.h"

namespace quillmar::tunnel {
namespace {

using boost::asio::ip::tcp;
using ErrorCode = boost::system::error_code;

constexpr std::size_t lengthSize = 2;
// Limits for a client that does not read its answers. At a limit no more queries are read from it.
constexpr std::size_t mostUnanswered = 128;
constexpr std::size_t mostUnsent = std::size_t{256} * 1024;
constexpr std::chrono::milliseconds pauseOfAccepting{100};

class Client;
// The connection that was idle for the longest is the first.
using Clients = std::list<std::shared_ptr<Client>>;

class Client : public std::enable_shared_from_this<Client> {
 public:
  Client(tcp::socket socket, Answering answering, Clients& clients, std::chrono::milliseconds idle)
      : socket_(std::move(socket)),
        timer_(socket_.get_executor()),
        answering_(std::move(answering)),
        clients_(&clients),
        idle_(idle) {}

  void start() {
    place_ = clients_->insert(clients_->end(), shared_from_this());
    stayAlive();
    read();
  }

  bool isWaiting() const { return unanswered_ > 0; }

  void close() {
    if (clients_ == nullptr) {
      return;
    }
    const auto self = shared_from_this();
    std::exchange(clients_, nullptr)->erase(place_);
    timer_.cancel();
    ErrorCode ignored;
    socket_.close(ignored);
  }

 private:
  bool isClosed() const { return clients_ == nullptr; }

  void stayAlive() {
    clients_->splice(clients_->end(), *clients_, place_);
    timer_.start(idle_, [self = shared_from_this()] { self->close(); });
  }

  bool isBusy() const { return unanswered_ >= mostUnanswered || unsent_.size() >= mostUnsent; }

  void read() {
    if (isClosed() || isReading_ || hasEnded_ || isBusy()) {
      return;
    }
    isReading_ = true;
    socket_.async_read_some(boost::asio::buffer(incoming_),
                            [self = shared_from_this()](ErrorCode error, std::size_t size) {
                              self->isReading_ = false;
                              if (self->isClosed()) {
                                return;
                              }
                              self->hasEnded_ = bool(error);
                              self->received_.append(self->incoming_.data(), size);
                              self->takeMessages();
                            });
  }

  void takeMessages() {
    std::size_t at = 0;
    while (!isClosed() && !isBusy() && received_.size() - at >= lengthSize) {
      const std::size_t length = get16(received_, at);
      if (received_.size() - at - lengthSize < length) {
        break;
      }
      const auto message = received_.substr(at + lengthSize, length);
      at += lengthSize + length;
      take(message);
    }
    received_.erase(0, at);
    goOn();
  }

  void take(const std::string& message) {
    stayAlive();
    ++unanswered_;
    // If there is no answer, `reply` is destroyed without being called.
    auto ticket = std::shared_ptr<void>(nullptr, [self = shared_from_this()](void*) { self->answered(); });
    answering_(message, [self = shared_from_this(), ticket = std::move(ticket)](const std::string& reply) {
      self->send(reply);
    });
  }

  void answered() {
    --unanswered_;
    if (!isClosed() && !isReading_) {
      boost::asio::post(socket_.get_executor(), [self = shared_from_this()] {
        if (!self->isClosed() && !self->isReading_) {
          self->takeMessages();
        }
      });
    }
  }

  void send(const std::string& reply) {
    if (isClosed()) {
      return;
    }
    append16(unsent_, static_cast<std::uint16_t>(reply.size()));
    unsent_ += reply;
    write();
  }

  void write() {
    if (isWriting_ || unsent_.empty()) {
      return;
    }
    isWriting_ = true;
    outgoing_ = std::exchange(unsent_, {});
    boost::asio::async_write(socket_, boost::asio::buffer(outgoing_),
                             [self = shared_from_this()](ErrorCode error, std::size_t) {
                               self->isWriting_ = false;
                               if (error) {
                                 return self->close();
                               }
                               if (!self->isClosed()) {
                                 self->write();
                                 self->takeMessages();
                               }
                             });
  }

  // A client that has shut down its side may still wait for answers.
  void goOn() {
    if (hasEnded_ && unanswered_ == 0 && !isWriting_ && unsent_.empty()) {
      close();
    } else {
      read();
    }
  }

  tcp::socket socket_;
  Timer timer_;
  const Answering answering_;
  Clients* clients_;
  Clients::iterator place_;
  const std::chrono::milliseconds idle_;
  std::array<char, 4096> incoming_{};
  std::string received_;
  std::string unsent_;
  std::string outgoing_;
  std::size_t unanswered_ = 0;
  bool isReading_ = false;
  bool isWriting_ = false;
  bool hasEnded_ = false;
};

}  // namespace

class TcpListener::Acceptance : public std::enable_shared_from_this<Acceptance> {
 public:
  Acceptance(TcpAcceptor acceptor, Answering answering, std::chrono::milliseconds idle)
      : acceptor_(std::move(acceptor)),
        pause_(acceptor_.get_executor()),
        answering_(std::move(answering)),
        idle_(idle) {}

  void accept() {
    acceptor_.async_accept([self = shared_from_this()](ErrorCode error, tcp::socket socket) {
      if (!self->acceptor_.is_open()) {
        return;
      }
      if (error) {
        return self->acceptLater();
      }
      self->welcome(std::move(socket));
      self->accept();
    });
  }

  void stop() {
    ErrorCode ignored;
    acceptor_.close(ignored);
    pause_.cancel();
    while (!clients_.empty()) {
      clients_.front()->close();
    }
  }

 private:
  void welcome(tcp::socket socket) {
    if (clients_.size() >= mostConnections) {
      closeOne();
    }
    ErrorCode ignored;
    socket.set_option(tcp::no_delay(true), ignored);
    std::make_shared<Client>(std::move(socket), answering_, clients_, idle_)->start();
  }

  // Closes the connection that was idle for the longest. One that waits for an answer is closed only if all
  // do.
  void closeOne() {
    const auto idle = std::ranges::find_if(clients_, [](const auto& client) { return !client->isWaiting(); });
    const auto client = idle == clients_.end() ? clients_.front() : *idle;
    client->close();
  }

  // For example without free descriptors. Trying again at once would fail again.
  void acceptLater() {
    pause_.start(pauseOfAccepting, [self = shared_from_this()] { self->accept(); });
  }

  TcpAcceptor acceptor_;
  Timer pause_;
  const Answering answering_;
  const std::chrono::milliseconds idle_;
  Clients clients_;
};

TcpListener::TcpListener(TcpAcceptor acceptor, Answering answering, std::chrono::milliseconds idle)
    : acceptance_(std::make_shared<Acceptance>(std::move(acceptor), std::move(answering), idle)) {
  acceptance_->accept();
}

TcpListener::~TcpListener() { acceptance_->stop(); }

}  // namespace quillmar::tunnel
