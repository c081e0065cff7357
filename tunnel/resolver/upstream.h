#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <variant>

#include "tunnel/resolver/failure.h"
#include "tunnel/resolver/time.h"

namespace quillmar::tunnel {

// The body of an answer, and for how long it had been kept on its way.
struct Fetched {
  std::string message{};
  std::chrono::seconds age{0};
};

// Chosen by whoever asks; the later question has the higher one.
using Ticket = std::uint64_t;

// Whoever answers questions.
class Upstream {
 public:
  using Done = std::function<void(Time now, std::variant<Fetched, Failure>)>;

  Upstream() = default;
  Upstream(const Upstream&) = delete;
  Upstream& operator=(const Upstream&) = delete;
  virtual ~Upstream() = default;

  // `done` may be called at once, and is called once at most.
  virtual void ask(Time now, Ticket ticket, std::string question, Done done) = 0;
  // Nobody waits for it any more: `done` will not be called.
  virtual void cancel(Ticket ticket) = 0;
};

}  // namespace quillmar::tunnel
