#include "child/child_settings_view.h"

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

void ChildSettingsView::reset() {
  quillmar::resetEnrollment(environment_);
  dismiss();
}

}  // namespace quillmar
