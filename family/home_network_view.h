#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/session/environment.h"
#include "client/records/home_network.h"
#include "family/console_dns_instructions_view.h"
#include "foundation/date_format.h"
#include "foundation/raw_enum.h"
#include "foundation/record.h"
#include "foundation/result.h"
#include "presentation/confirmation.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

enum class HomeNetworkContent { loading, setUp, status };

template <>
inline constexpr std::array rawNames<HomeNetworkContent> =
    rawCases<HomeNetworkContent>({{HomeNetworkContent::loading, "loading"},
                                  {HomeNetworkContent::setUp, "setUp"},
                                  {HomeNetworkContent::status, "status"}});

struct HomeNetworkStep {
  int number = 0;
  std::string text;
};

template <>
inline constexpr auto wire<HomeNetworkStep> = record(required("number", &HomeNetworkStep::number),
                                                     required("text", &HomeNetworkStep::text));

// A label and its value, in the value's colour.
struct HomeNetworkRow {
  std::string label;
  std::string value;
  std::string color = "secondaryText";
};

template <>
inline constexpr auto wire<HomeNetworkRow> = record(required("label", &HomeNetworkRow::label),
                                                    required("value", &HomeNetworkRow::value),
                                                    required("color", &HomeNetworkRow::color));

// Filtering by the home's public address, for devices that can't run the agent. The service takes that
// address from the request's connection, so only a person can tell whether it is the home's. Every change is
// therefore confirmed first. The client compares no addresses.
class HomeNetworkView final : public ScreenModel {
 public:
  explicit HomeNetworkView(Environment& environment);

  Published<std::optional<HomeNetwork>> homeNetwork{*this, "homeNetwork"};
  Published<std::optional<HomeNetworkPolicy>> policy{*this, "policy"};
  Published<std::string> currentIP{*this, "currentIP"};
  Published<bool> ipMatches{*this, "ipMatches", false};
  Published<bool> isLoading{*this, "isLoading", true};
  Published<bool> isUpdatingIP{*this, "isUpdatingIP", false};
  ErrorAlert errorAlert{*this};
  Confirmation updateConfirmation{
      *this,
      {.isShown = "showUpdateIPConfirmation", .confirm = "confirmUpdate", .cancel = "cancelUpdate"},
      [this] { update(); }};
  Confirmation creationConfirmation{
      *this,
      {.isShown = "showCreateConfirmation", .confirm = "confirmCreate", .cancel = "cancelCreate"},
      [this] { create(); }};
  Published<bool> showSuccessMessage{*this, "showSuccessMessage", false};
  Published<std::string> successMessage{*this, "successMessage"};
  Sheet<ConsoleDNSInstructionsView> showInstructions{
      *this, "showInstructions", [] { return std::make_shared<ConsoleDNSInstructionsView>(); }};

  Derived<HomeNetworkContent> content{*this, "content", [this] { return computeContent(); }};
  // On the set-up page.
  Derived<std::string> detectedIP{*this, "detectedIP", [this] {
                                    return currentIP().empty() ? std::string("Detecting...") : currentIP();
                                  }};
  Derived<std::vector<HomeNetworkStep>> steps{*this, "steps", [] { return setUpSteps(); }};
  // On the status page.
  Derived<std::string> networkName{*this, "networkName",
                                   [this] { return homeNetwork() ? homeNetwork()->name : std::string(); }};
  Derived<std::string> statusIcon{
      *this, "statusIcon", [this] {
        return std::string(ipMatches() ? "checkmark.circle.fill" : "exclamationmark.triangle.fill");
      }};
  Derived<std::string> statusColor{*this, "statusColor", [this] { return matchColor(); }};
  Derived<std::string> statusTitle{*this, "statusTitle",
                                   [this] { return std::string(ipMatches() ? "Connected" : "IP Mismatch"); }};
  Derived<std::string> statusText{*this, "statusText", [this] { return computeStatusText(); }};
  Derived<std::vector<HomeNetworkRow>> addressRows{*this, "addressRows",
                                                   [this] { return computeAddressRows(); }};
  Derived<std::string> updateTitle{
      *this, "updateTitle",
      [this] { return std::string(isUpdatingIP() ? "Updating..." : "Update Home Network IP"); }};
  Derived<bool> showsPolicy{*this, "showsPolicy", [this] { return policy().has_value(); }};
  Derived<std::vector<HomeNetworkRow>> policyRows{*this, "policyRows",
                                                  [this] { return computePolicyRows(); }};
  Derived<std::string> createQuestion{*this, "createQuestion", [this] { return computeCreateQuestion(); }};
  Derived<std::string> updateQuestion{*this, "updateQuestion", [this] { return computeUpdateQuestion(); }};

