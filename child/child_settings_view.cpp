#include "child/child_settings_view.h"

#include "child/background_service.h"
#include "foundation/text.h"

namespace quillmar {
namespace {

constexpr std::size_t shownIdCharacters = 8;

}  // namespace

ChildSettingsView::ChildSettingsView(Environment& environment)
    : ScreenModel("ChildSettingsView"),
      environment_(environment),
      child_(environment.childAppState()),
      vpn_(environment.vpnManager()) {
  follow(*child_);
  follow(*vpn_);
}

std::string ChildSettingsView::shortDeviceId() const {
  return firstCharacters(child_->deviceID(), shownIdCharacters) + "...";
}

void ChildSettingsView::sync() {
  environment_.backgroundService()->performCheckin();
  environment_.backgroundService()->checkVPNStatus();
}

void ChildSettingsView::reset() {
  showResetConfirmation = false;
  environment_.backgroundService()->stop();
  child_->resetEnrollment();
  dismiss();
}

}  // namespace quillmar
