#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "tunnel/resolver/doh_upstream.h"

namespace quillmar::tunnel {

// The current endpoint, and the change to another one: the new connection is made first, and open questions
// are finished at the old endpoint. Every call passes the time, as for the resolver.
class Upstreams final : public Upstream {
 public:
  // `changed` is called when earlier answers no longer come from the current endpoint.
  explicit Upstreams(std::function<void()> changed) : changed_(std::move(changed)) {}

  // Takes effect when the new connection is open, or has failed.
  void take(Time now, Connect connect);
  // No endpoint from now on. Open questions are finished.
  void takeNone();
  void networkChanged(Time now);

  void ask(Time now, Ticket ticket, std::string question, Done done) override;
  void cancel(Ticket ticket) override;
  void flush();

  std::optional<Time> wakeTime() const;
  void wake(Time now);

 private:
  template <class Action>
  void forEach(const Action& act) const {
    for (const auto& retired : retired_) {
      act(*retired);
    }
    for (auto* const upstream : {current_.get(), next_.get()}) {
      if (upstream != nullptr) {
        act(*upstream);
      }
    }
  }
  void retire();

  std::function<void()> changed_;
  std::unique_ptr<DohUpstream> current_;
  std::unique_ptr<DohUpstream> next_;
  std::vector<std::unique_ptr<DohUpstream>> retired_;
};

}  // namespace quillmar::tunnel
