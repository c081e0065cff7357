#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/session/environment.h"
#include "client/network_service.h"
#include "console/qr_scanner_view_controller.h"
#include "presentation/error_alert.h"
#include "presentation/screen_model.h"

namespace quillmar {

enum class ScannerStage { scanning, success, review };

template <>
inline constexpr std::array rawNames<ScannerStage> =
    rawCases<ScannerStage>({{ScannerStage::scanning, "scanning"},
                            {ScannerStage::success, "success"},
                            {ScannerStage::review, "review"}});

// The parent's half of an enrollment: reads the QR code that the child's device shows and completes the
// enrollment with the service; the two devices never talk to each other otherwise. Where there is no camera,
// a code comes from a picture, the clipboard or the screen.
class ScannerView final : public ScreenModel {
 public:
  // Without a child the device belongs to none. `onEnrollmentComplete` runs when the person leaves the
  // success.
  ScannerView(Environment& environment, std::optional<std::string> childId,
              std::function<void()> onEnrollmentComplete);
  ~ScannerView() override;
  ScannerView(const ScannerView&) = delete;
  ScannerView& operator=(const ScannerView&) = delete;

  Published<bool> isScanning{*this, "isScanning", true};
  // The code's text as it was read, good or not.
  Published<std::string> scannedCode{*this, "scannedCode"};
  Input<std::string> deviceName{*this, "deviceName"};
  Published<bool> isProcessing{*this, "isProcessing", false};
  ErrorAlert errorAlert{*this};
  Published<bool> enrollmentSuccess{*this, "enrollmentSuccess", false};
  Published<CameraState> camera;
  // A picture, the clipboard or the screen is being looked at.
  Published<bool> isReading{*this, "isReading", false};

  Derived<ScannerStage> stage{*this, "stage", [this] { return computeStage(); }};
  Derived<bool> hasCamera{*this, "hasCamera", [this] { return camera() == CameraState::available; }};
  // Why there is nothing to see; absent while the camera may be used.
  Derived<std::optional<std::string>> cameraNotice{*this, "cameraNotice",
                                                   [this] { return computeCameraNotice(); }};

  Text title{*this, "title", "Add Device"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};
  Text scanLine{*this, "scanLine", "Point camera at QR code on child's device"};
  Text choosePictureTitle{*this, "choosePictureTitle", "Choose Picture"};
  Text choosePictureIcon{*this, "choosePictureIcon", "photo.fill"};
  Text pasteCodeTitle{*this, "pasteCodeTitle", "Paste Code"};
  Text pasteCodeIcon{*this, "pasteCodeIcon", "doc.on.doc"};
  Text readScreenTitle{*this, "readScreenTitle", "Read From Screen"};
  Text readScreenIcon{*this, "readScreenIcon", "desktopcomputer"};

  Text reviewHeading{*this, "reviewHeading", "QR Code Scanned"};
  Text nameLabel{*this, "nameLabel", "Device Name (optional)"};
  Text namePlaceholder{*this, "namePlaceholder", "e.g., John's iPhone"};
  Text completeTitle{*this, "completeTitle", "Complete Enrollment"};
  Text scanAgainTitle{*this, "scanAgainTitle", "Scan Again"};

  Text successHeading{*this, "successHeading", "Device Enrolled!"};
  Text successText{*this, "successText", "The device has been successfully added to your account."};
  Text doneTitle{*this, "doneTitle", "Done"};

  Action<> cancel{*this, "cancel", [this] { dismiss(); }};
  Action<std::string> choosePicture{*this, "choosePicture", [this](const std::string& path) { look(path); },
                                    [this] { return canRead(); }};
  // Text on the clipboard is the code itself; a picture there is looked at.
  Action<> pasteCode{*this, "pasteCode", [this] { paste(); }, [this] { return canRead(); }};
  Action<> readScreen{*this, "readScreen", [this] { lookAtScreen(); }, [this] { return canRead(); }};
  Action<> completeEnrollment{*this, "completeEnrollment", [this] { complete(); },
                              [this] { return stage() == ScannerStage::review && !isProcessing(); }};
  Action<> scanAgain{*this, "scanAgain", [this] { restart(); },
                     [this] { return stage() == ScannerStage::review; }};
  Action<> done{*this, "done", [this] { finish(); }, [this] { return stage() == ScannerStage::success; }};

  // What a camera, a picture or a person hands over.
  void handleScannedCode(const std::string& code);

 private:
  class Coordinator;

  void onAppear() override { updateCamera(); }
  void onDisappear() override { updateCamera(); }
  ScannerStage computeStage() const;
  std::optional<std::string> computeCameraNotice() const;

  // Shows the camera exactly while there is something to scan and somebody to see it.
  void updateCamera();
  void restartCamera();
  void showCamera();
  void hideCamera();
  void received(std::string_view notification, const std::string& object);

  bool canRead() const { return isScanning() && !isReading(); }
  void look(const std::string& path);
  void paste();
  void lookAtScreen();
  QRReader::Reply replyFrom(std::string_view source);
  void handleReading(std::string_view source, const Result<RecognisedObjects>& objects);

  void complete();
  void handleCompletion(const Result<CompleteEnrollmentResponse>& result, const std::string& diagnosis);
  void restart();
  void finish();

  Environment& environment_;
  QRReader& reader_;
  const std::optional<std::string> childId_;
  const std::function<void()> onEnrollmentComplete_;
  const std::shared_ptr<Coordinator> coordinator_;
  std::shared_ptr<QRScannerViewController> controller_;
  Subscription scanReaction_;
  Subscription cameraReaction_;
};

}  // namespace quillmar
