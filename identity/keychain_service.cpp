#include "identity/keychain_service.h"

#include <utility>

#include "foundation/text.h"

namespace quillmar {

bool KeychainService::save(std::string_view key, std::string_view value) const {
  if (!isValidUtf8(value)) {
    return false;
  }
  deleteItem(key);
  return items_.add(serviceName, key, value) == SecureItemStatus::success;
}

std::optional<std::string> KeychainService::load(std::string_view key) const {
  auto found = items_.copyMatching(serviceName, key);
  const bool isText =
      found.status == SecureItemStatus::success && found.bytes.has_value() && isValidUtf8(*found.bytes);
  return isText ? std::move(found.bytes) : std::nullopt;
}

bool KeychainService::deleteItem(std::string_view key) const {
  const auto status = items_.remove(serviceName, key);
  return status == SecureItemStatus::success || status == SecureItemStatus::notFound;
}

}  // namespace quillmar