  Text title{*this, "title", "Home Network"};
  Text doneTitle{*this, "doneTitle", "Done"};
  Text loadingText{*this, "loadingText", "Loading..."};
  Text bannerIcon{*this, "bannerIcon", "checkmark.circle.fill"};
  Text homeIcon{*this, "homeIcon", "house.fill"};
  Text heading{*this, "heading", "Home Network Filtering"};
  Text explanation{*this, "explanation",
                   "Filter all game consoles and smart TVs on your home network with a single policy."};
  Text detectedIPTitle{*this, "detectedIPTitle", "Your Current IP"};
  Text stepsTitle{*this, "stepsTitle", "How It Works"};
  Text setUpTitle{*this, "setUpTitle", "Set Up Home Network"};
  Text addressSection{*this, "addressSection", "IP Address"};
  Text updateIcon{*this, "updateIcon", "arrow.clockwise"};
  Text updateHint{*this, "updateHint", "Only tap this button while connected to your home Wi-Fi"};
  Text policyTitle{*this, "policyTitle", "Filtering Policy"};
  Text policyText{
      *this, "policyText",
      "To manage blocked domains, go to an individual device and the policy will apply to all home "
      "network devices."};
  Text consoleTitle{*this, "consoleTitle", "Console DNS Setup"};
  Text consoleIcon{*this, "consoleIcon", "gamecontroller.fill"};
  Text consoleText{*this, "consoleText",
                   "Configure your game consoles and smart TVs to use the Quillmar DNS server. They will "
                   "automatically be filtered using your Home Network policy."};
  Text instructionsTitle{*this, "instructionsTitle", "View Setup Instructions"};
  Text createQuestionTitle{*this, "createQuestionTitle", "Set Up Home Network"};
  Text confirmCreateTitle{*this, "confirmCreateTitle", "I'm at Home - Set Up"};
  Text cancelCreateTitle{*this, "cancelCreateTitle", "Not Now"};
  Text updateQuestionTitle{*this, "updateQuestionTitle", "Update Home Network IP"};
  Text confirmUpdateTitle{*this, "confirmUpdateTitle", "Update IP"};
  Text cancelUpdateTitle{*this, "cancelUpdateTitle", "Cancel"};

  Action<> done{*this, "done", [this] { dismiss(); }};
  Action<> setUp{*this, "setUp", [this] { creationConfirmation.ask(); },
                 [this] { return content() == HomeNetworkContent::setUp; }};
  Action<> updateIP{*this, "updateIP", [this] { updateConfirmation.ask(); },
                    [this] { return content() == HomeNetworkContent::status && !isUpdatingIP(); }};
  Action<> viewInstructions{*this, "viewInstructions", [this] { showInstructions = true; },
                            [this] { return content() == HomeNetworkContent::status; }};
  KeyCommands keys{*this, {{Command::back, done}}};

 private:
  void onAppear() override;
  HomeNetworkContent computeContent() const;
  static std::vector<HomeNetworkStep> setUpSteps();
  std::string matchColor() const { return ipMatches() ? "brandGreen" : "brandOrange"; }
  std::string computeStatusText() const;
  std::vector<HomeNetworkRow> computeAddressRows() const;
  std::string lastUpdated() const;
  std::vector<HomeNetworkRow> computePolicyRows() const;
  std::string computeCreateQuestion() const;
  std::string computeUpdateQuestion() const;

  // The completion of a call during which `isBusy` is true. Shows a failure in the alert.
  template <class T, class Success>
  auto completion(Published<bool>& isBusy, Success success);
  void load();
  void create();
  void update();
  void showBanner(const std::string& text);

  Environment& environment_;
  Dispatch& dispatch_;
  const DateStyles dateStyles_;
};

}  // namespace quillmar
