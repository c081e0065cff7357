#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>

#include "app/session/environment.h"
#include "client/records/family.h"
#include "family/family_member_sheet.h"
#include "family/family_rows.h"
#include "family/invite_family_member_sheet.h"
#include "foundation/raw_enum.h"
#include "foundation/result.h"
#include "presentation/confirmation.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

enum class FamilyContent { loading, family, failure };

template <>
inline constexpr std::array rawNames<FamilyContent> =
    rawCases<FamilyContent>({{FamilyContent::loading, "loading"},
                             {FamilyContent::family, "family"},
                             {FamilyContent::failure, "failure"}});

// The family: its members, their permissions, and the open invitations. Only the primary parent can change
// anything. Each successful change is followed by a load, which hides the old state.
class FamilyMembersView final : public ScreenModel {
 public:
  explicit FamilyMembersView(Environment& environment);

  // The last successful answer.
  Published<std::optional<FamilyResponse>> familyResponse{*this, "familyResponse"};
  Published<bool> isLoading{*this, "isLoading", true};
  ErrorAlert errorAlert{*this};
  // The newest invitation.
  Published<std::string> inviteCode{*this, "inviteCode"};
  Published<std::string> inviteQRData{*this, "inviteQRData"};
  Published<bool> isCreatingInvite{*this, "isCreatingInvite", false};
  Sheet<InviteFamilyMemberSheet> showInviteSheet{
      *this, "showInviteSheet", [this] { return std::make_shared<InviteFamilyMemberSheet>(*this); }};
  // A copy: a load does not update it.
  Published<std::optional<FamilyMember>> selectedMember{*this, "selectedMember"};
  Sheet<FamilyMemberSheet> showMemberSheet{*this, "showMemberSheet",
                                           [this] { return std::make_shared<FamilyMemberSheet>(*this); }};
  Confirmation removalConfirmation{
      *this,
      {.isShown = "showRemoveConfirmation", .confirm = "confirmRemove", .cancel = "cancelRemove"},
      [this] { removeSelected(); }};

  Derived<FamilyContent> content{*this, "content", [this] { return computeContent(); }};
  Derived<bool> isPrimary{*this, "isPrimary",
                          [this] { return familyResponse() && familyResponse()->isPrimary; }};
  Derived<bool> showsInviteButton{*this, "showsInviteButton", [this] { return isPrimary(); }};
  // nullopt if the account has no family; the header is then hidden.
  Derived<std::optional<std::string>> familyName{*this, "familyName", [this] { return computeFamilyName(); }};
  Derived<std::string> standing{
      *this, "standing",
      [this] { return std::string(isPrimary() ? "You are the primary parent" : "Family member"); }};
  Rows<FamilyMemberRow> memberRows{*this, "memberRows"};
  // Empty if the section is hidden.
  Rows<FamilyInvitationRow> invitationRows{*this, "invitationRows"};
  Derived<bool> showsInvitations{*this, "showsInvitations", [this] { return invitationRows.size() > 0; }};

  Text title{*this, "title", "Family"};
  Text doneTitle{*this, "doneTitle", "Done"};
  Text inviteIcon{*this, "inviteIcon", "person.badge.plus"};
  Text loadingText{*this, "loadingText", "Loading family..."};
  Text failureIcon{*this, "failureIcon", "exclamationmark.triangle"};
  Text failureText{*this, "failureText", "Unable to load family"};
  Text tryAgainTitle{*this, "tryAgainTitle", "Try Again"};
  Text familyIcon{*this, "familyIcon", "person.3.fill"};
  Text membersSection{*this, "membersSection", "Family Members"};
  Text invitationsSection{*this, "invitationsSection", "Pending Invitations"};
  Text removeTitle{*this, "removeTitle", "Remove Family Member?"};
  Text removeText{*this, "removeText", "This will revoke their access to your family's devices."};
  Text confirmTitle{*this, "confirmTitle", "Remove"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};

  Action<> done{*this, "done", [this] { dismiss(); }};
  Action<> tryAgain{*this, "tryAgain", [this] { load(); },
                    [this] { return content() == FamilyContent::failure; }};
  Action<> createInvitation{*this, "createInvitation", [this] { startInvitation(); },
                            [this] { return showsInviteButton() && !isCreatingInvite(); }};
  KeyCommands keys{*this, {{Command::refresh, tryAgain}, {Command::back, done}}};

  // Actions of this screen's sheets.

  // Updates the selected member, which must exist. `whenDone` runs after the answer, also after a failure.
  void updatePermissions(const UpdateMemberPermissionsRequest& changes, std::function<void()> whenDone);
  void askToRemove();
  void copyInviteCode();
  void finishInviting();

 private:
  void onAppear() override;
  FamilyContent computeContent() const;
  std::optional<std::string> computeFamilyName() const;
  void updateRows();

  void load();
  void handleFamily(const Result<FamilyResponse>& result);
  void startInvitation();
  void handleInvitation(const Result<CreateInvitationResponse>& result);
  void open(const FamilyMember& member);
  void removeSelected();
  void revoke(const FamilyInvitation& invitation);
  // Every change ends here.
  void handleChange(const Result<void>& result);

  Environment& environment_;
  Dispatch& dispatch_;
};

}  // namespace quillmar
