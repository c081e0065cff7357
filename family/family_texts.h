#pragma once

#include <optional>
#include <string>

#include "client/records/family.h"
#include "foundation/date.h"

// Texts about members of a family and open invitations.
namespace quillmar {

bool isPrimary(const FamilyMember& member);
// Nobody can edit the primary parent, including that parent.
bool canEdit(const FamilyMember& member, bool callerIsPrimary);
std::string memberInitials(const FamilyMember& member);
std::string roleLabel(const FamilyMember& member);

// "1h 30m", "59m", "Expired", or "Unknown" if the expiry is not a valid time.
std::string timeRemaining(const FamilyInvitation& invitation, Date now);
// False if the expiry is not a valid time.
bool isExpired(const FamilyInvitation& invitation, Date now);

}  // namespace quillmar
