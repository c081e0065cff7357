#include "tunnel/resolver/doh_upstream.h"

#include <algorithm>
#include <utility>

namespace quillmar::tunnel {

// A connection and its state.
class DohUpstream::Link final : public ConnectionEvents {
 public:
  enum class State { connecting, open, closing };

  Link(DohUpstream& owner, Time now) : begun(now), owner_(owner), connection_(owner.connect_(*this)) {}

  Connection& connection() { return *connection_; }
  void ping(Time now) {
    connection_->ping();
    lastPing = now;
    awaitsPong = true;
  }

  void opened(Time now) override {
    lastHeard = now;
    owner_.opened(now, *this);
  }
  void answered(Time now, Ticket ticket, std::variant<HttpAnswer, Failure> answer) override {
    heard(now);
    owner_.answered(now, *this, ticket, std::move(answer));
  }
  void dropped(Time now, Ticket ticket) override {
    heard(now);
    owner_.dropped(now, ticket);
  }
  void ponged(Time now) override { heard(now); }
  void closing(Time now) override { owner_.closing(now, *this); }
  void ended(Time now, const Failure& failure) override { owner_.ended(now, *this, failure); }

  State state = State::connecting;
  const Time begun;
  Time lastHeard{};
  Time lastPing{};
  bool awaitsPong = false;
  bool hasAnswered = false;

 private:
  void heard(Time now) {
    lastHeard = now;
    awaitsPong = false;
    owner_.heard(now, *this);
  }

