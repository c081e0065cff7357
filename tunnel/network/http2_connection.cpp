#include "tunnel/network/http2_connection.h"

#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <optional>
#include <string>
#include <utility>

#include "tunnel/network/address_race.h"
#include "tunnel/network/bootstrap.h"
#include "tunnel/network/http2_session.h"

namespace quillmar::tunnel {
namespace {

using boost::asio::ip::tcp;
using ErrorCode = boost::system::error_code;

// The size of a TLS record, so that one read usually takes everything.
constexpr std::size_t readSize = std::size_t{17} * 1024;
constexpr std::size_t writeSize = std::size_t{16} * 1024;

}  // namespace

// Kept alive by its pending network operations. After `stop` it reports nothing.
class Http2Connection::Session : public std::enable_shared_from_this<Session> {
 public:
  Session(boost::asio::io_context& context, std::shared_ptr<const Route> route, ConnectionEvents& events)
      : route_(std::move(route)),
        context_(context),
        socket_(context),
        tls_(route_->tls->connectionTo(route_->endpoint.host)),
        events_(&events) {}

  void start();
  void stop();
  void send(Ticket ticket, const std::string& question);
  void cancel(Ticket ticket);
  void ping();
  void flush();

 private:
  void race(TcpEndpoints endpoints);
  void connected(tcp::socket socket);
  void continueHandshake();
  void beginHttp();
  void read();
  void received(std::size_t size);
  void takeAnswers();
  bool gather();
  void write();
  void end(const Failure& failure);

