#pragma once

#include <optional>
#include <string_view>

#include "foundation/secret.h"
#include "platform/secure_item_store.h"

namespace quillmar {

// The sign-in that a parent asked to remember: email address and password, one item each in the secure store.
// Items survive a logout. Stateless; any thread.
class KeychainService {
 public:
  static constexpr std::string_view serviceName = "live.quillmar.credentials";
  static constexpr std::string_view emailKey = "savedEmail";
  static constexpr std::string_view passwordKey = "savedPassword";

  explicit KeychainService(SecureItemStore& items) : items_(items) {}

  // Replaces an existing item. False if the item was not stored; a value that is not UTF-8 changes nothing.
  bool save(std::string_view key, std::string_view value) const;
  // nullopt if the item is missing or can't be read.
  std::optional<Secret> load(std::string_view key) const;
  // True if the item no longer exists, even if it never did.
  bool deleteItem(std::string_view key) const;

 private:
  SecureItemStore& items_;
};

}  // namespace quillmar
