#pragma once

#include <optional>
#include <string>

#include "sandbox/call.h"

namespace quillmar::sandbox::calls {

struct Invitation {
  std::string id;
  std::string familyId;
  std::string familyName;
  std::string invitedBy;  // parent's id
  std::string invitedByName;
  std::string status;
  Time expiresAt;
};

[[nodiscard]] std::optional<Invitation> findInvitation(Call& call, std::string_view code);

// Why the invitation can't be used, or nullopt while it is open.
[[nodiscard]] std::optional<std::string> faultOf(const Invitation& invitation, Time now);

}  // namespace quillmar::sandbox::calls