  DohUpstream& owner_;
  const std::unique_ptr<Connection> connection_;
};

DohUpstream::DohUpstream(Connect connect) : connect_(std::move(connect)) {}
DohUpstream::~DohUpstream() = default;

void DohUpstream::ask(Time now, Ticket ticket, std::string question, Done done) {
  const bool wasIdle = now - std::exchange(lastAsked_, now) >= idle;
  if (now < askNotBefore_) {
    return done(now, Failure{Cause::askedToWait});
  }
  if (wasIdle && !current_) {
    failed_.reset();
  }
  if (failed_) {
    return done(now, *failed_);
  }
  auto& open = open_.emplace(ticket, Open{std::move(question), std::move(done)}).first->second;
  if (!current_) {
    connect(now);
  } else if (current_->state == Link::State::open) {
    send(now, ticket, open);
  }
}

void DohUpstream::cancel(Ticket ticket) {
  const auto open = open_.extract(ticket);
  for (const auto& link : {current_.get(), old_.get()}) {
    if (!open.empty() && link != nullptr && open.mapped().link == link) {
      link->connection().cancel(ticket);
    }
  }
}

void DohUpstream::flush() {
  if (old_) {
    old_->connection().flush();
  }
  if (current_) {
    current_->connection().flush();
  }
}

void DohUpstream::prepare(Time now) {
  if (!current_) {
    connect(now);
  }
}

void DohUpstream::networkChanged(Time now) {
  failed_.reset();
  if (isPreparing()) {
    return connect(now);
  }
  if (open_.empty() && now - lastAsked_ >= idle) {
    current_.reset();
    old_.reset();
    return;
  }
  // The old connection is kept as long as the new one is not open, because it may still answer.
  if (current_) {
    current_->ping(now);
    retire(now);
  }
  if (!current_) {
    connect(now);
  }
}

bool DohUpstream::isPreparing() const { return current_ && current_->state == Link::State::connecting; }

void DohUpstream::connect(Time now) { current_ = std::make_unique<Link>(*this, now); }

void DohUpstream::opened(Time now, Link& link) {
  link.state = Link::State::open;
  failed_.reset();
  // A closing connection still answers its open questions. One that was given up is dropped.
  if (old_ && old_->state == Link::State::open) {
    const auto left = openOn(old_.get());
    old_.reset();
    askAgain(now, left);
  }
  sendAll(now);
}

// If a connection that was given up receives data before the new one is open, it was only slow and is used
// again.
void DohUpstream::heard(Time now, const Link& link) {
  const bool isMissed = !current_ || current_->state == Link::State::connecting;
  if (isMissed && &link == old_.get() && link.state == Link::State::open) {
    current_ = std::move(old_);
    failed_.reset();
    sendAll(now);
  }
}

void DohUpstream::sendAll(Time now) {
  for (const Ticket ticket : openOn(nullptr)) {
    send(now, ticket, open_.at(ticket));
  }
}

void DohUpstream::send(Time now, Ticket ticket, Open& open) {
  open.sent = now;
  open.link = current_.get();
  ++open.attempts;
  current_->connection().send(ticket, open.question);
  if (now - current_->lastHeard >= idle && !current_->awaitsPong) {
    current_->ping(now);
  }
}

void DohUpstream::askAgain(Time now, const std::vector<Ticket>& tickets) {
  for (const Ticket ticket : tickets) {
    auto& open = open_.at(ticket);
    if (open.attempts >= mostAttempts) {
      finish(now, ticket, Failure{Cause::broken});
      continue;
    }
    open.link = nullptr;
    if (!current_) {
      connect(now);
    } else if (current_->state == Link::State::open) {
      send(now, ticket, open);
    }
  }
}

std::variant<Fetched, Failure> DohUpstream::judge(Time now, std::variant<HttpAnswer, Failure> answer) {
  auto* http = std::get_if<HttpAnswer>(&answer);
  if (http == nullptr) {
    return std::get<Failure>(std::move(answer));
  }
  constexpr int tooManyRequests = 429;
  if (http->status == HttpAnswer::ok) {
    return http->isDns ? std::variant<Fetched, Failure>(Fetched{std::move(http->body), http->age})
                       : Failure{Cause::notDns};
  }
  if ((http->status == tooManyRequests || http->status >= 500) && http->retryAfter) {
    askNotBefore_ = now + std::min(*http->retryAfter, longestWait);
  }
  const auto status = "status " + std::to_string(http->status);
  return Failure{http->status / 100 == 3 ? Cause::redirected : Cause::refused, status};
}

void DohUpstream::answered(Time now, Link& link, Ticket ticket, std::variant<HttpAnswer, Failure> answer) {
  link.hasAnswered = true;
  emptyLinks_ = 0;
  if (open_.contains(ticket)) {
    finish(now, ticket, judge(now, std::move(answer)));
  }
}

void DohUpstream::dropped(Time now, Ticket ticket) {
  if (open_.contains(ticket)) {
    askAgain(now, {ticket});
  }
}

void DohUpstream::closing(Time now, Link& link) {
  if (&link != current_.get()) {
    return;
  }
  link.state = Link::State::closing;
  retire(now);
}

// Questions that are still open on the connection before the last are sent again.
void DohUpstream::retire(Time now) {
  const auto before = std::exchange(old_, std::move(current_));
  if (before) {
    askAgain(now, openOn(before.get()));
  }
}

void DohUpstream::ended(Time now, Link& link, const Failure& failure) {
  const auto wasConnecting = link.state == Link::State::connecting;
  const auto left = wasConnecting ? openOn(nullptr) : openOn(&link);
  const bool wasCurrent = &link == current_.get();
  const auto gone = std::move(wasCurrent ? current_ : old_);
  if (!wasConnecting && !gone->hasAnswered) {
    ++emptyLinks_;
  }
  // An endpoint that accepts connections but answers nothing is tried as rarely as one that refuses them.
  if (wasConnecting || (wasCurrent && emptyLinks_ >= mostAttempts)) {
    holdDown(*gone, failure);
    failAll(now, left, failure);
  } else {
    askAgain(now, left);
  }
}

void DohUpstream::holdDown(const Link& link, const Failure& failure) {
  failed_ = failure;
  nextAttempt_ = link.begun + pauseBetweenAttempts;
}

void DohUpstream::failAll(Time now, const std::vector<Ticket>& tickets, const Failure& failure) {
  for (const Ticket ticket : tickets) {
    finish(now, ticket, failure);
  }
}

void DohUpstream::finish(Time now, Ticket ticket, std::variant<Fetched, Failure> outcome) {
  if (const auto open = open_.extract(ticket)) {
    open.mapped().done(now, std::move(outcome));
  }
}

std::vector<Ticket> DohUpstream::openOn(const Link* link) const {
  std::vector<Ticket> tickets;
  for (const auto& [ticket, open] : open_) {
    if (open.link == link) {
      tickets.push_back(ticket);
    }
  }
  return tickets;
}

// When the oldest question on the connection has waited too long for an answer.
std::optional<Time> DohUpstream::suspicionTime() const {
  const auto oldest =
      std::ranges::find_if(open_, [&](const auto& each) { return each.second.link == current_.get(); });
  if (oldest == open_.end()) {
    return std::nullopt;
  }
  return std::max(oldest->second.sent, current_->lastPing) + suspiciousSilence;
}

std::optional<Time> DohUpstream::wakeTime() const {
  if (!current_) {
    return failed_ && nextAttempt_ < lastAsked_ + idle ? std::optional(nextAttempt_) : std::nullopt;
  }
  if (current_->state == Link::State::connecting) {
    return current_->begun + patienceToConnect;
  }
  return current_->awaitsPong ? current_->lastPing + patienceForPong : suspicionTime();
}

void DohUpstream::wake(Time now) {
  if (const auto time = wakeTime(); !time || *time > now) {
    return;
  }
  if (!current_) {
    connect(now);
  } else if (current_->state == Link::State::connecting) {
    ended(now, *current_, Failure{Cause::unreachable, "no answer"});
  } else if (current_->awaitsPong) {
    retire(now);
    if (!current_) {
      connect(now);
    }
  } else {
    current_->ping(now);
  }
}

}  // namespace quillmar::tunnel
