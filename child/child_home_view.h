#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/session/environment.h"
#include "app/session/passing_time.h"
#include "child/child_app_state.h"
#include "child/child_settings_view.h"
#include "child/doh_instructions_view.h"
#include "child/vpn_dns_manager.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"
#include "presentation/timely.h"

namespace quillmar {

struct ChildStatusCard {
  std::string title;
  std::string value;
  std::string icon;
  bool isPositive = false;
  std::string stateIcon;
};

template <>
inline constexpr auto wire<ChildStatusCard> = record(required("title", &ChildStatusCard::title),
                                                     required("value", &ChildStatusCard::value),
                                                     required("icon", &ChildStatusCard::icon),
                                                     required("isPositive", &ChildStatusCard::isPositive),
                                                     required("stateIcon", &ChildStatusCard::stateIcon));

// The content of the panel under the cards; nullopt parts are not drawn.
struct ProtectionPanel {
  std::string heading;
  std::string text;
  std::optional<std::string> button;
  std::optional<std::string> footnote;
  std::string icon;
  std::string color;
  bool isBusy = false;
};

template <>
inline constexpr auto wire<ProtectionPanel> = record(required("heading", &ProtectionPanel::heading),
                                                     required("text", &ProtectionPanel::text),
                                                     optional("button", &ProtectionPanel::button),
                                                     optional("footnote", &ProtectionPanel::footnote),
                                                     required("icon", &ProtectionPanel::icon),
                                                     required("color", &ProtectionPanel::color),
                                                     required("isBusy", &ProtectionPanel::isBusy));

// "Just now", "2 minutes ago"; the time of day from one hour on.
std::string timeInWords(Date time, Date now, const DateStyles& styles);

// Shows whether the protection works. The headline reports the connection to the service, the cards and the
// panel report the tunnel.
class ChildHomeView final : public ScreenModel {
 public:
  explicit ChildHomeView(Environment& environment);

  Sheet<ChildSettingsView> showSettings;
  // A working sheet that no control opens.
  Sheet<DoHInstructionsView> showDoHInstructions;
  Published<bool> isPulsing{*this, "isPulsing", false};

  // The header shows the first of these images that exists.
  Derived<std::vector<std::string>> headerImages{
      *this, "headerImages", [] {
        return std::vector<std::string>{"AppIcon", "icon-60@2x", "QuillmarLogo"};
      }};
  Text title{*this, "title", "Quillmar Child"};
  Text tagline{*this, "tagline", "Your internet is being monitored for safety"};
  Text settingsIcon{*this, "settingsIcon", "gearshape.fill"};
  Text settingsLabel{*this, "settingsLabel", "Settings"};
  Text refreshTitle{*this, "refreshTitle", "Refresh"};

  Derived<bool> isConnectedToServer{*this, "isConnectedToServer",
                                    [this] { return child_->isConnectedToServer(); }};
  Derived<std::string> statusIcon{
      *this, "statusIcon",
      [this] { return std::string(child_->isConnectedToServer() ? "shield.fill" : "shield.slash"); }};
  Derived<std::string> statusColor{
      *this, "statusColor",
      [this] { return std::string(child_->isConnectedToServer() ? "brandGreen" : "brandOrange"); }};
  Derived<std::string> headline{
      *this, "headline",
      [this] { return std::string(child_->isConnectedToServer() ? "Protection Active" : "Connecting..."); }};
  Derived<std::string> statusLine{*this, "statusLine", [this] {
                                    return std::string(child_->isConnectedToServer()
                                                           ? "Your internet activity is being monitored"
                                                           : "Establishing connection to Quillmar server");
                                  }};
  Derived<std::vector<ChildStatusCard>> cards{*this, "cards", [this] { return computeCards(); }};
  Derived<ProtectionPanel> panel{*this, "panel", [this] { return computePanel(); }};
  // nullopt until a check-in has succeeded.
  Timely<std::optional<std::string>> lastCheckin{*this, "lastCheckin",
                                                 [this] { return computeLastCheckin(); }};

  Action<> openSettings{*this, "openSettings", [this] { showSettings = true; }};
  Action<> enableProtection{*this, "enableProtection", [this] { quillmar::enableProtection(environment_); },
                            [this] { return computePanel().button.has_value(); }};
  Action<> refresh;
  KeyCommands keys{*this, {{Command::refresh, refresh}, {Command::settings, openSettings}}};

 private:
  void onAppear() override;
  void onDisappear() override { passingTime_.stop(); }
  std::vector<ChildStatusCard> computeCards() const;
  ProtectionPanel computePanel() const;
  std::optional<std::string> computeLastCheckin() const;

  Environment& environment_;
  const std::shared_ptr<ChildAppState> child_;
  const std::shared_ptr<VPNDNSManager> vpn_;
  PassingTime passingTime_;
};

}  // namespace quillmar
