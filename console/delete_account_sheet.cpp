#include "console/delete_account_sheet.h"

#include "console/settings_view.h"

namespace quillmar {

DeleteAccountSheet::DeleteAccountSheet(SettingsView& settings)
    : ScreenModel("DeleteAccountSheet"),
      deleteAccountPassword(*this, "deleteAccountPassword", settings.deleteAccountPassword),
      isDeletingAccount(*this, "isDeletingAccount", [&settings] { return settings.isDeletingAccount(); }),
      deleteMyAccount(
          *this, "deleteMyAccount", [&settings] { settings.performAccountDeletion(); },
          [&settings] { return settings.performAccountDeletion.isEnabled(); }) {
  follow(settings);
}

}  // namespace quillmar
