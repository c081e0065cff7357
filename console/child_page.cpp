#include "console/child_page.h"

namespace quillmar {

ChildPage::ChildPage(ScreenModel& screen, ErrorAlert& errorAlert, Environment& environment,
                     ChildProfileWithDevices child)
    : screen_(screen), errorAlert_(errorAlert), environment_(environment), child_(std::move(child)) {}

const DateStyles& ChildPage::dateStyles() {
  if (!dateStyles_) {
    dateStyles_ = environment_.dateStyles();
  }
  return *dateStyles_;
}

Calendar ChildPage::calendar() const {
  const auto& device = platform().deviceInfo;
  return {device.locale(), device.timeZone()};
}

}  // namespace quillmar
