#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "tunnel/resolver/doh_upstream.h"

namespace quillmar::tunnel {

// The endpoint that is asked, and how one takes another's place: the new one's connection is made first, and
// what is open on the old one ends there. Told the time with every call, as the resolver is.
class Upstreams final : public Upstream {
 public:
  // `changed` is called whenever the answers so far are no longer those of the endpoint that is asked.
  explicit Upstreams(std::function<void()> changed) : changed_(std::move(changed)) {}

  // From the moment on at which its connection stands, or can't be made.
  void take(Time now, Connect connect);
  // Asks nobody any more; what is open ends where it is.
  void takeNone();
  void networkChanged(Time now);

  void ask(Time now, Ticket ticket, std::string question, Done done) override;
  void cancel(Ticket ticket) override;
  void flush();

  std::optional<Time> wakeTime() const;
  void wake(Time now);

 private:
  std::vector<DohUpstream*> all() const;
  void retire();

  std::function<void()> changed_;
  std::unique_ptr<DohUpstream> current_;
  std::unique_ptr<DohUpstream> next_;
  std::vector<std::unique_ptr<DohUpstream>> retired_;
};

}  // namespace quillmar::tunnel
