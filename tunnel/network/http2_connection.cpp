#include "tunnel/network/http2_connection.h"

#include <nghttp2/nghttp2.h>

#include <algorithm>
#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/post.hpp>
#include <optional>
#include <unordered_map>
#include <utility>

#include "tunnel/dns/wire.h"
#include "tunnel/network/address_race.h"
#include "tunnel/network/bootstrap.h"
#include "tunnel/network/http_fields.h"

namespace quillmar::tunnel {
namespace {

using boost::asio::ip::tcp;
using ErrorCode = boost::system::error_code;

// Of one TLS record, so that one read mostly takes all that there is.
constexpr std::size_t readSize = std::size_t{17} * 1024;
constexpr std::size_t writeSize = std::size_t{16} * 1024;
// Enough for sixteen of the longest answers at once.
constexpr std::int32_t connectionWindow = 1024 * 1024;
constexpr std::uint32_t largestHeaderList = 16 * 1024;
constexpr std::string_view dnsMessage = "application/dns-message";

struct SessionFree {
  void operator()(nghttp2_session* session) const { nghttp2_session_del(session); }
};

// One question on its way.
struct Request {
  Ticket ticket = 0;
  std::int32_t stream = 0;
  std::string question{};
  std::size_t sent = 0;
  HttpFields fields{};
  std::string body{};
  bool isComplete = false;
  bool isTooLong = false;
  bool isCancelled = false;
};

std::string_view text(const std::uint8_t* data, std::size_t length) {
  return {reinterpret_cast<const char*>(data), length};
}

// nghttp2 copies both, though it asks for them unconst.
nghttp2_nv field(std::string_view name, std::string_view value) {
  const auto bytes = [](std::string_view given) {
    return reinterpret_cast<std::uint8_t*>(const_cast<char*>(given.data()));  // NOLINT(*-const-cast)
  };
  return {bytes(name), bytes(value), name.size(), value.size(), NGHTTP2_NV_FLAG_NONE};
}

}  // namespace

// Lives for as long as an operation of the network still holds it; once stopped it tells nothing.
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
  static const nghttp2_session_callbacks* callbacks();

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

  Request* requestOf(std::int32_t stream);
  void frameCame(const nghttp2_frame& frame);
  void dataCame(std::int32_t stream, std::string_view data);
  void streamClosed(std::int32_t stream);

  const std::shared_ptr<const Route> route_;
  boost::asio::io_context& context_;
  std::shared_ptr<AddressRace> race_;
  tcp::socket socket_;
  TlsConnection tls_;
  std::unique_ptr<nghttp2_session, SessionFree> http_;  // once TLS is there
  ConnectionEvents* events_;
  std::unordered_map<Ticket, std::unique_ptr<Request>> requests_;
  std::array<char, readSize> incoming_{};
  std::array<char, readSize> plain_{};
  std::string outgoing_;
  bool isWriting_ = false;
};

void Http2Connection::Session::start() {
  // Nothing may be told before whoever connects has its connection.
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
  race_ = std::make_shared<AddressRace>(context_, std::move(endpoints), route_->mark,
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
  nghttp2_session* made = nullptr;
  nghttp2_session_client_new(&made, callbacks(), this);
  http_.reset(made);
  const std::array settings{nghttp2_settings_entry{NGHTTP2_SETTINGS_ENABLE_PUSH, 0},
                            nghttp2_settings_entry{NGHTTP2_SETTINGS_MAX_HEADER_LIST_SIZE, largestHeaderList}};
  nghttp2_submit_settings(made, NGHTTP2_FLAG_NONE, settings.data(), settings.size());
  nghttp2_session_set_local_window_size(made, NGHTTP2_FLAG_NONE, 0, connectionWindow);
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
      return flush();
    }
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(plain_.data());
    if (const auto taken = nghttp2_session_mem_recv(http_.get(), bytes, *size); taken < 0) {
      return end({Cause::broken, nghttp2_strerror(static_cast<int>(taken))});
    }
  }
}

void Http2Connection::Session::flush() {
  while (events_ != nullptr && !isWriting_ && gather()) {
    write();
  }
  const bool isOver = events_ != nullptr && http_ && !isWriting_ &&
                      nghttp2_session_want_read(http_.get()) == 0 &&
                      nghttp2_session_want_write(http_.get()) == 0;
  if (isOver) {
    end({Cause::broken, "it was closed"});
  }
}

// Whether there is something to be written.
bool Http2Connection::Session::gather() {
  std::string frames;
  while (http_ && frames.size() < writeSize) {
    const std::uint8_t* data = nullptr;
    const auto size = nghttp2_session_mem_send(http_.get(), &data);
    if (size < 0) {
      end({Cause::broken, nghttp2_strerror(static_cast<int>(size))});
      return false;
    }
    if (size == 0) {
      break;
    }
    frames += text(data, static_cast<std::size_t>(size));
  }
  if (!frames.empty()) {
    tls_.write(frames);
  }
  outgoing_ = tls_.takeOutgoing();
  return !outgoing_.empty();
}

// Mostly there is room for all of it at once, and then nobody has to be called back.
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
  if (race_) {
    race_->cancel();
  }
  ErrorCode ignored;
  socket_.close(ignored);
}

