#pragma once

#include <optional>
#include <string>

#include "presentation/key_commands.h"
#include "presentation/qr_code_view.h"
#include "presentation/screen_model.h"

namespace quillmar {

class FamilyMembersView;

// Shows the new invitation, to be passed on.
class InviteFamilyMemberSheet final : public ScreenModel {
 public:
  explicit InviteFamilyMemberSheet(FamilyMembersView& family);

  // nullopt if the service sent no text for it.
  Derived<std::optional<QRCodeView>> qrCode{*this, "qrCode", [this] { return computeQRCode(); }};
  Derived<std::string> inviteCode{*this, "inviteCode", [this] { return computeInviteCode(); }};

  Text title{*this, "title", "Invite Family Member"};
  Text doneTitle{*this, "doneTitle", "Done"};
  Text expiryText{*this, "expiryText", "This invitation expires in 24 hours"};
  Text inviteCodeTitle{*this, "inviteCodeTitle", "Invite Code"};
  Text copyIcon{*this, "copyIcon", "doc.on.doc"};
  Text copyTitle{*this, "copyTitle", "Copy Code"};
  Text shareHeading{*this, "shareHeading", "Share this with a family member"};
  Text shareText{*this, "shareText",
                 "They can scan this QR code or enter the invite code when they open the Quillmar app."};

  Action<> done{*this, "done", [this] { finish(); }};
  Action<> copyCode{*this, "copyCode", [this] { copy(); }};
  KeyCommands keys{*this, {{Command::back, done}}};

 private:
  std::optional<QRCodeView> computeQRCode() const;
  std::string computeInviteCode() const;
  void finish();
  void copy();

  FamilyMembersView& family_;
};

}  // namespace quillmar
