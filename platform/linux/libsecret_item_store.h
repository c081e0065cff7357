#pragma once

#include <chrono>

#include "platform/secure_item_store.h"

namespace quillmar {

// The keyring of the person's desktop, through libsecret. An item carries its service and its account as
// attributes, so that other tools find it by them. Never prompts: what is locked answers
// `interactionNotAllowed`, a person without a default keyring or a desktop without a keyring service answers
// `failed`, and so does a keyring that has not answered after `patience`.
class LibsecretItemStore final : public SecureItemStore {
 public:
  LibsecretItemStore() = default;
  explicit LibsecretItemStore(std::chrono::milliseconds patience) : patience_(patience) {}

  SecureItemStatus add(std::string_view service, std::string_view account, std::string_view bytes) override;
  Found copyMatching(std::string_view service, std::string_view account) override;
  SecureItemStatus remove(std::string_view service, std::string_view account) override;

 private:
  const std::chrono::milliseconds patience_{1000};
};

}  // namespace quillmar
