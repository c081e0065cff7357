#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <variant>

#include "tunnel/resolver/failure.h"
#include "tunnel/resolver/time.h"

namespace quillmar::tunnel {

// The body of an answer, and how long caches on the way had kept it.
struct Fetched {
  std::string message{};
  std::chrono::seconds age{0};
};

// Identifies a question. The caller chooses it; later questions have higher ones.
using Ticket = std::uint64_t;

// Answers questions.
class Upstream {
 public:
  using Done = std::function<void(Time now, std::variant<Fetched, Failure>)>;

  Upstream() = default;
  Upstream(const Upstream&) = delete;
  Upstream& operator=(const Upstream&) = delete;
  virtual ~Upstream() = default;

  // `done` is called once at most, maybe before this returns.
  virtual void ask(Time now, Ticket ticket, std::string question, Done done) = 0;
  // `done` will not be called.
  virtual void cancel(Ticket ticket) = 0;
};

}  // namespace quillmar::tunnel
