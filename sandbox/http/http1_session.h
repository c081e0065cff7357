#pragma once

#include <boost/asio/buffer.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/version.hpp>
#include <memory>
#include <optional>

#include "sandbox/http/exchange.h"

namespace quillmar::sandbox {

// An HTTP/1.1 connection, plain or over TLS. Keeps itself alive until the connection ends.
template <class Stream>
class Http1Session : public std::enable_shared_from_this<Http1Session<Stream>> {
 public:
  Http1Session(Stream stream, Exchange& exchange, bool secure)
      : stream_{std::move(stream)}, exchange_{exchange}, pause_{exchange.network()}, secure_{secure} {}

  void start() { readHeader(); }

 private:
  using Error = boost::beast::error_code;
  static constexpr std::size_t largestHeader = std::size_t{16} * 1024;
  static constexpr std::size_t piecesOfSlowBody = 10;
  static constexpr std::chrono::seconds timeout{60};

  auto& connection() { return boost::beast::get_lowest_layer(stream_); }

  auto next(void (Http1Session::*step)()) {
    return [self = this->shared_from_this(), step](Error error, std::size_t = 0) {
      if (!error) {
        (self.get()->*step)();
      }
    };
  }

  void readHeader() {
    parser_.emplace();
    parser_->header_limit(largestHeader);
    parser_->body_limit(largestBody);
    connection().expires_after(timeout);
    boost::beast::http::async_read_header(
        stream_, buffer_, *parser_,
        [self = this->shared_from_this()](Error error, std::size_t) { self->readHeaderEnded(error); });
  }

  void readHeaderEnded(Error error) {
    if (error) {
      return refuse(error);
    }
    if (boost::beast::iequals(parser_->get()[boost::beast::http::field::expect], "100-continue")) {
      return sendContinue();
    }
    readBody();
  }

  void sendContinue() {
    static constexpr std::string_view line = "HTTP/1.1 100 Continue\r\n\r\n";
    boost::asio::async_write(stream_, boost::asio::buffer(line), next(&Http1Session::readBody));
  }

  void readBody() {
    boost::beast::http::async_read(
        stream_, buffer_, *parser_,
        [self = this->shared_from_this()](Error error, std::size_t) { self->readBodyEnded(error); });
  }

  void readBodyEnded(Error error) {
    if (error) {
      return refuse(error);
    }
    exchange_.answer(takeRequest(),
                     [self = this->shared_from_this()](Answer answer) { self->send(std::move(answer)); });
  }

  Request takeRequest() {
    auto message = parser_->release();
    keepAlive_ = message.keep_alive();
    withBody_ = message.method() != boost::beast::http::verb::head;
    Request request;
    request.method = std::string{message.method_string()};
    request.target = std::string{message.target()};
    request.authority = std::string{message[boost::beast::http::field::host]};
    request.secure = secure_;
    for (const auto& field : message) {
      request.headers.emplace_back(std::string{field.name_string()}, std::string{field.value()});
    }
    request.body = std::move(message.body());
    return request;
  }

  // Answers a malformed or too large request, then closes. After other errors the connection ends without an
  // answer.
  void refuse(Error error) {
    namespace http = boost::beast::http;
    const bool tooLarge = error == http::error::body_limit;
    const bool unreadable = error.category() == http::make_error_code(http::error::bad_method).category() &&
                            error != http::error::end_of_stream && error != http::error::partial_message;
    if (!tooLarge && !unreadable) {
      return;
    }
    keepAlive_ = false;
    withBody_ = true;
    send(tooLarge ? refusalOfLargeBody() : refusalOfMalformedRequest());
  }

  void send(Answer answer) {
    namespace http = boost::beast::http;
    answer_ = std::move(answer);
    if (answer_.delivery.drop == Drop::beforeAnswer) {
      return connection().close();
    }
    response_ = {};
    response_.version(11);
    response_.result(unsigned(answer_.status));
    response_.set(http::field::server, "quillmar-sandbox");
    for (const auto& [name, value] : answer_.headers) {
      response_.set(name, value);
    }
    if (!answer_.contentType.empty()) {
      response_.set(http::field::content_type, answer_.contentType);
    }
    if (answer_.status != 204) {
      response_.content_length(answer_.body.size());
    }
    response_.keep_alive(keepAlive_);
    serializer_.emplace(response_);
    connection().expires_after(timeout);
    http::async_write_header(stream_, *serializer_, next(&Http1Session::sendBody));
  }

  void sendBody() {
    sent_ = 0;
    if (!withBody_) {
      return sendEnded();
    }
    if (answer_.delivery.drop == Drop::inBody) {
      answer_.body.resize(answer_.body.size() / 2);
    }
    sendPiece();
  }

  void sendPiece() {
    const bool slow = answer_.delivery.bodyTime.count() > 0;
    const auto whole = answer_.body.size();
    if (sent_ == whole) {
      return sendEnded();
    }
    const auto size = slow ? std::min(whole - sent_, whole / piecesOfSlowBody + 1) : whole;
    const auto piece = boost::asio::buffer(answer_.body.data() + sent_, size);
    sent_ += size;
    connection().expires_after(timeout);
    boost::asio::async_write(stream_, piece,
                             next(slow ? &Http1Session::waitForNextPiece : &Http1Session::sendEnded));
  }

  void waitForNextPiece() {
    pause_.expires_after(answer_.delivery.bodyTime / piecesOfSlowBody);
    pause_.async_wait(next(&Http1Session::sendPiece));
  }

  void sendEnded() {
    if (answer_.delivery.drop == Drop::inBody) {
      return connection().close();
    }
    if (keepAlive_) {
      return readHeader();
    }
    Error ignored;
    connection().socket().shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
    drain();
  }

  // Closing a connection with unread bytes resets it, and the client would lose the answer.
  void drain() {
    connection().expires_after(std::chrono::seconds{2});
    buffer_.clear();
    connection().async_read_some(buffer_.prepare(largestHeader), next(&Http1Session::drain));
  }

  Stream stream_;
  Exchange& exchange_;
  boost::asio::steady_timer pause_;
  const bool secure_;
  bool keepAlive_ = false;
  bool withBody_ = true;
  std::size_t sent_ = 0;
  boost::beast::flat_buffer buffer_;
  std::optional<boost::beast::http::request_parser<boost::beast::http::string_body>> parser_;
  Answer answer_;
  boost::beast::http::response<boost::beast::http::empty_body> response_;
  std::optional<boost::beast::http::response_serializer<boost::beast::http::empty_body>> serializer_;
};

}  // namespace quillmar::sandbox