  const std::shared_ptr<const Route> route_;
  boost::asio::io_context& context_;
  std::shared_ptr<AddressRace> race_;
  tcp::socket socket_;
  TlsConnection tls_;
  std::optional<Http2Session> http_;  // after the TLS handshake
  ConnectionEvents* events_;
  std::array<char, readSize> incoming_{};
  std::array<char, readSize> plain_{};
  std::string frames_;
  std::string outgoing_;
  bool isWriting_ = false;
};

void Http2Connection::Session::start() {
  // No event may come before the caller has its connection.
  boost::asio::post(context_, [self = shared_from_this()] {
    self->route_->bootstrap.find(self->route_->endpoint, [self](ErrorCode error, TcpEndpoints endpoints) {
      if (error) {
        return self->end({Cause::unknownAddress, error.message()});
      }
      self->race(std::move(endpoints));
    });
  });
}

void Http2Connection::Session::race(TcpEndpoints endpoints) {
  if (events_ == nullptr) {
    return;
  }
  race_ = std::make_shared<AddressRace>(context_, std::move(endpoints),
                                        [self = shared_from_this()](ErrorCode error, tcp::socket socket) {
                                          if (error) {
                                            self->route_->bootstrap.missed(self->route_->endpoint);
                                            return self->end({Cause::unreachable, error.message()});
                                          }
                                          self->connected(std::move(socket));
                                        });
  race_->start();
}

void Http2Connection::Session::connected(tcp::socket socket) {
  race_.reset();
  socket_ = std::move(socket);
  ErrorCode ignored;
  socket_.set_option(tcp::no_delay(true), ignored);
  socket_.non_blocking(true, ignored);
  continueHandshake();
  read();
}

void Http2Connection::Session::continueHandshake() {
  switch (tls_.shakeHands()) {
    case TlsConnection::Handshake::goesOn:
      return flush();
    case TlsConnection::Handshake::failed:
      return end(tls_.failure());
    case TlsConnection::Handshake::done:
      if (!tls_.speaksHttp2()) {
        return end({Cause::noHttp2});
      }
      return beginHttp();
  }
}

void Http2Connection::Session::beginHttp() {
  http_.emplace(route_->endpoint, *events_);
  ErrorCode unconnected;
  const auto peer = socket_.remote_endpoint(unconnected);
  if (!unconnected) {
    route_->bootstrap.reached(route_->endpoint, peer.address());
  }
  events_->opened(BootClock::now());
  flush();
}

void Http2Connection::Session::read() {
  if (events_ == nullptr) {
    return;
  }
  socket_.async_read_some(boost::asio::buffer(incoming_),
                          [self = shared_from_this()](ErrorCode error, std::size_t size) {
                            if (self->events_ == nullptr) {
                              return;
                            }
                            if (error) {
                              const auto cause = self->http_ ? Cause::broken : Cause::unreachable;
                              return self->end({cause, error.message()});
                            }
                            self->received(size);
                            self->read();
                          });
}

void Http2Connection::Session::received(std::size_t size) {
  tls_.received({incoming_.data(), size});
  if (!http_) {
    continueHandshake();
  }
  if (http_ && events_ != nullptr) {
    takeAnswers();
  }
}

void Http2Connection::Session::takeAnswers() {
  for (auto size = tls_.read(plain_); events_ != nullptr; size = tls_.read(plain_)) {
    if (!size) {
      return end({Cause::broken, "it was closed"});
    }
    if (*size == 0) {
      return;  // what this causes is sent by the next flush
    }
    if (const auto failure = http_->receive({plain_.data(), *size})) {
      return end(*failure);
    }
  }
}

void Http2Connection::Session::flush() {
  bool isMore = true;
  while (isMore && events_ != nullptr && !isWriting_ && gather()) {
    isMore = frames_.size() >= writeSize;
    write();
  }
  if (events_ != nullptr && http_ && !isWriting_ && http_->isOver()) {
    end({Cause::broken, "it was closed"});
  }
}

// Whether there is anything to write.
bool Http2Connection::Session::gather() {
  if (http_) {
    if (const auto failure = http_->takeOutgoing(frames_, writeSize)) {
      end(*failure);
      return false;
    }
    if (!frames_.empty()) {
      tls_.write(frames_);
    }
  }
  tls_.takeOutgoing(outgoing_);
  return !outgoing_.empty();
}

// The socket usually accepts everything at once, and no callback is needed.
void Http2Connection::Session::write() {
  ErrorCode error;
  const auto size = socket_.write_some(boost::asio::buffer(outgoing_), error);
  outgoing_.erase(0, size);
  if (error && error != boost::asio::error::would_block) {
    return end({http_ ? Cause::broken : Cause::unreachable, error.message()});
  }
  isWriting_ = !outgoing_.empty();
  if (!isWriting_) {
    return;
  }
  socket_.async_wait(tcp::socket::wait_write, [self = shared_from_this()](ErrorCode failed) {
    if (self->events_ == nullptr || failed) {
      return;
    }
    self->write();
    self->flush();
  });
}

void Http2Connection::Session::end(const Failure& failure) {
  if (auto* const events = events_) {
    stop();
    events->ended(BootClock::now(), failure);
  }
}

void Http2Connection::Session::stop() {
  events_ = nullptr;
  if (http_) {
    http_->silence();
  }
  if (race_) {
    race_->cancel();
  }
  ErrorCode ignored;
  socket_.close(ignored);
}

void Http2Connection::Session::send(Ticket ticket, const std::string& question) {
  if (const auto failure = http_->send(ticket, question)) {
    // Reported later, since the caller is still sending.
    boost::asio::post(context_, [self = shared_from_this(), failure = *failure] { self->end(failure); });
  }
}

void Http2Connection::Session::cancel(Ticket ticket) {
  if (http_) {
    http_->cancel(ticket);
  }
}

void Http2Connection::Session::ping() { http_->ping(); }

Http2Connection::Http2Connection(boost::asio::io_context& context, std::shared_ptr<const Route> route,
                                 ConnectionEvents& events)
    : session_(std::make_shared<Session>(context, std::move(route), events)) {
  session_->start();
}

Http2Connection::~Http2Connection() { session_->stop(); }

void Http2Connection::send(Ticket ticket, const std::string& question) { session_->send(ticket, question); }
void Http2Connection::cancel(Ticket ticket) { session_->cancel(ticket); }
void Http2Connection::ping() { session_->ping(); }
void Http2Connection::flush() { session_->flush(); }

}  // namespace quillmar::tunnel
