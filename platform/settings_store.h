#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "foundation/date.h"
#include "platform/port.h"

namespace quillmar {

using SettingValue = std::variant<std::string, bool, std::int64_t, Date>;

// The event that removes a setting.
enum class Reset { never, atLogout, withEnrollment };

template <class T>
struct Setting {
  using Value = T;
  std::string_view key;
  Reset reset = Reset::never;

  constexpr operator std::string_view() const { return key; }  // NOLINT(google-explicit-constructor)
};

// An installation's durable key-value store. Thread-safe; a write is seen by the next read on any thread.
// Reading with another type than the stored one gives nullopt. A missing key differs from an empty text.
// Nothing fails visibly: a store that can't write keeps values in memory and logs the cause once.
class SettingsStore : public Port {
 public:
  virtual std::optional<SettingValue> object(std::string_view key) const = 0;
  // Survives a kill of the process once it returns, but not a power cut.
  virtual void set(std::string_view key, SettingValue value) = 0;
  virtual void remove(std::string_view key) = 0;
  // The writes that `writes` makes on this thread are stored atomically.
  virtual void writeTogether(const std::function<void()>& writes) = 0;
  // All earlier writes then survive a power cut too.
  virtual void synchronize() = 0;
  // No removed or replaced value can then be found on the disk.
  virtual void scrub() = 0;
  virtual std::map<std::string, SettingValue> all() const = 0;

  template <class T>
  std::optional<T> read(const Setting<T>& setting) const {
    return as<T>(setting.key);
  }
  template <class T>
  void write(const Setting<T>& setting, std::type_identity_t<T> value) {
    set(setting.key, SettingValue(std::move(value)));
  }

  std::optional<std::string> string(std::string_view key) const { return as<std::string>(key); }
  // A missing key reads as false.
  bool boolean(std::string_view key) const { return as<bool>(key).value_or(false); }
  std::optional<std::int64_t> integer(std::string_view key) const { return as<std::int64_t>(key); }
  std::optional<Date> date(std::string_view key) const { return as<Date>(key); }

 private:
  template <class T>
  std::optional<T> as(std::string_view key) const {
    auto value = object(key);
    T* typed = value ? std::get_if<T>(&*value) : nullptr;
    return typed ? std::optional<T>(std::move(*typed)) : std::nullopt;
  }
};

}  // namespace quillmar
