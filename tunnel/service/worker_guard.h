#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "tunnel/resolver/time.h"
#include "tunnel/worker/messages.h"
#include "tunnel/worker/rate_limit.h"

namespace quillmar::tunnel {

// Listens to the worker as to somebody who may have been taken over: by what it has read from the network.
// Told the time with every call.
class WorkerGuard {
 public:
  // A worker says a line now and then, and asks for servers once a second while nothing can be reached.
  static constexpr int mostMessages = 64;
  static constexpr std::chrono::milliseconds eachMessage{250};

  struct Events {
    std::function<void(const std::string& line)> tell;
    std::function<void()> serversWanted;
    LinkBootstrap::Reached reached;
  };

  explicit WorkerGuard(Events events) : events_(std::move(events)) {}

  // Another worker has not said anything yet.
  void startAnew() { messages_ = RateLimit(mostMessages, eachMessage); }
  // The host that it was told to ask; it has nothing to say about any other.
  void expect(std::string host) { host_ = std::move(host); }

  // False for what no worker says, or not so often.
  [[nodiscard]] bool take(Time now, std::string_view message);

 private:
  const Events events_;
  RateLimit messages_{mostMessages, eachMessage};
  std::string host_;
};

// When a worker that has died is started again: at once, unless it dies again and again.
class Restarts {
 public:
  static constexpr int mostAtOnce = 3;
  static constexpr std::chrono::milliseconds firstPause{250};
  // Nobody is answered meanwhile, and nobody waits for longer than four seconds.
  static constexpr std::chrono::milliseconds longestPause{2000};
  // One that has lived for so long did not die of what the one before died of.
  static constexpr std::chrono::seconds longLife{60};

  // After which pause, for one that was started then.
  std::chrono::milliseconds died(Time now, Time started);

 private:
  int deaths_ = 0;  // in a row
};

}  // namespace quillmar::tunnel
