#include "programs/quillmar/product_machine.h"

#include "child/vpn_dns_manager.h"
#include "platform/linux/networkmanager_tunnel.h"
#include "programs/control/tunnel_storage.h"

namespace quillmar {

ProductMachine::ProductMachine(const Options& options)
    : log("quillmar"),
      settings(options.dataDirectory, log),
      http(CurlHttpSession::Options{.extraCaFile = options.caFile}),
      tunnel(makeTunnel(options)) {}

ProductMachine::~ProductMachine() = default;

std::unique_ptr<TunnelService> ProductMachine::makeTunnel(const Options& options) {
  if (!options.simulatesTunnel) {
    return std::make_unique<NetworkManagerTunnel>(dispatch, std::string(VPNDNSManager::tunnelBundleId));
  }
  auto tunnel = std::make_unique<SimulatedTunnel>(dispatch, control::tunnelStorageIn(options.dataDirectory));
  tunnel->behaveLikePlatform(
      [this](std::function<void(bool)> answer) { permissionPrompt.ask(std::move(answer)); });
  return tunnel;
}

}  // namespace quillmar
