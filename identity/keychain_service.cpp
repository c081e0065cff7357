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

std::optional<Secret> KeychainService::load(std::string_view key) const {
  auto found = items_.copyMatching(serviceName, key);
  if (found.status != SecureItemStatus::success || !found.bytes) {
    return std::nullopt;
  }
  Secret item(*std::move(found.bytes));
  return isValidUtf8(item.text()) ? std::optional(std::move(item)) : std::nullopt;
}

bool KeychainService::deleteItem(std::string_view key) const {
  const auto status = items_.remove(serviceName, key);
  return status == SecureItemStatus::success || status == SecureItemStatus::notFound;
}

}  // namespace quillmar
