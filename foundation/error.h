#pragma once

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>

namespace quillmar {

// Requires only `description()`. Requiring copying and comparison as well would make the concept recursive
// for Result<Result<T>>.
template <class E>
concept ErrorKind = requires(const E& error) {
  error.localizedDescription();
};

// A failure of any kind, as a value. Cheap to copy; may be passed between threads.
class Error {
 public:
  template <ErrorKind E>
  Error(E kind) : held_(std::make_shared<const Held<E>>(std::move(kind))) {}

  std::string localizedDescription() const { return held_->localizedDescription(); }

  // Null if the error is of another kind.
  template <ErrorKind E>
  const E* as() const {
    const auto* held = dynamic_cast<const Held<E>*>(held_.get());
    return held ? &held->kind : nullptr;
  }

  template <ErrorKind E>
  friend bool operator==(const Error& error, const E& kind) {
    const E* own = error.as<E>();
    return own && *own == kind;
  }
  friend bool operator==(const Error& one, const Error& other) { return one.held_->equals(*other.held_); }

 private:
  struct Any {
    Any() = default;
    Any(const Any&) = delete;
    Any& operator=(const Any&) = delete;
    virtual ~Any() = default;
    virtual std::string localizedDescription() const = 0;
    virtual bool equals(const Any& other) const = 0;
  };

  template <class E>
  struct Held final : Any {
    explicit Held(E value) : kind(std::move(value)) {}
    std::string localizedDescription() const override { return kind.localizedDescription(); }
    bool equals(const Any& other) const override {
      const auto* same = dynamic_cast<const Held*>(&other);
      return same && same->kind == kind;
    }
    const E kind;
  };

  std::shared_ptr<const Any> held_;
};

}  // namespace quillmar
