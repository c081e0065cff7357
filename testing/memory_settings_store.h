#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/settings_store.h"

namespace quillmar {

class MemorySettingsStore final : public SettingsStore {
 public:
  std::optional<SettingValue> object(std::string_view key) const override {
    const std::scoped_lock lock(mutex_);
    const auto found = values_.find(key);
    return found == values_.end() ? std::nullopt : std::optional(found->second);
  }

  void set(std::string_view key, SettingValue value) override {
    const std::scoped_lock lock(mutex_);
    ++writes_;
    values_.insert_or_assign(std::string(key), std::move(value));
  }

  void remove(std::string_view key) override {
    const std::scoped_lock lock(mutex_);
    ++writes_;
    if (const auto found = values_.find(key); found != values_.end()) {
      values_.erase(found);
    }
  }

  void writeTogether(const std::function<void()>& writes) override { writes(); }

  void synchronize() override {
    const std::scoped_lock lock(mutex_);
    ++synchronizations_;
  }

  void scrub() override {
    const std::scoped_lock lock(mutex_);
    ++scrubs_;
  }

  std::map<std::string, SettingValue> all() const override {
    const std::scoped_lock lock(mutex_);
    return {values_.begin(), values_.end()};
  }

  // How often `set` and `remove`, and how often each of the others were called.
  int writes() const {
    const std::scoped_lock lock(mutex_);
    return writes_;
  }
  int synchronizations() const {
    const std::scoped_lock lock(mutex_);
    return synchronizations_;
  }
  int scrubs() const {
    const std::scoped_lock lock(mutex_);
    return scrubs_;
  }

 private:
  mutable std::mutex mutex_;
  std::map<std::string, SettingValue, std::less<>> values_;
  int writes_ = 0;
  int synchronizations_ = 0;
  int scrubs_ = 0;
};

}  // namespace quillmar
