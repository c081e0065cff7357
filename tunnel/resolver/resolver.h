#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tunnel/dns/reply.h"
#include "tunnel/resolver/cache.h"
#include "tunnel/resolver/failure_log.h"
#include "tunnel/resolver/upstream.h"

namespace quillmar::tunnel {

// Answers each message of a client within four seconds. It has no clock: every call gets the time, and
// `wakeTime` says when it wants to be called again.
class Resolver {
 public:
  using Reply = std::function<void(std::string)>;

  static constexpr std::chrono::seconds patience{4};
  static constexpr std::chrono::seconds holdOfFailure{1};
  static constexpr std::size_t mostWaiting = 1024;

  Resolver(Upstream& upstream, FailureLog& log) : upstream_(upstream), log_(log) {}
  Resolver(const Resolver&) = delete;
  Resolver& operator=(const Resolver&) = delete;
  // Clients that wait get no reply.
  ~Resolver();

  // `reply` may be called before this returns. It is not called for messages that must not be answered.
  void ask(Time now, std::string_view message, Channel channel, Reply reply);

  // Empties the cache. Clients that wait still get the answer that is on its way. It is not kept, and later
  // clients don't get it.
  void forget();
  // Forgets failures, so that these questions may be asked again at once.
  void networkChanged(Time now) { lastChange_ = now; }

  std::optional<Time> wakeTime() const;
  void wake(Time now);

 private:
  struct Waiter {
    Query query;
    Channel channel;
    Reply reply;
  };
  struct UnderWay {
    std::string key;
    Time deadline;
    std::vector<Waiter> waiters{};
    bool isForgotten = false;
  };

  void resolve(Time now, Waiter waiter);
  void askUpstream(Time now, std::string key, Waiter waiter);
  void fetched(Time now, Ticket ticket, std::variant<Fetched, Failure> result);
  void finish(Time now, Ticket ticket, Outcome outcome);
  // The cache's entry for it; null if that is a failure from before the network changed.
  const Cache::Entry* known(Time now, const std::string& key);

  Upstream& upstream_;
  FailureLog& log_;
  Cache cache_;
  std::map<Ticket, UnderWay> underWay_;                       // in the order of their deadlines
  std::unordered_map<std::string_view, Ticket> ticketByKey_;  // keys belong to those under way
  std::size_t waiting_ = 0;
  Ticket lastTicket_ = 0;
  Time lastChange_{};
};

}  // namespace quillmar::tunnel
