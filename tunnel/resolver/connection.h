#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "tunnel/resolver/upstream.h"

namespace quillmar::tunnel {

// What the endpoint said to one request, as far as it matters.
struct HttpAnswer {
  int status = 0;
  bool isDns = false;  // says the content type
  std::chrono::seconds age{0};
  std::optional<std::chrono::seconds> retryAfter{};
  std::string body{};
};

// What a connection tells of itself. Nothing comes after `ended`.
class ConnectionEvents {
 public:
  ConnectionEvents() = default;
  ConnectionEvents(const ConnectionEvents&) = delete;
  ConnectionEvents& operator=(const ConnectionEvents&) = delete;
  virtual ~ConnectionEvents() = default;

  // It takes requests from now on.
  virtual void opened(Time now) = 0;
  virtual void answered(Time now, Ticket ticket, std::variant<HttpAnswer, Failure> answer) = 0;
  // The request ended without an answer; on another connection it may get one.
  virtual void dropped(Time now, Ticket ticket) = 0;
  virtual void ponged(Time now) = 0;
  // It takes no more requests; those under way go on.
  virtual void closing(Time now) = 0;
  virtual void ended(Time now, const Failure& failure) = 0;
};

// One connection to the endpoint. Its end is the end of its object; what is under way then is not told of.
class Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  virtual ~Connection() = default;

  // What these ask for goes out with the next flush: questions that come together go out together.
  virtual void send(Ticket ticket, const std::string& question) = 0;
  virtual void cancel(Ticket ticket) = 0;
  virtual void ping() = 0;
  virtual void flush() = 0;
};

// Begins to connect. Nothing is told before it has returned.
using Connect = std::function<std::unique_ptr<Connection>(ConnectionEvents&)>;

}  // namespace quillmar::tunnel
