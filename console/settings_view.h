#pragma once

#include <memory>
#include <string>

#include "app/session/appearance_manager.h"
#include "app/session/environment.h"
#include "console/delete_account_sheet.h"
#include "family/family_members_view.h"
#include "foundation/result.h"
#include "foundation/secret.h"
#include "identity/auth_state.h"
#include "presentation/confirmation.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

// One appearance to choose.
class AppearanceRow final : public ObservableObject {
 public:
  AppearanceRow(AppearanceMode mode, AppearanceManager& appearance);

  Text title;
  Text icon;
  Derived<bool> isSelected;
  // The choice is stored and applied at once.
  Action<> select;
};

// Account, appearance, version, and deleting the account. Deleting asks two questions; the second takes the
// password, which is sent once and not kept.
class SettingsView final : public ScreenModel {
 public:
  explicit SettingsView(Environment& environment);

  Sheet<FamilyMembersView> showFamilyMembers{
      *this, "showFamilyMembers", [this] { return std::make_shared<FamilyMembersView>(environment_); }};
  Confirmation deletionConfirmation{
      *this,
      {.isShown = "showDeleteAccountConfirmation", .confirm = "continueDeletion", .cancel = "cancelDeletion"},
      [this] { askForPassword(); }};
  // However the sheet is dismissed, the password is cleared; a running request continues.
  Sheet<DeleteAccountSheet> showDeleteAccountPassword{
      *this, "showDeleteAccountPassword", [this] { return std::make_shared<DeleteAccountSheet>(*this); },
      [this] { deleteAccountPassword = Secret(); }};
  Input<Secret> deleteAccountPassword{*this, "deleteAccountPassword"};
  Published<bool> isDeletingAccount{*this, "isDeletingAccount", false};
  Published<std::string> deleteAccountError{*this, "deleteAccountError"};
  // Shown by this screen, beneath the password sheet.
  Input<bool> showDeleteError{*this, "showDeleteError", false};

  Derived<std::string> initials{*this, "initials", [this] { return session_->initials(); }};
  Derived<std::string> displayName{*this, "displayName", [this] { return session_->displayName(); }};
  Derived<std::string> email{*this, "email", [this] { return session_->email(); }};
  Rows<AppearanceRow> appearanceRows{*this, "appearanceRows"};

  Text title{*this, "title", "Settings"};
  Text doneTitle{*this, "doneTitle", "Done"};
  Text accountSection{*this, "accountSection", "Account"};
  Text familySection{*this, "familySection", "Family"};
  Text familyMembersIcon{*this, "familyMembersIcon", "person.2.fill"};
  Text familyMembersTitle{*this, "familyMembersTitle", "Family Members"};
  Text appearanceSection{*this, "appearanceSection", "Appearance"};
  Text selectedIcon{*this, "selectedIcon", "checkmark"};
  Text aboutSection{*this, "aboutSection", "About"};
  Text versionTitle{*this, "versionTitle", "Version"};
  Text version{*this, "version", "1.0.0"};
  Text deletionSection{*this, "deletionSection", "Account"};
  Text deletionFooter{
      *this, "deletionFooter",
      "Permanently deletes your account and all associated data including devices, policies, DNS logs, and "
      "family data. This action cannot be undone."};
  Text deleteAccountIcon{*this, "deleteAccountIcon", "trash"};
  Text deleteAccountTitle{*this, "deleteAccountTitle", "Delete Account"};
  Text confirmationTitle{*this, "confirmationTitle", "Delete Account?"};
  Text confirmationText{
      *this, "confirmationText",
      "This will permanently delete your account and all associated data including devices, policies, DNS "
      "logs, and family data. This action cannot be undone."};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};
  Text continueTitle{*this, "continueTitle", "Continue"};
  Text errorTitle{*this, "errorTitle", "Error"};
  Text okTitle{*this, "okTitle", "OK"};

  Action<> done{*this, "done", [this] { dismiss(); }};
  Action<> openFamilyMembers{*this, "openFamilyMembers", [this] { showFamilyMembers = true; }};
  Action<> deleteAccount{*this, "deleteAccount", [this] { deletionConfirmation.ask(); }};
  Action<> performAccountDeletion{*this, "performAccountDeletion", [this] { startDeletion(); },
                                  [this] { return canDelete(); }};
  Action<> dismissDeleteError{*this, "dismissDeleteError", [this] { showDeleteError = false; },
                              [this] { return showDeleteError(); }};
  KeyCommands keys{*this, {{Command::back, done}}};

 private:
  void addAppearanceRows();
  void askForPassword();
  bool canDelete() const;
  void startDeletion();
  void handleDeletion(const Result<void>& result);

  Environment& environment_;
  const std::shared_ptr<AuthState> session_;
  const std::shared_ptr<AppearanceManager> appearance_;
};

}  // namespace quillmar
