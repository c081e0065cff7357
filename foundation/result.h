#pragma once

#include <cassert>
#include <optional>
#include <utility>
#include <variant>

#include "foundation/error.h"

namespace quillmar {

// A value or an error. `value()` requires `ok()`, `error()` requires `!ok()`.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

  bool ok() const { return state_.index() == 0; }
  explicit operator bool() const { return ok(); }

  const T& value() const& {
    assert(ok());
    return *std::get_if<0>(&state_);
  }
  T&& value() && {
    assert(ok());
    return std::move(*std::get_if<0>(&state_));
  }
  const Error& error() const {
    assert(!ok());
    return *std::get_if<1>(&state_);
  }

 private:
  std::variant<T, Error> state_;
};

template <>
class [[nodiscard]] Result<void> {
 public:
  Result() = default;
  Result(Error error) : error_(std::move(error)) {}

  bool ok() const { return !error_.has_value(); }
  explicit operator bool() const { return ok(); }
  const Error& error() const {
    assert(!ok());
    return *error_;
  }

 private:
  std::optional<Error> error_;
};

inline Result<void> success() { return {}; }

}  // namespace quillmar
