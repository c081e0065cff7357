#pragma once

#include <chrono>

#include "platform/secure_item_store.h"

namespace quillmar {

// The desktop's keyring, through libsecret. Other tools find an item by its service and account, which are
// attributes. Never prompts: a locked item returns `interactionNotAllowed`. Returns `failed` if the user has
// no default keyring, if there is no keyring service, or if it doesn't answer within `timeout`.
class LibsecretItemStore final : public SecureItemStore {
 public:
  LibsecretItemStore() = default;
  explicit LibsecretItemStore(std::chrono::milliseconds timeout) : timeout_(timeout) {}

  SecureItemStatus add(std::string_view service, std::string_view account, std::string_view bytes) override;
  Found copyMatching(std::string_view service, std::string_view account) override;
  SecureItemStatus remove(std::string_view service, std::string_view account) override;

 private:
  const std::chrono::milliseconds timeout_{1000};
};

}  // namespace quillmar
