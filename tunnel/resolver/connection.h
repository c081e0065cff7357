#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "tunnel/resolver/upstream.h"

namespace quillmar::tunnel {

// The endpoint's HTTP answer to one request.
struct HttpAnswer {
  static constexpr int ok = 200;

  int status = 0;
  bool isDns = false;  // by its content type
  std::chrono::seconds age{0};
  std::optional<std::chrono::seconds> retryAfter{};
  std::string body{};
};

// Reports of a connection. `ended` is the last one.
class ConnectionEvents {
 public:
  ConnectionEvents() = default;
  ConnectionEvents(const ConnectionEvents&) = delete;
  ConnectionEvents& operator=(const ConnectionEvents&) = delete;
  virtual ~ConnectionEvents() = default;

  // It accepts requests from now on.
  virtual void opened(Time now) = 0;
  virtual void answered(Time now, Ticket ticket, std::variant<HttpAnswer, Failure> answer) = 0;
  // The request ended without an answer. It may be sent again on another connection.
  virtual void dropped(Time now, Ticket ticket) = 0;
  virtual void ponged(Time now) = 0;
  // It accepts no more requests; the open ones go on.
  virtual void closing(Time now) = 0;
  virtual void ended(Time now, const Failure& failure) = 0;
};

// One connection to the endpoint. The destructor closes it without any further report.
class Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  virtual ~Connection() = default;

  // These take effect with the next flush, so that questions that arrive together are sent together.
  virtual void send(Ticket ticket, const std::string& question) = 0;
  virtual void cancel(Ticket ticket) = 0;
  virtual void ping() = 0;
  virtual void flush() = 0;
};

// Begins to connect. No event comes before it has returned.
using Connect = std::function<std::unique_ptr<Connection>(ConnectionEvents&)>;

}  // namespace quillmar::tunnel
