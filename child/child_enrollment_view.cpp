#include "child/child_enrollment_view.h"

#include <chrono>
#include <utility>

#include "child/background_service.h"
#include "client/enrollment_calls.h"
#include "client/network_service.h"
#include "foundation/json.h"
#include "foundation/text.h"
#include "platform/hop.h"

namespace quillmar {
namespace {

constexpr auto pollInterval = std::chrono::seconds(5);
constexpr int maximumRounds = 120;
// Enough time to save the enrollment and show the home screen.
constexpr auto protectionDelay = std::chrono::seconds(1);

}  // namespace

ChildEnrollmentView::ChildEnrollmentView(Environment& environment)
    : ScreenModel("ChildEnrollmentView"),
      environment_(environment),
      dispatch_(environment.platform().dispatch) {
  dotReactions_.push_back(isPolling.onChange([this] { updateLoadingDots(); }));
  dotReactions_.push_back(isLoading.onChange([this] { updateLoadingDots(); }));
  dotReactions_.push_back(enrollmentCode.onChange([this] { updateLoadingDots(); }));
}

std::vector<ChildFeatureRow> ChildEnrollmentView::featureRows() {
  return {{"checkmark.shield", "Safe browsing protection"},
          {"eye.fill", "Activity monitoring"},
          {"clock.fill", "Screen time management"}};
}

EnrollmentStage ChildEnrollmentView::computeStage() const {
  if (isLoading()) {
    return EnrollmentStage::loading;
  }
  return enrollmentCode().empty() ? EnrollmentStage::start : EnrollmentStage::code;
}

void ChildEnrollmentView::updateLoadingDots() {
  const bool isWaiting = stage() == EnrollmentStage::code && isPolling();
  if (isWaiting != static_cast<bool>(loadingDots)) {
    loadingDots.put(isWaiting ? std::make_shared<ChildLoadingDots>(dispatch_) : nullptr);
  }
}

void ChildEnrollmentView::start() {
  isLoading = true;
  errorAlert.message = std::string();
  const std::string deviceName = environment_.platform().deviceInfo.name();
  environment_.networkService()->send(
      calls::initEnrollment, {newUUID(), deviceName, std::string(childDeviceType)},
      hoppingToMain(dispatch_, weakly([this, deviceName](const Result<InitEnrollmentResponse>& result) {
                      handleInitResult(result, deviceName);
                    })));
}

void ChildEnrollmentView::handleInitResult(const Result<InitEnrollmentResponse>& result,
                                           const std::string& deviceName) {
  isLoading = false;
  if (!result.ok()) {
    errorAlert.show(result.error());
    return;
  }
  const InitEnrollmentResponse& answer = result.value();
  enrollmentCode = answer.enrollmentCode;
  deviceId = answer.deviceId;
  if (auto text = encodeJson(
          QRCodeData{answer.enrollmentCode, answer.deviceId, deviceName, std::string(childDeviceType)});
      text.ok()) {
    qrCodeData = std::move(text).value();
  }
  startPolling();
}

void ChildEnrollmentView::startPolling() {
  isPolling = true;
  auto firstRound =
      hoppingToMain(dispatch_, weakly([this, loop = std::make_shared<PollLoop>()] { beginRound(loop); }));
  dispatch_.global(QualityOfService::background).async(std::move(firstRound));
}

void ChildEnrollmentView::beginRound(const std::shared_ptr<PollLoop>& loop) {
  if (isPolling()) {
    dispatch_.global(QualityOfService::background)
        .asyncAfter(pollInterval, hoppingToMain(dispatch_, weakly([this, loop] { askForStatus(loop); })));
  }
}

void ChildEnrollmentView::askForStatus(const std::shared_ptr<PollLoop>& loop) {
  const bool sent = environment_.networkService()->getEnrollmentStatus(
      deviceId(),
      hoppingToMain(dispatch_, weakly([this, loop](const Result<EnrollmentStatusResponse>& result) {
                      handleStatusResult(loop, result);
                    })));
  if (!sent) {
    endRound(loop);
  }
}

void ChildEnrollmentView::handleStatusResult(const std::shared_ptr<PollLoop>& loop,
                                             const Result<EnrollmentStatusResponse>& result) {
  const std::string status = result.ok() ? result.value().status : std::string();
  if (status == "completed") {
    finishEnrollment(result.value());
  } else if (status == "expired") {
    giveUp("Enrollment expired. Please try again.");
  } else {
    endRound(loop);
  }
}

void ChildEnrollmentView::endRound(const std::shared_ptr<PollLoop>& loop) {
  if (++loop->rounds < maximumRounds) {
    beginRound(loop);
  } else if (isPolling()) {
    giveUp("Enrollment timed out. Please try again.");
  }
}

void ChildEnrollmentView::giveUp(const std::string& message) {
  errorAlert.show(message);
  enrollmentCode = std::string();
  qrCodeData = std::string();
  isPolling = false;
}

void ChildEnrollmentView::finishEnrollment(const EnrollmentStatusResponse& response) {
  if (response.dohEndpoint) {
    const auto childAppState = environment_.childAppState();
    childAppState->saveEnrollment(deviceId(), *response.dohEndpoint, response.dohBaseUrl,
                                  response.apiBaseUrl);
    dispatch_.main().asyncAfter(protectionDelay, [childAppState, service = environment_.backgroundService()] {
      service->start(childAppState);
    });
  }
  isPolling = false;
}

void ChildEnrollmentView::cancel() {
  isPolling = false;
  enrollmentCode = std::string();
  qrCodeData = std::string();
  deviceId = std::string();
}

}  // namespace quillmar
