#pragma once

#include <optional>
#include <string>

#include "client/records/family.h"
#include "foundation/date.h"

// What the screens say of a family's members and of the invitations still open.
namespace quillmar {

bool isPrimary(const FamilyMember& member);
// The primary parent is nobody's to edit, not even its own.
bool canEdit(const FamilyMember& member, bool callerIsPrimary);
std::string memberInitials(const FamilyMember& member);
std::string roleLabel(const FamilyMember& member);

// "1h 30m", "59m", "Expired", or "Unknown" for an expiry that is no time.
std::string timeRemaining(const FamilyInvitation& invitation, Date now);
// Not of an expiry that is no time.
bool isExpired(const FamilyInvitation& invitation, Date now);

}  // namespace quillmar
