#pragma once

#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <memory>
#include <optional>
#include <string>

#include "sandbox/http/connection.h"
#include "sandbox/http/exchange.h"

namespace quillmar::sandbox {

// An HTTP/1.1 connection. Keeps itself alive until the connection ends.
class Http1Session : public std::enable_shared_from_this<Http1Session> {
 public:
  Http1Session(std::shared_ptr<Connection> connection, Exchange& exchange, bool secure);

  void start() { readRequest(); }

 private:
  using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;

  Connection::Done next(void (Http1Session::*step)());

  void readRequest();
  void parse();
  void readMore();
  void headerCame();
  void sendContinue();
  void readBody();
  void requestCame();
  Request takeRequest();
  void refuse(Error error);

  void send(Answer answer);
  std::string headerOfAnswer() const;
  void sendBody();
  void sendPiece();
  void waitForNextPiece();
  void sendEnded();

  std::shared_ptr<Connection> connection_;
  Exchange& exchange_;
  boost::asio::steady_timer pause_;
  const bool secure_;
  bool keepAlive_ = false;
  bool withBody_ = true;
  std::size_t sent_ = 0;
  boost::beast::flat_buffer received_;
  std::optional<Parser> parser_;
  Answer answer_;
  std::string header_;
};

}  // namespace quillmar::sandbox
