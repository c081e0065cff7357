#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "child/vpn_dns_error.h"
#include "foundation/observable.h"
#include "foundation/url.h"
#include "platform/dispatch.h"
#include "platform/log.h"
#include "platform/tunnel.h"

namespace quillmar {

// nullopt on success.
using VPNCompletion = std::function<void(const std::optional<VPNDNSError>&)>;

// The only access to the platform's tunnel service. It finds or creates the tunnel's configuration, writes
// the endpoint into it, starts the tunnel and mirrors its status. It never stops the tunnel or removes the
// configuration. Call operations on the main thread; completions run there too: at once for a refused
// endpoint, else later.
class VPNDNSManager final : public ObservableObject {
 public:
  static constexpr std::string_view tunnelBundleId = "live.quillmar.quillmar.PacketTunnel";
  static constexpr std::string_view appGroupId = "group.live.quillmar.quillmar";
  static constexpr std::string_view localizedDescription = "Quillmar Internet Protection";
  // The only entry of the provider's configuration.
  static constexpr std::string_view endpointKey = "dohEndpoint";

  VPNDNSManager(TunnelService& tunnel, Dispatch& dispatch, Log& log);

  // A usable, enabled configuration exists.
  Published<bool> isConfigured{*this, "isConfigured", false};
  Published<bool> isConnected{*this, "isConnected", false};
  Published<bool> isConnecting{*this, "isConnecting", false};
  Published<std::string> statusMessage{*this, "statusMessage", "Not configured"};
  Published<std::string> errorMessage{*this, "errorMessage"};

  // Succeeds once the configuration is saved, even if the tunnel then fails to start.
  void configureVPN(const std::string& endpoint, VPNCompletion completion);
  void connectVPN(VPNCompletion completion);
  void loadExistingConfig(std::function<void()> completion = {});
  void updateStatus(TunnelStatus status);

  const std::shared_ptr<TunnelConfiguration>& vpnManager() const { return vpnManager_; }
  const std::string& currentEndpoint() const { return currentEndpoint_; }

 private:
  void refuseEndpoint(const VPNDNSError& error, const std::string& status, const VPNCompletion& completion);
  void fillAndSave(const Result<TunnelService::Configurations>& listed, const URL& endpoint,
                   const VPNCompletion& completion);
  void reload(const std::shared_ptr<TunnelConfiguration>& manager, const URL& endpoint,
              const VPNCompletion& completion);
  void takeConfiguration(const std::shared_ptr<TunnelConfiguration>& manager, const URL& endpoint,
                         const VPNCompletion& completion);
  void startTunnel(const std::shared_ptr<TunnelConfiguration>& manager, const VPNCompletion& completion);
  void adoptExisting(const Result<TunnelService::Configurations>& listed);
  void observeStatus();

  TunnelService& tunnel_;
  Dispatch& dispatch_;
  Log& log_;
  std::shared_ptr<TunnelConfiguration> vpnManager_;
  Subscription statusObserver_;
  std::string currentEndpoint_;
};

}  // namespace quillmar
