#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "foundation/date.h"
#include "foundation/wipe.h"

namespace quillmar {

// A member or a record as front ends, the driver and the JSON writer see it. Maps keep insertion order. A
// text is wiped when it is freed, since it may be a password.
class Value {
 public:
  using List = std::vector<Value>;
  using Entry = std::pair<std::string, Value>;
  using Map = std::vector<Entry>;

  Value() = default;
  Value(bool value) : held_(value) {}
  Value(double value) : held_(value) {}
  Value(std::string value) : held_(std::move(value)) {}
  Value(std::string_view value) : held_(std::string(value)) {}
  Value(const char* value) : held_(std::string(value)) {}
  Value(List value) : held_(std::move(value)) {}
  Value(Map value) : held_(std::move(value)) {}
  template <std::integral T>
  requires(!std::same_as<T, bool>) Value(T value) : held_(static_cast<std::int64_t>(value)) {}
  Value(const Value&) = default;
  Value(Value&& other) noexcept = default;
  Value& operator=(Value other) noexcept {
    wipeText();
    held_ = std::move(other.held_);
    return *this;
  }
  ~Value() { wipeText(); }

  bool isNil() const { return std::holds_alternative<std::monostate>(held_); }
  const bool* boolean() const { return std::get_if<bool>(&held_); }
  const std::int64_t* integer() const { return std::get_if<std::int64_t>(&held_); }
  const double* real() const { return std::get_if<double>(&held_); }
  const std::string* string() const { return std::get_if<std::string>(&held_); }
  const List* list() const { return std::get_if<List>(&held_); }
  const Map* map() const { return std::get_if<Map>(&held_); }

  // Null if this is not a map or lacks the key.
  const Value* find(std::string_view key) const;

  template <class Visitor>
  decltype(auto) visit(Visitor&& visitor) const {
    return std::visit(std::forward<Visitor>(visitor), held_);
  }

  friend bool operator==(const Value& one, const Value& other) { return one.held_ == other.held_; }

 private:
  void wipeText() {
    if (auto* const text = std::get_if<std::string>(&held_)) {
      wipe(*text);
    }
  }

  std::variant<std::monostate, bool, std::int64_t, double, std::string, List, Map> held_;
};

// Compact. Control characters are escaped, non-ASCII characters are not.
std::string writeJson(const Value& value);

}  // namespace quillmar
