#include "family/family_texts.h"

#include <chrono>

#include "foundation/date_format.h"
#include "identity/initials.h"

namespace quillmar {

bool isPrimary(const FamilyMember& member) { return member.role == "primary"; }

bool canEdit(const FamilyMember& member, bool callerIsPrimary) {
  return callerIsPrimary && !isPrimary(member);
}

std::string memberInitials(const FamilyMember& member) {
  return initialsOf(nameWords(member.displayName), member.displayName);
}

std::string roleLabel(const FamilyMember& member) { return isPrimary(member) ? "Primary" : "Member"; }

std::string timeRemaining(const FamilyInvitation& invitation, Date now) {
  using namespace std::chrono;
  const auto expiry = parseTimestamp(invitation.expiresAt);
  if (!expiry) {
    return "Unknown";
  }
  const Duration remaining = *expiry - now;
  if (remaining <= Duration::zero()) {
    return "Expired";
  }
  const auto whole = duration_cast<hours>(remaining);
  const auto minutesPart = std::to_string(duration_cast<minutes>(remaining - whole).count()) + "m";
  return whole < hours(1) ? minutesPart : std::to_string(whole.count()) + "h " + minutesPart;
}

bool isExpired(const FamilyInvitation& invitation, Date now) {
  const auto expiry = parseTimestamp(invitation.expiresAt);
  return expiry && *expiry <= now;
}

}  // namespace quillmar
