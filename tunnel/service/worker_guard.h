#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "tunnel/resolver/time.h"
#include "tunnel/worker/messages.h"
#include "tunnel/worker/rate_limit.h"

namespace quillmar::tunnel {

// Checks the worker's messages. The worker is not trusted: bytes from the network may have compromised it.
// Every call passes the time.
class WorkerGuard {
 public:
  // A working worker sends a few lines, and one request for name servers a second while nothing is reachable.
  static constexpr int mostMessages = 64;
  static constexpr std::chrono::milliseconds eachMessage{250};

  struct Events {
    std::function<void(const std::string& line)> tell;
    std::function<void()> serversWanted;
    std::function<void()> ponged;
    LinkBootstrap::Reached reached;
  };

  explicit WorkerGuard(Events events) : events_(std::move(events)) {}

  // Call it when a new worker has been started.
  void startAnew() { messages_ = RateLimit(mostMessages, eachMessage); }
  // The host of the current endpoint. Addresses of other hosts are ignored.
  void expect(std::string host) { host_ = std::move(host); }

  // Returns false if the message is malformed, or if there are too many.
  [[nodiscard]] bool take(Time now, std::string_view message);

 private:
  const Events events_;
  RateLimit messages_{mostMessages, eachMessage};
  std::string host_;
};

// Decides when a worker that died is started again: at once at first, after a pause if it keeps dying.
class Restarts {
 public:
  static constexpr int mostAtOnce = 3;
  static constexpr std::chrono::milliseconds firstPause{250};
  // No query is answered during the pause, and a client waits for four seconds at most.
  static constexpr std::chrono::milliseconds longestPause{2000};
  // A worker that has run for this long starts the count of deaths anew.
  static constexpr std::chrono::seconds longLife{60};

  // Returns the pause before the next start. `started` is when the dead worker was started.
  std::chrono::milliseconds died(Time now, Time started);

 private:
  int deaths_ = 0;  // consecutive
};

}  // namespace quillmar::tunnel
