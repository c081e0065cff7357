#pragma once

#include <memory>
#include <optional>
#include <string>

#include "app/session/environment.h"
#include "child/child_app_state.h"
#include "child/protection_actions.h"
#include "child/vpn_dns_manager.h"
#include "presentation/confirmation.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

// The device's details and its few actions. A reset is local: the service is not told and the tunnel is kept.
class ChildSettingsView final : public ScreenModel {
 public:
  explicit ChildSettingsView(Environment& environment);

  Confirmation resetConfirmation{
      *this,
      {.isShown = "showResetConfirmation", .confirm = "confirmReset", .cancel = "cancelReset"},
      [this] { reset(); }};

  Text title{*this, "title", "Settings"};
  Text doneTitle{*this, "doneTitle", "Done"};

  Text deviceSection{*this, "deviceSection", "Device Information"};
  Text deviceIdTitle{*this, "deviceIdTitle", "Device ID"};
  Derived<std::string> deviceId{*this, "deviceId", [this] { return shortDeviceId(); }};
  Text statusTitle{*this, "statusTitle", "Status"};
  Text status{*this, "status", "Enrolled"};
  Text serverTitle{*this, "serverTitle", "Server Connection"};
  Derived<std::string> serverConnection{
      *this, "serverConnection",
      [this] { return std::string(child_->isConnectedToServer() ? "Connected" : "Disconnected"); }};
  Derived<bool> isConnectedToServer{*this, "isConnectedToServer",
                                    [this] { return child_->isConnectedToServer(); }};

  Text protectionSection{*this, "protectionSection", "Internet Protection"};
  Text vpnStatusTitle{*this, "vpnStatusTitle", "VPN Status"};
  Derived<std::string> vpnStatus{*this, "vpnStatus", [this] { return vpn_->statusMessage(); }};
  Derived<std::string> vpnStatusIcon{
      *this, "vpnStatusIcon",
      [this] { return std::string(vpn_->isConnected() ? "checkmark.shield.fill" : "shield.slash"); }};
  Derived<std::string> vpnStatusColor{
      *this, "vpnStatusColor",
      [this] { return std::string(vpn_->isConnected() ? "brandGreen" : "brandOrange"); }};
  Text configurationTitle{*this, "configurationTitle", "Configuration"};
  Derived<std::string> configuration{*this, "configuration", [this] {
                                       return std::string(vpn_->isConfigured() ? "Configured" : "Not Set Up");
                                     }};
  Text reconnectTitle{*this, "reconnectTitle", "Reconnect VPN"};
  Text enableTitle{*this, "enableTitle", "Enable Internet Protection"};
  Text endpointTitle{*this, "endpointTitle", "DoH Endpoint"};
  Derived<std::string> dohEndpoint{*this, "dohEndpoint", [this] { return child_->dohEndpoint(); }};
  Text baseUrlTitle{*this, "baseUrlTitle", "DoH Base URL"};
  // nullopt if the service named none.
  Derived<std::optional<std::string>> dohBaseUrl{*this, "dohBaseUrl", [this] {
                                                   const auto& base = child_->dohBaseUrl();
                                                   return base.empty() ? std::nullopt : std::optional(base);
                                                 }};
  Text copyTitle{*this, "copyTitle", "Copy DoH Endpoint"};

  Text actionsSection{*this, "actionsSection", "Actions"};
  Text forceSyncTitle{*this, "forceSyncTitle", "Force Sync"};
  Text resetTitle{*this, "resetTitle", "Reset Enrollment"};
  Text confirmationTitle{*this, "confirmationTitle", "Reset Enrollment?"};
  Text confirmationText{
      *this, "confirmationText",
      "This will remove this device from parental monitoring. You will need to enroll again."};
  Text confirmTitle{*this, "confirmTitle", "Reset"};
  Text cancelTitle{*this, "cancelTitle", "Cancel"};

  Action<> done{*this, "done", [this] { dismiss(); }};
  Action<> reconnectTunnel{*this, "reconnectTunnel", [this] { quillmar::reconnectTunnel(environment_); },
                           [this] { return vpn_->isConfigured() && !vpn_->isConnected(); }};
  Action<> enableProtection{*this, "enableProtection", [this] { quillmar::enableProtection(environment_); },
                            [this] { return !vpn_->isConfigured(); }};
  Action<> copyDoHEndpoint{*this, "copyDoHEndpoint",
                           [this] { environment_.platform().clipboard.setString(child_->dohEndpoint()); }};
  Action<> forceSync{*this, "forceSync", [this] { quillmar::forceSync(environment_); }};
  Action<> resetEnrollment{*this, "resetEnrollment", [this] { resetConfirmation.ask(); }};
  KeyCommands keys{*this, {{Command::back, done}}};

 private:
  std::string shortDeviceId() const;
  void reset();

  Environment& environment_;
  const std::shared_ptr<ChildAppState> child_;
  const std::shared_ptr<VPNDNSManager> vpn_;
};

}  // namespace quillmar
