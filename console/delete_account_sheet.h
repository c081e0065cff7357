#pragma once

#include "foundation/secret.h"
#include "presentation/bound_input.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

class SettingsView;

// The second step of deleting the account: asks for the password again.
class DeleteAccountSheet final : public ScreenModel {
 public:
  explicit DeleteAccountSheet(SettingsView& settings);

  BoundInput<Secret> deleteAccountPassword;
  // The button is then replaced by a spinner.
  Derived<bool> isDeletingAccount;

  Text title{*this, "title", "Delete Account"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};
  Text warningIcon{*this, "warningIcon", "exclamationmark.triangle.fill"};
  Text heading{*this, "heading", "Confirm Account Deletion"};
  Text explanation{*this, "explanation",
                   "Enter your password to permanently delete your account. This cannot be undone."};
  Text passwordPlaceholder{*this, "passwordPlaceholder", "Password"};
  Text deletingText{*this, "deletingText", "Deleting account..."};
  Text deleteTitle{*this, "deleteTitle", "Delete My Account"};

  Action<> cancel{*this, "cancel", [this] { dismiss(); }};
  Action<> deleteMyAccount;
  KeyCommands keys{*this, {{Command::back, cancel}}};
};

}  // namespace quillmar
