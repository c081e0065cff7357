#include "sandbox/http/http1_session.h"

#include <algorithm>
#include <boost/beast/core/string.hpp>
#include <utility>

namespace quillmar::sandbox {
namespace {

namespace http = boost::beast::http;

constexpr std::chrono::seconds timeout{60};

}  // namespace

Http1Session::Http1Session(std::shared_ptr<Connection> connection, Exchange& exchange, bool secure)
    : connection_{std::move(connection)}, exchange_{exchange}, pause_{exchange.network()}, secure_{secure} {}

Connection::Done Http1Session::next(void (Http1Session::*step)()) {
  return [self = shared_from_this(), step](Error error, std::size_t = 0) {
    if (!error) {
      (self.get()->*step)();
    }
  };
}

void Http1Session::readRequest() {
  parser_.emplace();
  parser_->header_limit(largestHeader);
  parser_->body_limit(largestBody);
  parse();
}

// Up to the end of the header; then, eagerly, up to that of the body.
void Http1Session::parse() {
  const auto ended = [this] { return parser_->eager() ? parser_->is_done() : parser_->is_header_done(); };
  Error error;
  while (!error && !ended() && received_.size() > 0) {
    received_.consume(parser_->put(received_.data(), error));
  }
  if (error && error != http::error::need_more) {
    return refuse(error);
  }
  if (!ended()) {
    return readMore();
  }
  return parser_->eager() ? requestCame() : headerCame();
}

void Http1Session::readMore() {
  connection_->closeAfter(timeout);
  connection_->read(received_.prepare(largestHeader),
                    [self = shared_from_this()](Error error, std::size_t size) {
                      if (!error) {
                        self->received_.commit(size);
                        self->parse();
                      }
                    });
}

void Http1Session::headerCame() {
  if (boost::beast::iequals(parser_->get()[http::field::expect], "100-continue")) {
    return sendContinue();
  }
  readBody();
}

void Http1Session::sendContinue() {
  connection_->write("HTTP/1.1 100 Continue\r\n\r\n", next(&Http1Session::readBody));
}

void Http1Session::readBody() {
  parser_->eager(true);
  parse();
}

void Http1Session::requestCame() {
  connection_->closeNever();
  exchange_.answer(takeRequest(),
                   [self = shared_from_this()](Answer answer) { self->send(std::move(answer)); });
}

Request Http1Session::takeRequest() {
  auto message = parser_->release();
  keepAlive_ = message.keep_alive();
  withBody_ = message.method() != http::verb::head;
  Request request;
  request.method = std::string{message.method_string()};
  request.target = std::string{message.target()};
  request.authority = std::string{message[http::field::host]};
  request.secure = secure_;
  for (const auto& field : message) {
    request.headers.emplace_back(std::string{field.name_string()}, std::string{field.value()});
  }
  request.body = std::move(message.body());
  return request;
}

// Answers a malformed or too large request, then closes.
void Http1Session::refuse(Error error) {
  keepAlive_ = false;
  withBody_ = true;
  send(error == http::error::body_limit ? refusalOfLargeBody() : refusalOfMalformedRequest());
}

void Http1Session::send(Answer answer) {
  answer_ = std::move(answer);
  if (answer_.delivery.drop == Drop::beforeAnswer) {
    return connection_->close();
  }
  header_ = headerOfAnswer();
  connection_->closeAfter(timeout);
  connection_->write(header_, next(&Http1Session::sendBody));
}

std::string Http1Session::headerOfAnswer() const {
  const auto reason = http::obsolete_reason(http::int_to_status(unsigned(answer_.status)));
  std::string text = "HTTP/1.1 " + std::to_string(answer_.status) + " " + std::string{reason} + "\r\n";
  const auto add = [&text](const std::string& name, const std::string& value) {
    text += name + ": " + value + "\r\n";
  };
  add("Server", "quillmar-sandbox");
  for (const auto& [name, value] : answer_.headers) {
    add(name, value);
  }
  if (!answer_.contentType.empty()) {
    add("Content-Type", answer_.contentType);
  }
  if (answer_.status != 204) {
    add("Content-Length", std::to_string(answer_.body.size()));
  }
  if (!keepAlive_) {
    add("Connection", "close");
  }
  return text + "\r\n";
}

void Http1Session::sendBody() {
  sent_ = 0;
  if (!withBody_) {
    return sendEnded();
  }
  if (answer_.delivery.drop == Drop::inBody) {
    answer_.body.resize(answer_.body.size() / 2);
  }
  sendPiece();
}

void Http1Session::sendPiece() {
  const bool slow = answer_.delivery.bodyTime.count() > 0;
  const std::string_view rest = std::string_view{answer_.body}.substr(sent_);
  if (rest.empty()) {
    return sendEnded();
  }
  const auto piece = slow ? rest.substr(0, answer_.body.size() / piecesOfSlowBody + 1) : rest;
  sent_ += piece.size();
  connection_->closeAfter(timeout);
  connection_->write(piece, next(slow ? &Http1Session::waitForNextPiece : &Http1Session::sendEnded));
}

void Http1Session::waitForNextPiece() {
  connection_->closeNever();
  pause_.expires_after(answer_.delivery.bodyTime / piecesOfSlowBody);
  pause_.async_wait([piece = next(&Http1Session::sendPiece)](Error error) { piece(error, 0); });
}

void Http1Session::sendEnded() {
  if (answer_.delivery.drop == Drop::inBody) {
    return connection_->close();
  }
  if (keepAlive_) {
    return readRequest();
  }
  connection_->closeGently();
}

}  // namespace quillmar::sandbox
