#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tunnel/resolver/connection.h"
#include "tunnel/resolver/upstream.h"

namespace quillmar::tunnel {

// Keeps one connection to the endpoint for as long as there are questions, and decides when it is dead. A
// second connection exists only while it replaces the first. Every call passes the time, as for the resolver.
class DohUpstream final : public Upstream {
 public:
  // Shorter than a question's timeout, so that the question fails with the reason.
  static constexpr std::chrono::milliseconds patienceToConnect{3500};
  static constexpr std::chrono::seconds pauseBetweenAttempts{1};
  // After this time without a question, the connection may be dead and a failed one is not attempted again.
  static constexpr std::chrono::seconds idle{10};
  static constexpr std::chrono::milliseconds suspiciousSilence{1500};
  static constexpr std::chrono::seconds patienceForPong{1};
  static constexpr std::chrono::seconds longestWait{60};
  static constexpr int mostAttempts = 2;

  explicit DohUpstream(Connect connect);
  ~DohUpstream() override;

  void ask(Time now, Ticket ticket, std::string question, Done done) override;
  void cancel(Ticket ticket) override;
  // Sends the questions asked since the last flush.
  void flush();

  // The connection may be dead now, and an endpoint that was unreachable may be reachable. Connects anew at
  // once if there are open questions, otherwise with the next question.
  void networkChanged(Time now);

  // Connects before there is a question.
  void prepare(Time now);
  // Whether the first connection is still being made.
  bool isPreparing() const;
  bool hasOpen() const { return !open_.empty(); }

  std::optional<Time> wakeTime() const;
  void wake(Time now);

 private:
  class Link;
  struct Open {
    std::string question;
    Done done;
    Time sent{};
    int attempts = 0;
    const Link* link = nullptr;  // null: waits for a connection
  };

  void opened(Time now, Link& link);
  void answered(Time now, Link& link, Ticket ticket, std::variant<HttpAnswer, Failure> answer);
  void dropped(Time now, Ticket ticket);
  void heard(Time now, const Link& link);
  void closing(Time now, Link& link);
  void ended(Time now, Link& link, const Failure& failure);

  void connect(Time now);
  void retire(Time now);
  void sendAll(Time now);
  void send(Time now, Ticket ticket, Open& open);
  void askAgain(Time now, const std::vector<Ticket>& tickets);
  void finish(Time now, Ticket ticket, std::variant<Fetched, Failure> outcome);
  void failAll(Time now, const std::vector<Ticket>& tickets, const Failure& failure);
  void holdDown(const Link& link, const Failure& failure);
  std::variant<Fetched, Failure> judge(Time now, std::variant<HttpAnswer, Failure> answer);

  std::vector<Ticket> openOn(const Link* link) const;
  std::optional<Time> suspicionTime() const;

  Connect connect_;
  std::map<Ticket, Open> open_;  // the oldest first
  std::unique_ptr<Link> current_;
  std::unique_ptr<Link> old_;
  std::optional<Failure> failed_;  // why the last attempt to connect failed
  Time nextAttempt_{};
  Time lastAsked_{};
  Time askNotBefore_{};
  int emptyLinks_ = 0;  // consecutive connections that ended without an answer
};

}  // namespace quillmar::tunnel