void Http2Connection::Session::send(Ticket ticket, const std::string& question) {
  auto& request = *requests_.emplace(ticket, std::make_unique<Request>()).first->second;
  request.ticket = ticket;
  request.question = question;
  const auto length = std::to_string(question.size());
  const std::array fields{field(":method", "POST"),
                          field(":scheme", "https"),
                          field(":authority", route_->endpoint.authority),
                          field(":path", route_->endpoint.path),
                          field("accept", dnsMessage),
                          field("content-type", dnsMessage),
                          field("content-length", length)};
  nghttp2_data_provider provider{};
  provider.source.ptr = &request;
  provider.read_callback = [](nghttp2_session*, std::int32_t, std::uint8_t* buffer, std::size_t room,
                              std::uint32_t* flags, nghttp2_data_source* source, void*) {
    auto& asked = *static_cast<Request*>(source->ptr);
    const auto size = std::min(room, asked.question.size() - asked.sent);
    std::copy_n(asked.question.data() + asked.sent, size, buffer);
    asked.sent += size;
    if (asked.sent == asked.question.size()) {
      *flags |= NGHTTP2_DATA_FLAG_EOF;
    }
    return static_cast<ssize_t>(size);
  };
  request.stream =
      nghttp2_submit_request(http_.get(), nullptr, fields.data(), fields.size(), &provider, &request);
  if (request.stream < 0) {  // all numbers of streams are used up
    const Failure failure{Cause::broken, nghttp2_strerror(request.stream)};
    return boost::asio::post(context_, [self = shared_from_this(), failure] { self->end(failure); });
  }
}

void Http2Connection::Session::cancel(Ticket ticket) {
  const auto request = requests_.find(ticket);
  if (request == requests_.end() || !http_) {
    return;
  }
  request->second->isCancelled = true;
  nghttp2_submit_rst_stream(http_.get(), NGHTTP2_FLAG_NONE, request->second->stream, NGHTTP2_CANCEL);
}

void Http2Connection::Session::ping() { nghttp2_submit_ping(http_.get(), NGHTTP2_FLAG_NONE, nullptr); }

Request* Http2Connection::Session::requestOf(std::int32_t stream) {
  return static_cast<Request*>(nghttp2_session_get_stream_user_data(http_.get(), stream));
}

void Http2Connection::Session::frameCame(const nghttp2_frame& frame) {
  const auto isEndOf = [&](std::uint8_t kind) {
    return frame.hd.type == kind && (frame.hd.flags & NGHTTP2_FLAG_END_STREAM) != 0;
  };
  if (isEndOf(NGHTTP2_HEADERS) || isEndOf(NGHTTP2_DATA)) {
    if (auto* const request = requestOf(frame.hd.stream_id)) {
      request->isComplete = true;
    }
  } else if (events_ == nullptr) {
    return;
  } else if (frame.hd.type == NGHTTP2_PING && (frame.hd.flags & NGHTTP2_FLAG_ACK) != 0) {
    events_->ponged(BootClock::now());
  } else if (frame.hd.type == NGHTTP2_GOAWAY) {
    events_->closing(BootClock::now());
  }
}

void Http2Connection::Session::dataCame(std::int32_t stream, std::string_view data) {
  auto* const request = requestOf(stream);
  if (request == nullptr || request->isTooLong) {
    return;
  }
  request->isTooLong = request->body.size() + data.size() > largestMessage;
  if (request->isTooLong) {
    nghttp2_submit_rst_stream(http_.get(), NGHTTP2_FLAG_NONE, stream, NGHTTP2_CANCEL);
  } else {
    request->body += data;
  }
}

void Http2Connection::Session::streamClosed(std::int32_t stream) {
  auto* const known = requestOf(stream);
  if (known == nullptr) {
    return;
  }
  const auto request = requests_.extract(known->ticket);
  if (request.empty() || events_ == nullptr || known->isCancelled) {
    return;
  }
  if (known->isTooLong) {
    return events_->answered(BootClock::now(), known->ticket, Failure{Cause::tooLong});
  }
  if (!known->isComplete) {
    return events_->dropped(BootClock::now(), known->ticket);
  }
  auto answer = known->fields.answer();
  answer.body = std::move(known->body);
  events_->answered(BootClock::now(), known->ticket, std::move(answer));
}

const nghttp2_session_callbacks* Http2Connection::Session::callbacks() {
  static const nghttp2_session_callbacks* const shared = [] {
    nghttp2_session_callbacks* made = nullptr;
    nghttp2_session_callbacks_new(&made);
    nghttp2_session_callbacks_set_on_header_callback(
        made,
        [](nghttp2_session*, const nghttp2_frame* frame, const std::uint8_t* name, std::size_t nameLength,
           const std::uint8_t* value, std::size_t valueLength, std::uint8_t, void* user) {
          if (auto* const request = static_cast<Session*>(user)->requestOf(frame->hd.stream_id)) {
            request->fields.take(text(name, nameLength), text(value, valueLength));
          }
          return 0;
        });
    nghttp2_session_callbacks_set_on_data_chunk_recv_callback(
        made, [](nghttp2_session*, std::uint8_t, std::int32_t stream, const std::uint8_t* data,
                 std::size_t length, void* user) {
          static_cast<Session*>(user)->dataCame(stream, text(data, length));
          return 0;
        });
    nghttp2_session_callbacks_set_on_frame_recv_callback(
        made, [](nghttp2_session*, const nghttp2_frame* frame, void* user) {
          static_cast<Session*>(user)->frameCame(*frame);
          return 0;
        });
    nghttp2_session_callbacks_set_on_stream_close_callback(
        made, [](nghttp2_session*, std::int32_t stream, std::uint32_t, void* user) {
          static_cast<Session*>(user)->streamClosed(stream);
          return 0;
        });
    return made;
  }();
  return shared;
}

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
