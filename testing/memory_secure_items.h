#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/secure_item_store.h"

namespace quillmar {

class MemorySecureItems final : public SecureItemStore {
 public:
  // (service, account).
  using Name = std::pair<std::string, std::string>;

  SecureItemStatus add(std::string_view service, std::string_view account, std::string_view bytes) override {
    tellOfWrite();
    const std::scoped_lock lock(mutex_);
    if (refusal_) {
      return *refusal_;
    }
    const bool added = items_.emplace(Name{service, account}, bytes).second;
    return added ? SecureItemStatus::success : SecureItemStatus::duplicate;
  }

  Found copyMatching(std::string_view service, std::string_view account) override {
    const std::scoped_lock lock(mutex_);
    if (refusal_) {
      return {*refusal_, std::nullopt};
    }
    const auto found = items_.find(Name{service, account});
    return found == items_.end() ? Found{SecureItemStatus::notFound, std::nullopt}
                                 : Found{SecureItemStatus::success, found->second};
  }

  SecureItemStatus remove(std::string_view service, std::string_view account) override {
    tellOfWrite();
    const std::scoped_lock lock(mutex_);
    if (refusal_) {
      return *refusal_;
    }
    return items_.erase(Name{service, account}) > 0 ? SecureItemStatus::success : SecureItemStatus::notFound;
  }

  // As while the device is locked: everything is refused with `interactionNotAllowed`.
  void setLocked(bool locked) {
    failWith(locked ? std::optional(SecureItemStatus::interactionNotAllowed) : std::nullopt);
  }
  // Everything ends with this status until told otherwise.
  void failWith(std::optional<SecureItemStatus> status) {
    const std::scoped_lock lock(mutex_);
    refusal_ = status;
  }
  // Runs before each write. To be set before anybody writes.
  void watchWrites(std::function<void()> listener) { writeListener_ = std::move(listener); }
  std::map<Name, std::string> items() const {
    const std::scoped_lock lock(mutex_);
    return items_;
  }

 private:
  void tellOfWrite() const {
    if (writeListener_) {
      writeListener_();
    }
  }

  mutable std::mutex mutex_;
  std::function<void()> writeListener_;
  std::optional<SecureItemStatus> refusal_;
  std::map<Name, std::string> items_;
};

}  // namespace quillmar
