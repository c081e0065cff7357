#include "console/scanner_view.h"

#include <algorithm>
#include <utility>

#include "client/enrollment_calls.h"
#include "client/network_service.h"
#include "client/records/enrollment.h"
#include "foundation/json.h"
#include "platform/hop.h"
#include "platform/settings.h"

namespace quillmar {
namespace {

constexpr std::string_view inPicture = "in this picture";
constexpr std::string_view onClipboard = "on the clipboard";
constexpr std::string_view onScreen = "on the screen";

std::string yesOrNo(bool condition) { return condition ? "Yes" : "No"; }

bool isReadableCode(const RecognisedObject& object) {
  return object.isQRCode && object.text && !object.text->empty();
}

// Two flags for support.
std::string diagnosisOf(const SettingsStore& stored) {
  return "\n\n[Debug: Token: " + yesOrNo(stored.object(settings::authToken).has_value()) +
         ", Region: " + yesOrNo(stored.object(settings::region).has_value()) + "]";
}

}  // namespace

class ScannerView::Coordinator final : public QRScannerDelegate {
 public:
  explicit Coordinator(ScannerView& parent) : parent_(parent) {}
  void notify(std::string_view notification, const std::string& object) override {
    parent_.received(notification, object);
  }

 private:
  ScannerView& parent_;
};

ScannerView::ScannerView(Environment& environment, std::optional<std::string> childId,
                         std::function<void()> onEnrollmentComplete)
    : ScreenModel("ScannerView"),
      camera(*this, "camera", environment.platform().qrReader.camera()),
      environment_(environment),
      reader_(environment.platform().qrReader),
      childId_(std::move(childId)),
      onEnrollmentComplete_(std::move(onEnrollmentComplete)),
      coordinator_(std::make_shared<Coordinator>(*this)),
      scanReaction_(isScanning.onChange([this] { updateCamera(); })),
      cameraReaction_(reader_.observeCamera([this] { restartCamera(); })) {}

ScannerView::~ScannerView() { hideCamera(); }

ScannerStage ScannerView::computeStage() const {
  if (isScanning()) {
    return ScannerStage::scanning;
  }
  if (isTyped() && scannedCode().empty()) {
    return ScannerStage::typing;
  }
  return enrollmentSuccess() ? ScannerStage::success : ScannerStage::review;
}

std::optional<std::string> ScannerView::computeCameraNotice() const {
  switch (camera()) {
    case CameraState::available:
      return std::nullopt;
    case CameraState::absent:
      return "No camera was found. Use a picture of the code instead.";
    case CameraState::refused:
      return "The camera may not be used. Allow it in the system's settings, or use a picture of the code.";
  }
  return std::nullopt;
}

void ScannerView::updateCamera() {
  if (isScanning() && isOnScreen()) {
    showCamera();
  } else {
    hideCamera();
  }
}

void ScannerView::restartCamera() {
  camera = reader_.camera();
  hideCamera();
  updateCamera();
}

void ScannerView::showCamera() {
  controller_ = std::make_shared<QRScannerViewController>(reader_);
  controller_->delegate = coordinator_;
  controller_->viewDidLoad();
  controller_->viewWillAppear();
}

void ScannerView::hideCamera() {
  if (const auto shown = std::exchange(controller_, nullptr)) {
    shown->viewWillDisappear();
  }
}

void ScannerView::received(std::string_view notification, const std::string& object) {
  if (notification == QRScannerViewController::qrCodeScanned && !object.empty()) {
    handleScannedCode(object);
  }
}

void ScannerView::startTyping() {
  isTyped = true;
  isScanning = false;
}

// The same code as in the picture, without what a person can't know.
void ScannerView::reviewTypedCode() {
  const auto code = encodeJson(QRCodeData{
      .enrollmentCode = typedCode(), .deviceId = {}, .deviceName = deviceName(), .deviceType = {}});
  if (code.ok()) {
    handleScannedCode(code.value());
  } else {
    errorAlert.show(code.error());
  }
}

void ScannerView::look(const std::string& path) { reader_.readPicture(path, replyFrom(inPicture)); }

void ScannerView::lookAtScreen() { reader_.readScreen(replyFrom(onScreen)); }

void ScannerView::paste() {
  if (const std::string text = environment_.platform().clipboard.string(); !text.empty()) {
    handleScannedCode(text);
  } else {
    reader_.readClipboard(replyFrom(onClipboard));
  }
}

QRReader::Reply ScannerView::replyFrom(std::string_view source) {
  isReading = true;
  return weakly([this, source](const Result<RecognisedObjects>& objects) { handleReading(source, objects); });
}

void ScannerView::handleReading(std::string_view source, const Result<RecognisedObjects>& objects) {
  isReading = false;
  if (!isScanning()) {
    // The camera found a code first.
    return;
  }
  if (!objects.ok()) {
    errorAlert.show(objects.error().localizedDescription());
    return;
  }
  const auto code = std::ranges::find_if(objects.value(), isReadableCode);
  if (code == objects.value().end()) {
    errorAlert.show("No QR code was found " + std::string(source) + ".");
  } else {
    handleScannedCode(*code->text);
  }
}

void ScannerView::handleScannedCode(const std::string& code) {
  scannedCode = code;
  isScanning = false;
  const auto payload = decodeJson<QRCodeData>(code);
  if (!payload.ok()) {
    errorAlert.show("Invalid QR code format");
  } else if (!payload.value().deviceName.empty()) {
    deviceName = payload.value().deviceName;
  }
}

void ScannerView::complete() {
  isProcessing = true;
  const auto payload = decodeJson<QRCodeData>(scannedCode());
  if (!payload.ok()) {
    errorAlert.show("Invalid QR code data");
    isProcessing = false;
    return;
  }
  const std::string diagnosis = diagnosisOf(environment_.platform().settings);
  environment_.platform().log.system(
      childId_ ? "[ScannerView] Enrolling device with childId: " + *childId_
               : "[ScannerView] Enrolling device without childId (will be unassigned)");
  environment_.networkService()->completeEnrollment(
      {.enrollmentCode = payload.value().enrollmentCode,
       .deviceName = deviceName().empty() ? payload.value().deviceName : deviceName(),
       .childId = childId_},
      false,
      hoppingToMain(environment_.platform().dispatch,
                    weakly([this, diagnosis](const Result<CompleteEnrollmentResponse>& result) {
                      handleCompletion(result, diagnosis);
                    })));
}

void ScannerView::handleCompletion(const Result<CompleteEnrollmentResponse>& result,
                                   const std::string& diagnosis) {
  isProcessing = false;
  if (result.ok()) {
    enrollmentSuccess = true;
  } else {
    errorAlert.show(result.error().localizedDescription() + diagnosis);
  }
}

void ScannerView::restart() {
  scannedCode = std::string();
  isTyped = false;
  isScanning = true;
}

void ScannerView::finish() {
  onEnrollmentComplete_();
  dismiss();
}

}  // namespace quillmar
