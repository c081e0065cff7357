#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/secure_item_store.h"

namespace quillmar {

// The sign-in that a parent asked to be remembered: an address and a password, one item each in the secure
// store. Items outlive a logout. Keeps no state; any thread.
class KeychainService {
 public:
  static constexpr std::string_view serviceName = "live.quillmar.credentials";
  static constexpr std::string_view emailKey = "savedEmail";
  static constexpr std::string_view passwordKey = "savedPassword";

  explicit KeychainService(SecureItemStore& items) : items_(items) {}

  // Replaces what is there. False where the item was not stored; a value that is no UTF-8 changes nothing.
  bool save(std::string_view key, std::string_view value) const;
  // Nothing for a missing item and for every other failure alike.
  std::optional<std::string> load(std::string_view key) const;
  // True where the item is gone now, also when there was none.
  bool deleteItem(std::string_view key) const;

 private:
  SecureItemStore& items_;
};

}  // namespace quillmar
