#include "tunnel/resolver/upstreams.h"

#include <algorithm>
#include <utility>

namespace quillmar::tunnel {

void Upstreams::take(Time now, Connect connect) {
  next_ = std::make_unique<DohUpstream>(std::move(connect));
  if (!current_) {
    current_ = std::move(next_);
    return;
  }
  next_->prepare(now);
}

void Upstreams::takeNone() {
  next_.reset();
  retire();
}

void Upstreams::networkChanged(Time now) {
  for (auto* const upstream : {current_.get(), next_.get()}) {
    if (upstream != nullptr) {
      upstream->networkChanged(now);
    }
  }
}

void Upstreams::retire() {
  if (current_) {
    retired_.push_back(std::move(current_));
    changed_();
  }
}

void Upstreams::ask(Time now, Ticket ticket, std::string question, Done done) {
  if (!current_) {
    return done(now, Failure{Cause::noEndpoint});
  }
  current_->ask(now, ticket, std::move(question), std::move(done));
}

void Upstreams::cancel(Ticket ticket) {
  forEach([ticket](DohUpstream& upstream) { upstream.cancel(ticket); });
}

void Upstreams::flush() {
  forEach([](DohUpstream& upstream) { upstream.flush(); });
}

std::optional<Time> Upstreams::wakeTime() const {
  std::optional<Time> earliest;
  forEach([&earliest](const DohUpstream& upstream) {
    if (const auto time = upstream.wakeTime()) {
      earliest = earliest ? std::min(*earliest, *time) : *time;
    }
  });
  return earliest;
}

void Upstreams::wake(Time now) {
  forEach([now](DohUpstream& upstream) { upstream.wake(now); });
  if (next_ && !next_->isPreparing()) {
    retire();
    current_ = std::move(next_);
  }
  std::erase_if(retired_, [](const auto& upstream) { return !upstream->hasOpen(); });
}

}  // namespace quillmar::tunnel
