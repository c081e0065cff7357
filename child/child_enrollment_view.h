#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "app/session/environment.h"
#include "child/child_app_state.h"
#include "child/child_loading_dots.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/qr_code_view.h"
#include "presentation/screen_model.h"

namespace quillmar {

struct EnrollmentStatusResponse;
struct InitEnrollmentResponse;

struct ChildFeatureRow {
  std::string icon;
  std::string text;
};

template <>
inline constexpr auto wire<ChildFeatureRow> = record(required("icon", &ChildFeatureRow::icon),
                                                     required("text", &ChildFeatureRow::text));

enum class EnrollmentStage { loading, start, code };

template <>
inline constexpr std::array rawNames<EnrollmentStage> =
    rawCases<EnrollmentStage>({{EnrollmentStage::loading, "loading"},
                               {EnrollmentStage::start, "start"},
                               {EnrollmentStage::code, "code"}});

// The screen of a child's device that is not enrolled. It requests a code from the service, shows it, and
// polls until a parent completes the enrollment on another device. Needs no account.
class ChildEnrollmentView final : public ScreenModel {
 public:
  explicit ChildEnrollmentView(Environment& environment);

  // Empty: no enrollment in progress.
  Published<std::string> enrollmentCode{*this, "enrollmentCode"};
  // The id from the service's answer.
  Published<std::string> deviceId{*this, "deviceId"};
  Published<bool> isLoading{*this, "isLoading", false};
  ErrorAlert errorAlert{*this};
  // Polling continues while this is true.
  Published<bool> isPolling{*this, "isPolling", false};
  Published<std::string> qrCodeData{*this, "qrCodeData"};

  Derived<EnrollmentStage> stage{*this, "stage", [this] { return computeStage(); }};
  Derived<QRCodeView> qrCode{*this, "qrCode", [this] { return QRCodeView{qrCodeData(), 200}; }};
  Derived<std::vector<ChildFeatureRow>> features{*this, "features", [] { return featureRows(); }};
  // Exists while the waiting line is shown.
  Part<ChildLoadingDots> loadingDots{*this, "loadingDots"};

  Text logo{*this, "logo", "QuillmarLogo"};
  Text title{*this, "title", "Quillmar Child"};
  Text tagline{*this, "tagline", "Secure Internet for Kids"};
  Text loadingHeading{*this, "loadingHeading", "Initializing enrollment..."};
  Text loadingText{*this, "loadingText", "Please wait while we set up your device"};
  Text startHeading{*this, "startHeading", "Device Enrollment"};
  Text startText{*this, "startText",
                 "Start the enrollment process to connect this device with your parent's Quillmar account."};
  Text startTitle{*this, "startTitle", "Start Enrollment"};
  Text codeHeading{*this, "codeHeading", "Scan QR Code"};
  Text codeText{*this, "codeText", "Ask your parent to scan this code using the Quillmar Parent app"};
  Text codeLabel{*this, "codeLabel", "Enrollment Code"};
  Text waitingText{*this, "waitingText", "Waiting for parent to complete enrollment..."};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};

  Action<> startEnrollment{*this, "startEnrollment", [this] { start(); },
                           [this] { return stage() == EnrollmentStage::start; }};
  Action<> cancelEnrollment{*this, "cancelEnrollment", [this] { cancel(); },
                            [this] { return stage() == EnrollmentStage::code; }};
  KeyCommands keys{*this, {{Command::back, cancelEnrollment}}};

 private:
  struct PollLoop {
    int rounds = 0;
  };

  static std::vector<ChildFeatureRow> featureRows();
  EnrollmentStage computeStage() const;
  void updateLoadingDots();

  void start();
  void cancel();
  void handleInitResult(const Result<InitEnrollmentResponse>& result, const std::string& deviceName);
  void startPolling();
  void beginRound(const std::shared_ptr<PollLoop>& loop);
  void askForStatus(const std::shared_ptr<PollLoop>& loop);
  void handleStatusResult(const std::shared_ptr<PollLoop>& loop,
                          const Result<EnrollmentStatusResponse>& result);
  void endRound(const std::shared_ptr<PollLoop>& loop);
  void finishEnrollment(const EnrollmentStatusResponse& response);
  void giveUp(const std::string& message);

  Environment& environment_;
  Dispatch& dispatch_;
  std::vector<Subscription> dotReactions_;
};

}  // namespace quillmar
