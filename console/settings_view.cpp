#include "console/settings_view.h"

#include <string_view>
#include <utility>
#include <vector>

#include "client/account_calls.h"
#include "client/network_service.h"
#include "platform/hop.h"

namespace quillmar {
namespace {

std::string_view iconOf(AppearanceMode mode) {
  switch (mode) {
    case AppearanceMode::system:
      return "circle.lefthalf.filled";
    case AppearanceMode::light:
      return "sun.max.fill";
    case AppearanceMode::dark:
      return "moon.fill";
  }
  return {};
}

std::string describe(const Error& error) {
  return error == NetworkError::unauthorized() ? "Incorrect password. Please try again."
                                               : error.localizedDescription();
}

}  // namespace

AppearanceRow::AppearanceRow(AppearanceMode mode, AppearanceManager& appearance)
    : ObservableObject("AppearanceRow"),
      title(*this, "title", rawValue(mode)),
      icon(*this, "icon", iconOf(mode)),
      isSelected(*this, "isSelected", [mode, &appearance] { return appearance.currentMode() == mode; }),
      select(*this, "select", [mode, &appearance] { appearance.currentMode = mode; }) {
  follow(appearance);
}

SettingsView::SettingsView(Environment& environment)
    : ScreenModel("SettingsView"),
      environment_(environment),
      session_(environment.authState()),
      appearance_(environment.appearanceManager()) {
  follow(*session_);
  addAppearanceRows();
}

void SettingsView::addAppearanceRows() {
  std::vector<std::pair<std::string, std::shared_ptr<AppearanceRow>>> rows;
  rows.reserve(rawNames<AppearanceMode>.size());
  for (const auto& [mode, name] : rawNames<AppearanceMode>) {
    rows.emplace_back(name, std::make_shared<AppearanceRow>(mode, *appearance_));
  }
  appearanceRows.assign(std::move(rows));
}

void SettingsView::askForPassword() { showDeleteAccountPassword = true; }

bool SettingsView::canDelete() const {
  return showDeleteAccountPassword() && !isDeletingAccount() && !deleteAccountPassword().empty();
}

void SettingsView::startDeletion() {
  isDeletingAccount = true;
  deleteAccountError = std::string();
  auto show = weakly([this](const Result<void>& result) { handleDeletion(result); });
  // A deleted account ends its session even if this screen no longer exists.
  auto handle = [show = std::move(show), guard = lifetimeGuard(),
                 session = session_](const Result<void>& result) mutable {
    if (guard.alive()) {
      show(result);
    } else if (result.ok()) {
      session->logout();
    }
  };
  environment_.networkService()->send(calls::deleteAccount, {deleteAccountPassword()},
                                      hoppingToMain(environment_.platform().dispatch, std::move(handle)));
}

void SettingsView::handleDeletion(const Result<void>& result) {
  isDeletingAccount = false;
  deleteAccountPassword = Secret();
  if (result.ok()) {
    showDeleteAccountPassword = false;
    session_->logout();
    dismiss();
  } else {
    deleteAccountError = describe(result.error());
    showDeleteError = true;
  }
}

}  // namespace quillmar
