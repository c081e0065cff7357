#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/port.h"

namespace quillmar {

// Numbers of the platform's secure store; every other number is some failure.
enum class SecureItemStatus : std::int32_t {
  success = 0,
  interactionNotAllowed = -25308,
  notFound = -25300,
  duplicate = -25299,
  failed = -1
};

// Small secrets for each (service, account), bound to this device and readable only while it is unlocked.
// Any thread; never prompts. A locked or missing store answers with its status.
class SecureItemStore : public Port {
 public:
  struct Found {
    SecureItemStatus status = SecureItemStatus::failed;
    std::optional<std::string> bytes;
  };

  // `duplicate` when the pair has an item already.
  virtual SecureItemStatus add(std::string_view service, std::string_view account,
                               std::string_view bytes) = 0;
  virtual Found copyMatching(std::string_view service, std::string_view account) = 0;
  virtual SecureItemStatus remove(std::string_view service, std::string_view account) = 0;
};

}  // namespace quillmar
