#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/environment.h"
#include "client/records/enrollment.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

enum class ManualDeviceType { playstation, xbox, nintendo, smarttv, other };

template <>
inline constexpr std::array rawNames<ManualDeviceType> =
    rawCases<ManualDeviceType>({{ManualDeviceType::playstation, "playstation"},
                                {ManualDeviceType::xbox, "xbox"},
                                {ManualDeviceType::nintendo, "nintendo"},
                                {ManualDeviceType::smarttv, "smarttv"},
                                {ManualDeviceType::other, "other"}});

struct ManualDeviceChoice {
  std::string id;  // the raw value
  std::string label;
  std::string icon;
};

template <>
inline constexpr auto wire<ManualDeviceChoice> = record(required("id", &ManualDeviceChoice::id),
                                                        required("label", &ManualDeviceChoice::label),
                                                        required("icon", &ManualDeviceChoice::icon));

struct SetupStep {
  std::int64_t number = 0;
  std::string text;
};

template <>
inline constexpr auto wire<SetupStep> = record(required("number", &SetupStep::number),
                                               required("text", &SetupStep::text));

// Registers a device that can't run the application, and shows the settings to type into it. The service then
// has the device: going back does not remove it, and adding again registers a second one.
class ManualEnrollmentView final : public ScreenModel {
 public:
  // Without a child the device is not linked. `onEnrollmentComplete` runs when the person taps Done.
  ManualEnrollmentView(Environment& environment, std::optional<std::string> childId,
                       std::function<void()> onEnrollmentComplete = {});

  Input<std::string> deviceName{*this, "deviceName"};
  Input<ManualDeviceType> selectedDeviceType{*this, "selectedDeviceType", ManualDeviceType::playstation};
  Input<std::string> deviceIP{*this, "deviceIP"};
  Published<bool> isLoading{*this, "isLoading", false};
  ErrorAlert errorAlert{*this};
  Published<std::optional<ManualEnrollmentResponse>> enrollmentResult{*this, "enrollmentResult"};
  // False: the form; true: the instructions.
  Published<bool> showInstructions{*this, "showInstructions", false};

  Derived<std::string> title{
      *this, "title",
      [this] { return std::string(showInstructions() ? "Setup Instructions" : "Add Console/TV"); }};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};
  Text backTitle{*this, "backTitle", "Back"};
  Text doneTitle{*this, "doneTitle", "Done"};

  Text heading{*this, "heading", "Add Game Console or Smart TV"};
  Text explanation{*this, "explanation", "Devices that can't run apps use plain DNS filtering"};
  Text typeSection{*this, "typeSection", "Device Type"};
  Derived<std::vector<ManualDeviceChoice>> deviceTypes{*this, "deviceTypes", [] { return choices(); }};
  Text nameSection{*this, "nameSection", "Device Name"};
  Text namePlaceholder{*this, "namePlaceholder", "e.g., Jake's PlayStation"};
  Text addressSection{*this, "addressSection", "Device IP (Optional)"};
  Text addressBadge{*this, "addressBadge", "Advanced"};
  Text addressPlaceholder{*this, "addressPlaceholder", "e.g., 192.168.1.50"};
  Text addressHint{*this, "addressHint",
                   "Pre-registering the IP helps identify the device immediately. Leave blank to "
                   "auto-detect on first connection."};
  Text addTitle{*this, "addTitle", "Add Device"};

  Text resultHeading{*this, "resultHeading", "Device Added!"};
  Derived<std::string> resultText{*this, "resultText",
                                  [this] { return "Now configure DNS on your " + setup().platform; }};
  Text serverPanel{*this, "serverPanel", "DNS Server"};
  Text serverLabel{*this, "serverLabel", "IP Address:"};
  Derived<std::string> dnsServerIP{*this, "dnsServerIP", [this] { return setup().dnsServerIP; }};
  Text copyTitle{*this, "copyTitle", "Copy IP Address"};
  Derived<std::string> stepsTitle{*this, "stepsTitle",
                                  [this] { return "Setup Steps for " + setup().platform; }};
  Derived<std::vector<SetupStep>> steps{*this, "steps", [this] { return numberedSteps(); }};
  Derived<std::string> note{*this, "note",
                            [this] { return enrollmentResult() ? enrollmentResult()->note : std::string(); }};

  Action<> cancel{*this, "cancel", [this] { dismiss(); }, [this] { return !showInstructions(); }};
  Action<> back{*this, "back", [this] { showInstructions = false; }, [this] { return showInstructions(); }};
  Action<> done{*this, "done", [this] { finish(); }, [this] { return showInstructions(); }};
  Action<> addDevice{*this, "addDevice", [this] { enroll(); },
                     [this] { return !deviceName().empty() && !isLoading() && !showInstructions(); }};
  Action<> copyIPAddress{*this, "copyIPAddress",
                         [this] { environment_.platform().clipboard.setString(setup().dnsServerIP); },
                         [this] { return showInstructions(); }};
  KeyCommands keys{*this, {{Command::back, back}, {Command::back, cancel}}};

 private:
  static std::vector<ManualDeviceChoice> choices();
  // Empty before the service answers.
  SetupInstructions setup() const;
  std::vector<SetupStep> numberedSteps() const;

  void enroll();
  void handleResult(const Result<ManualEnrollmentResponse>& result);
  void finish();

  Environment& environment_;
  const std::optional<std::string> childId_;
  const std::function<void()> onEnrollmentComplete_;
};

}  // namespace quillmar
