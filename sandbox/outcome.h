#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace quillmar::sandbox {

struct Failure {
  std::string text;
};

// A value, or a sentence that says why there is none.
template <class T>
class [[nodiscard]] Outcome {
 public:
  Outcome(T value) : state_{std::move(value)} {}
  Outcome(Failure failure) : state_{std::move(failure)} {}

  explicit operator bool() const { return state_.index() == 0; }
  T& operator*() { return *std::get_if<0>(&state_); }
  const T& operator*() const { return *std::get_if<0>(&state_); }
  T* operator->() { return std::get_if<0>(&state_); }
  const T* operator->() const { return std::get_if<0>(&state_); }

  // Requires a failure.
  const std::string& failure() const { return std::get_if<1>(&state_)->text; }

 private:
  std::variant<T, Failure> state_;
};

}  // namespace quillmar::sandbox
