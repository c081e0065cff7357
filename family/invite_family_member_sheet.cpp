#include "family/invite_family_member_sheet.h"

#include "family/family_members_view.h"

namespace quillmar {
namespace {

constexpr double qrCodeSize = 200;

}  // namespace

InviteFamilyMemberSheet::InviteFamilyMemberSheet(FamilyMembersView& family)
    : ScreenModel("InviteFamilyMemberSheet"), family_(family) {
  follow(family_);
}

std::optional<QRCodeView> InviteFamilyMemberSheet::computeQRCode() const {
  const std::string& text = family_.inviteQRData();
  return text.empty() ? std::nullopt : std::optional(QRCodeView{text, qrCodeSize});
}

std::string InviteFamilyMemberSheet::computeInviteCode() const { return family_.inviteCode(); }

void InviteFamilyMemberSheet::finish() { family_.finishInviting(); }

void InviteFamilyMemberSheet::copy() { family_.copyInviteCode(); }

}  // namespace quillmar
