#include "programs/quillmar/product_machine.h"

#include "child/vpn_dns_manager.h"
#include "platform/linux/networkmanager_tunnel.h"
#include "programs/control/tunnel_storage.h"

namespace quillmar {

ProductMachine::ProductMachine(const Options& options)
    : log_("quillmar"),
      settings_(options.dataDirectory, log_),
      http_(CurlHttpSession::Options{.extraCaFile = options.caFile}),
      tunnel_(makeTunnel(options)) {}

ProductMachine::~ProductMachine() = default;

std::unique_ptr<TunnelService> ProductMachine::makeTunnel(const Options& options) {
  if (!options.simulatesTunnel) {
    return std::make_unique<NetworkManagerTunnel>(dispatch_, std::string(VPNDNSManager::tunnelBundleId));
  }
  auto tunnel = std::make_unique<SimulatedTunnel>(dispatch_, control::tunnelStorageIn(options.dataDirectory));
  tunnel->behaveLikePlatform(
      [this](std::function<void(bool)> answer) { permissionPrompt_.ask(std::move(answer)); });
  return tunnel;
}

Platform ProductMachine::ports() {
  return {.settings = settings_,
          .http = http_,
          .dispatch = dispatch_,
          .log = log_,
          .tunnel = *tunnel_,
          .secureItems = secureItems_,
          .biometrics = biometrics_,
          .deviceInfo = deviceInfo_,
          .clipboard = clipboard_,
          .haptics = haptics_,
          .windowStyle = windowStyle_,
          .qrEncoder = qrEncoder_,
          .qrReader = qrReader_};
}

}  // namespace quillmar
