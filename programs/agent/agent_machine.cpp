#include "programs/agent/agent_machine.h"

#include "child/vpn_dns_manager.h"
#include "platform/linux/networkmanager_tunnel.h"
#include "platform/settings.h"
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

AgentMachine::AgentMachine(const Options& options, AsioDispatch& timing, Log& lines)
    : dispatch(timing),
      log(lines),
      settings(options.dataDirectory, log),
      http(CurlHttpSession::Options{.extraCaFile = options.caFile}),
      tunnel(makeTunnel(options, dispatch)),
      dataDirectory_(options.dataDirectory) {}

AgentMachine::~AgentMachine() = default;

std::optional<std::string> AgentMachine::problemWithSettings() const {
  return settings.isReadable()
             ? std::nullopt
             : std::optional("The settings in " + dataDirectory_.string() + " can't be read.");
}

Deployments deploymentsFor(const Options& options) {
  return options.service ? Deployments::all(*options.service) : Deployments::builtIn();
}

std::optional<bool> isEnrolledOnDisk(const Options& options, Log& log) {
  if (SqliteSettingsStore::isAbsentFrom(options.dataDirectory)) {
    return false;
  }
  const SqliteSettingsStore store(options.dataDirectory, log);
  return store.isReadable() ? std::optional(store.boolean(settings::childIsEnrolled)) : std::nullopt;
}

}  // namespace quillmar::agent
