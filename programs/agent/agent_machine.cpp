#include "programs/agent/agent_machine.h"

#include "child/vpn_dns_manager.h"
#include "platform/linux/networkmanager_tunnel.h"
#include "platform/simulated/simulated_tunnel.h"
#include "programs/control/tunnel_storage.h"

namespace quillmar::agent {
namespace {

std::unique_ptr<TunnelService> makeTunnel(const Options& options, Dispatch& dispatch) {
  if (!options.simulatesTunnel) {
    return std::make_unique<NetworkManagerTunnel>(dispatch, std::string(VPNDNSManager::tunnelBundleId));
  }
  auto tunnel = std::make_unique<SimulatedTunnel>(dispatch, control::tunnelStorageIn(options.dataDirectory));
  tunnel->behaveLikePlatform();
  return tunnel;
}

}  // namespace

void AgentLog::print(std::string_view line) {
  if (tellsEverything_ || line.starts_with("[SettingsStore]")) {
    log_.print(line);
  }
}

AgentMachine::AgentMachine(const Options& options, AsioDispatch& dispatch, Log& log)
    : log_(log),
      dispatch_(dispatch),
      settings_(options.dataDirectory, log),
      http_(CurlHttpSession::Options{.extraCaFile = options.caFile}),
      tunnel_(makeTunnel(options, dispatch)) {}

AgentMachine::~AgentMachine() = default;

Platform AgentMachine::ports() {
  return {settings_,   http_,      dispatch_, log_,         *tunnel_,   secureItems_, biometrics_,
          deviceInfo_, clipboard_, haptics_,  windowStyle_, qrEncoder_, qrReader_};
}

Deployments deploymentsFor(const Options& options) {
  return options.service ? Deployments::all(*options.service) : Deployments::builtIn();
}

}  // namespace quillmar::agent
