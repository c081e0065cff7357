#include "console/add_device_sheet.h"

#include <utility>

namespace quillmar {

template <class Screen>
std::shared_ptr<Screen> AddDeviceSheet::make() {
  return std::make_shared<Screen>(environment_, child_.id, weakly([this] { finish(); }));
}

AddDeviceSheet::AddDeviceSheet(Environment& environment, ChildProfileWithDevices child,
                               std::function<void()> onComplete)
    : ScreenModel("AddDeviceSheet"),
      showScanner(*this, "showScanner", [this] { return make<ScannerView>(); }),
      showManualEnrollment(*this, "showManualEnrollment", [this] { return make<ManualEnrollmentView>(); }),
      environment_(environment),
      child_(std::move(child)),
      onComplete_(std::move(onComplete)) {}

void AddDeviceSheet::finish() {
  dismiss();
  onComplete_();
}

}  // namespace quillmar
