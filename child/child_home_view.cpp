#include "child/child_home_view.h"

#include <memory>

#include "child/background_service.h"
#include "child/recent_time.h"

namespace quillmar {
namespace {

ChildStatusCard statusCard(std::string title, std::string value, std::string icon, bool isPositive) {
  return {std::move(title), std::move(value), std::move(icon), isPositive,
          isPositive ? "checkmark.circle.fill" : "exclamationmark.circle.fill"};
}

std::string protectionValue(const VPNDNSManager& vpn) {
  if (vpn.isConnected()) {
    return "Active";
  }
  if (vpn.isConnecting()) {
    return "Connecting...";
  }
  return vpn.isConfigured() ? "Disconnected" : "Needs Setup";
}

}  // namespace

std::string timeInWords(Date time, Date now, const DateStyles& styles) {
  const auto recent = recentInWords(time, now);
  return recent ? *recent : styles.shortTime(time);
}

ChildHomeView::ChildHomeView(Environment& environment)
    : ScreenModel("ChildHomeView"),
      showSettings(*this, "showSettings",
                   [&environment] { return std::make_shared<ChildSettingsView>(environment); }),
      showDoHInstructions(*this, "showDoHInstructions",
                          [&environment] { return std::make_shared<DoHInstructionsView>(environment); }),
      refresh(
          *this, "refresh", [&environment] { environment.backgroundService()->performCheckin(); },
          [this] { return child_->lastCheckinTime().has_value(); }),
      environment_(environment),
      child_(environment.childAppState()),
      vpn_(environment.vpnManager()),
      passingTime_(environment, weakly([this] { lastCheckin.check(); })) {
  follow(*child_);
  follow(*vpn_);
}

void ChildHomeView::onAppear() {
  isPulsing = true;
  environment_.backgroundService()->start(child_);
  passingTime_.start();
}

std::vector<ChildStatusCard> ChildHomeView::computeCards() const {
  const bool isConnectedToServer = child_->isConnectedToServer();
  return {statusCard("Server Connection", isConnectedToServer ? "Connected" : "Disconnected", "wifi",
                     isConnectedToServer),
          statusCard("Internet Protection", protectionValue(*vpn_), "lock.fill", vpn_->isConnected())};
}

ProtectionPanel ChildHomeView::computePanel() const {
  if (vpn_->isConnected()) {
    return {.heading = "Internet Protection Active",
            .text = "Your browsing is protected by Quillmar",
            .button = {},
            .footnote = {},
            .icon = "checkmark.shield.fill",
            .color = "brandGreen"};
  }
  if (vpn_->isConnecting()) {
    return {.heading = "Connecting...",
            .text = "Setting up DNS protection",
            .button = {},
            .footnote = {},
            .icon = "shield.fill",
            .color = "brandBlue",
            .isBusy = true};
  }
  if (vpn_->isConfigured()) {
    return {.heading = "VPN Disconnected",
            .text = "DNS protection is configured but not currently active. Tap below to reconnect.",
            .button = "Reconnect VPN",
            .footnote = {},
            .icon = "shield.slash",
            .color = "brandOrange"};
  }
  const std::string& warning = child_->dohConfigWarning();
  return {.heading = "Internet Protection Required",
          .text = warning.empty()
                      ? "Tap below to enable DNS protection. You'll see a VPN permission prompt - this is "
                        "safe and only routes DNS queries through Quillmar."
                      : warning,
          .button = "Enable Internet Protection",
          .footnote = "This VPN only filters DNS - your internet speed won't be affected.",
          .icon = "exclamationmark.shield.fill",
          .color = "brandOrange"};
}

std::optional<std::string> ChildHomeView::computeLastCheckin() const {
  const auto& time = child_->lastCheckinTime();
  if (!time) {
    return std::nullopt;
  }
  return "Last check-in: " +
         timeInWords(*time, environment_.platform().dispatch.now(), environment_.dateStyles());
}

}  // namespace quillmar
