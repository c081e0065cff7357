#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/session/environment.h"
#include "console/qr_scanner_view_controller.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

struct CompleteEnrollmentResponse;

enum class ScannerStage { scanning, typing, success, review };

template <>
inline constexpr std::array rawNames<ScannerStage> =
    rawCases<ScannerStage>({{ScannerStage::scanning, "scanning"},
                            {ScannerStage::typing, "typing"},
                            {ScannerStage::success, "success"},
                            {ScannerStage::review, "review"}});

// The parent's side of an enrollment: reads the QR code on the child's device and completes the enrollment
// with the service. The two devices do not communicate directly. Without a camera, the code comes from a
// picture, the clipboard or the screen, or a person types the one that stands under it.
class ScannerView final : public ScreenModel {
 public:
  // Without a child the device is not linked. `onEnrollmentComplete` runs when the person leaves the success
  // page.
  ScannerView(Environment& environment, std::optional<std::string> childId,
              std::function<void()> onEnrollmentComplete);
  ~ScannerView() override;
  ScannerView(const ScannerView&) = delete;
  ScannerView& operator=(const ScannerView&) = delete;

  Published<bool> isScanning{*this, "isScanning", true};
  // The scanned text, valid or not.
  Published<std::string> scannedCode{*this, "scannedCode"};
  Input<std::string> deviceName{*this, "deviceName"};
  // A person types the code, or typed the one under review.
  Published<bool> isTyped{*this, "isTyped", false};
  // Sent as typed.
  Input<std::string> typedCode{*this, "typedCode"};
  Published<bool> isProcessing{*this, "isProcessing", false};
  ErrorAlert errorAlert{*this};
  Published<bool> enrollmentSuccess{*this, "enrollmentSuccess", false};
  Published<CameraState> camera;
  // A picture, the clipboard or the screen is being read.
  Published<bool> isReading{*this, "isReading", false};

  Derived<ScannerStage> stage{*this, "stage", [this] { return computeStage(); }};
  Derived<bool> hasCamera{*this, "hasCamera", [this] { return camera() == CameraState::available; }};
  // Why there is no camera picture; nullopt while the camera may be used.
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
  Text enterCodeTitle{*this, "enterCodeTitle", "Enter Code"};
  Text enterCodeIcon{*this, "enterCodeIcon", "pencil"};

  Text typingText{*this, "typingText", "Type the code that stands under the QR code on the child's device."};
  Text codeLabel{*this, "codeLabel", "Enrollment Code"};
  Text continueTitle{*this, "continueTitle", "Continue"};

  Derived<std::string> reviewHeading{
      *this, "reviewHeading", [this] { return std::string(isTyped() ? "Code Entered" : "QR Code Scanned"); }};
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
  // Text on the clipboard is used as the code; a picture is searched for one.
  Action<> pasteCode{*this, "pasteCode", [this] { paste(); }, [this] { return canRead(); }};
  Action<> readScreen{*this, "readScreen", [this] { lookAtScreen(); }, [this] { return canRead(); }};
  Action<> enterCode{*this, "enterCode", [this] { startTyping(); }, [this] { return canRead(); }};
  Action<> useTypedCode{*this, "useTypedCode", [this] { reviewTypedCode(); },
                        [this] { return stage() == ScannerStage::typing && !typedCode().empty(); }};
  Action<> completeEnrollment{*this, "completeEnrollment", [this] { complete(); },
                              [this] { return stage() == ScannerStage::review && !isProcessing(); }};
  Action<> scanAgain{*this, "scanAgain", [this] { restart(); },
                     [this] { return stage() == ScannerStage::review || stage() == ScannerStage::typing; }};
  Action<> done{*this, "done", [this] { finish(); }, [this] { return stage() == ScannerStage::success; }};
  KeyCommands keys{*this, {{Command::back, done}, {Command::back, cancel}}};

  // Takes the text from a camera, a picture or a person.
  void handleScannedCode(const std::string& code);

 private:
  class Coordinator;

  void onAppear() override { updateCamera(); }
  void onDisappear() override { updateCamera(); }
  ScannerStage computeStage() const;
  std::optional<std::string> computeCameraNotice() const;

  // The camera runs only while the screen is visible and waits for a code.
  void updateCamera();
  void restartCamera();
  void showCamera();
  void hideCamera();
  void received(std::string_view notification, const std::string& object);

  bool canRead() const { return isScanning() && !isReading(); }
  void startTyping();
  void reviewTypedCode();
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
