#pragma once

#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include "foundation/observable.h"

namespace quillmar {

// A derived value that also depends on the current time. Reading it computes the current value. Passing time
// announces nothing, so the owner must call `check` periodically.
template <class T>
class Timely final : public Member {
 public:
  Timely(ObservableObject& owner, std::string_view name, std::function<T()> compute)
      : Member(owner, name, Kind::derived), compute_(std::move(compute)) {}

  T operator()() const { return compute_(); }
  Value value() const override { return toValue(compute_()); }

  // Announces a value that differs from the last checked one.
  void check() {
    if (T present = compute_(); checked_ != present) {
      checked_ = std::move(present);
      announce();
    }
  }

 private:
  std::function<T()> compute_;
  std::optional<T> checked_;
};

}  // namespace quillmar
