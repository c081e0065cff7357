#include "console/manual_enrollment_view.h"

#include <utility>

#include "client/enrollment_calls.h"
#include "client/network_service.h"
#include "platform/hop.h"

namespace quillmar {
namespace {

struct Look {
  std::string_view label;
  std::string_view icon;
};
// Indexed by the enum's value.
constexpr std::array<Look, rawNames<ManualDeviceType>.size()> looks = {
    {{"PlayStation", "gamecontroller.fill"},
     {"Xbox", "gamecontroller.fill"},
     {"Nintendo Switch", "gamecontroller.fill"},
     {"Smart TV", "tv.fill"},
     {"Other Device", "desktopcomputer"}}};

}  // namespace

ManualEnrollmentView::ManualEnrollmentView(Environment& environment, std::optional<std::string> childId,
                                           std::function<void()> onEnrollmentComplete)
    : ScreenModel("ManualEnrollmentView"),
      environment_(environment),
      childId_(std::move(childId)),
      onEnrollmentComplete_(std::move(onEnrollmentComplete)) {}

std::vector<ManualDeviceChoice> ManualEnrollmentView::choices() {
  std::vector<ManualDeviceChoice> all;
  all.reserve(looks.size());
  for (const auto& [type, name] : rawNames<ManualDeviceType>) {
    const Look& look = looks[static_cast<std::size_t>(type)];
    all.push_back({std::string(name), std::string(look.label), std::string(look.icon)});
  }
  return all;
}

SetupInstructions ManualEnrollmentView::setup() const {
  return enrollmentResult() ? enrollmentResult()->setupInstructions : SetupInstructions();
}

std::vector<SetupStep> ManualEnrollmentView::numberedSteps() const {
  const SetupInstructions instructions = setup();
  std::vector<SetupStep> numbered;
  for (const auto& text : instructions.steps) {
    numbered.push_back({static_cast<std::int64_t>(numbered.size()) + 1, text});
  }
  return numbered;
}

void ManualEnrollmentView::enroll() {
  isLoading = true;
  environment_.platform().log.system(
      childId_ ? "[ManualEnrollmentView] Enrolling device with childId: " + *childId_
               : "[ManualEnrollmentView] Enrolling device without childId (will be unassigned)");
  environment_.networkService()->send(
      calls::manualEnrollment,
      {.deviceName = deviceName(),
       .deviceType = std::string(rawValue(selectedDeviceType())),
       .deviceIP = deviceIP().empty() ? std::nullopt : std::optional(deviceIP()),
       .childId = childId_},
      hoppingToMain(
          environment_.platform().dispatch,
          weakly([this](const Result<ManualEnrollmentResponse>& result) { handleResult(result); })));
}

void ManualEnrollmentView::handleResult(const Result<ManualEnrollmentResponse>& result) {
  isLoading = false;
  if (result.ok()) {
    enrollmentResult = result.value();
    showInstructions = true;
  } else {
    errorAlert.show(result.error());
  }
}

void ManualEnrollmentView::finish() {
  if (onEnrollmentComplete_) {
    onEnrollmentComplete_();
  }
  dismiss();
}

}  // namespace quillmar
