#include "family/family_rows.h"

#include <utility>

#include "family/family_texts.h"

namespace quillmar {

FamilyMemberRow::FamilyMemberRow(FamilyMember member, bool callerIsPrimary,
                                 std::function<void(const FamilyMember&)> open)
    : ObservableObject("FamilyMemberRow"),
      member_(std::move(member)),
      canEdit_(quillmar::canEdit(member_, callerIsPrimary)),
      open_(std::move(open)) {}

std::string FamilyMemberRow::computeInitials() const { return memberInitials(member_); }

FamilyInvitationRow::FamilyInvitationRow(FamilyInvitation invitation, const Dispatch& clock,
                                         std::function<void(const FamilyInvitation&)> revokeInvitation)
    : ObservableObject("FamilyInvitationRow"),
      invitation_(std::move(invitation)),
      clock_(clock),
      revoke_(std::move(revokeInvitation)) {}

std::string FamilyInvitationRow::computeExpiry() const {
  return "Expires in " + timeRemaining(invitation_, clock_.now());
}

std::string FamilyInvitationRow::computeExpiryColor() const {
  return isExpired(invitation_, clock_.now()) ? "brandRed" : "secondaryText";
}

}  // namespace quillmar
