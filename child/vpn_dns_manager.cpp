#include "child/vpn_dns_manager.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "platform/hop.h"

namespace quillmar {
namespace {

using Case = VPNDNSError::Case;
using ManagerPtr = std::shared_ptr<TunnelConfiguration>;

constexpr auto startGrace = std::chrono::seconds(1);

struct StatusFace {
  TunnelStatus status;
  bool isConnected;
  bool isConnecting;
  std::string_view message;
};

constexpr auto statusFaces = std::to_array<StatusFace>({
    {TunnelStatus::invalid, false, false, "Invalid"},
    {TunnelStatus::disconnected, false, false, "Disconnected"},
    {TunnelStatus::connecting, false, true, "Connecting..."},
    {TunnelStatus::connected, true, false, "DNS Protection Active"},
    {TunnelStatus::reasserting, false, true, "Reconnecting..."},
    {TunnelStatus::disconnecting, false, false, "Disconnecting..."},
});

ManagerPtr findOurs(const TunnelService::Configurations& configurations) {
  const auto ours = std::ranges::find_if(configurations, [](const ManagerPtr& one) {
    return one->protocolConfiguration &&
           one->protocolConfiguration->providerBundleIdentifier == VPNDNSManager::tunnelBundleId;
  });
  return ours == configurations.end() ? nullptr : *ours;
}

void fill(TunnelConfiguration& manager, const URL& endpoint) {
  manager.protocolConfiguration = TunnelProtocol{
      .providerBundleIdentifier = std::string(VPNDNSManager::tunnelBundleId),
      .serverAddress = endpoint.host().value_or("Quillmar DNS"),
      .providerConfiguration = {{std::string(VPNDNSManager::endpointKey), endpoint.text()}},
  };
  manager.localizedDescription = VPNDNSManager::localizedDescription;
  manager.isEnabled = true;
  manager.onDemandRules = {OnDemandRuleConnect{InterfaceType::any}};
  manager.isOnDemandEnabled = true;
}

}  // namespace

VPNDNSManager::VPNDNSManager(TunnelService& tunnel, Dispatch& dispatch, Log& log)
    : ObservableObject("VPNDNSManager"), tunnel_(tunnel), dispatch_(dispatch), log_(log) {
  loadExistingConfig();
  observeStatus();
}

void VPNDNSManager::refuseEndpoint(const VPNDNSError& error, const std::string& status,
                                   const VPNCompletion& completion) {
  dispatch_.main().async(weakly([this, text = error.errorDescription(), status] {
    errorMessage = text;
    statusMessage = status;
  }));
  completion(error);
}

void VPNDNSManager::configureVPN(const std::string& endpoint, VPNCompletion completion) {
  if (endpoint.empty()) {
    refuseEndpoint({Case::invalidEndpoint, "Endpoint URL is empty"}, "Configuration failed", completion);
    return;
  }
  const auto url = URL::parse(endpoint);
  if (!url || url->scheme() != "https") {
    refuseEndpoint({Case::invalidEndpoint, "Invalid HTTPS URL"}, "Invalid endpoint URL", completion);
    return;
  }
  log_.print("[VPNDNSManager] Configuring VPN with DoH endpoint: " + endpoint);
  auto listed = hoppingToMain(dispatch_, weakly([this, url = *url, completion = std::move(completion)](
                                                    const Result<TunnelService::Configurations>& list) {
                                fillAndSave(list, url, completion);
                              }));
  tunnel_.loadAll([&log = log_, listed](const Result<TunnelService::Configurations>& list) {
    if (!list.ok()) {
      log.print("[VPNDNSManager] Error loading VPN configurations: " + list.error().localizedDescription());
    }
    listed(list);
  });
}

void VPNDNSManager::fillAndSave(const Result<TunnelService::Configurations>& listed, const URL& endpoint,
                                const VPNCompletion& completion) {
  if (!listed.ok()) {
    const std::string description = listed.error().localizedDescription();
    errorMessage = description;
    statusMessage = "Failed to load VPN";
    completion(VPNDNSError{Case::loadFailed, description});
    return;
  }
  const auto existing = findOurs(listed.value());
  const auto manager = existing ? existing : tunnel_.makeConfiguration();
  fill(*manager, endpoint);
  auto saved = hoppingToMain(dispatch_, weakly([=, this](const std::optional<Error>& error) {
                               if (!error) {
                                 reload(manager, endpoint, completion);
                                 return;
                               }
                               const std::string description = error->localizedDescription();
                               errorMessage = description;
                               statusMessage = "Configuration failed";
                               completion(VPNDNSError{Case::saveFailed, description});
                             }));
  manager->save([&log = log_, saved](const std::optional<Error>& error) {
    log.print(error ? "[VPNDNSManager] Failed to save VPN configuration: " + error->localizedDescription()
                    : "[VPNDNSManager] VPN configuration saved successfully");
    saved(error);
  });
}

void VPNDNSManager::reload(const ManagerPtr& manager, const URL& endpoint, const VPNCompletion& completion) {
  auto reloaded = hoppingToMain(dispatch_, weakly([=, this](const std::optional<Error>& error) {
                                  if (error) {
                                    completion(VPNDNSError{Case::loadFailed, error->localizedDescription()});
                                  } else {
                                    takeConfiguration(manager, endpoint, completion);
                                  }
                                }));
  manager->load([&log = log_, reloaded](const std::optional<Error>& error) {
    if (error) {
      log.print("[VPNDNSManager] Failed to reload VPN configuration: " + error->localizedDescription());
    }
    reloaded(error);
  });
}

void VPNDNSManager::takeConfiguration(const ManagerPtr& manager, const URL& endpoint,
                                      const VPNCompletion& completion) {
  vpnManager_ = manager;
  currentEndpoint_ = endpoint.text();
  isConfigured = true;
  errorMessage = std::string();
  statusMessage = "VPN configured";
  connectVPN([&log = log_, completion](const std::optional<VPNDNSError>& error) {
    if (error) {
      log.print("[VPNDNSManager] VPN configured but start failed: " + error->errorDescription());
    }
    completion(std::nullopt);
  });
}

void VPNDNSManager::connectVPN(VPNCompletion completion) {
  if (vpnManager_) {
    startTunnel(vpnManager_, completion);
    return;
  }
  loadExistingConfig([this, completion = std::move(completion)] {
    if (vpnManager_) {
      startTunnel(vpnManager_, completion);
    } else {
      completion(VPNDNSError{Case::notConfigured, {}});
    }
  });
}

void VPNDNSManager::startTunnel(const ManagerPtr& manager, const VPNCompletion& completion) {
  dispatch_.main().async(weakly([this] {
    isConnecting = true;
    statusMessage = "Connecting...";
  }));
  if (const auto started = manager->connection().startTunnel(); !started.ok()) {
    const std::string description = started.error().localizedDescription();
    log_.print("[VPNDNSManager] Failed to start VPN tunnel: " + description);
    dispatch_.main().async(weakly([this, description, completion] {
      isConnecting = false;
      statusMessage = "Connection failed";
      completion(VPNDNSError{Case::connectionFailed, description});
    }));
    return;
  }
  log_.print("[VPNDNSManager] VPN tunnel start initiated");
  dispatch_.main().asyncAfter(startGrace, weakly([this, manager, completion] {
                                isConnecting = false;
                                const auto status = manager->connection().status();
                                if (status == TunnelStatus::connected || status == TunnelStatus::connecting) {
                                  completion(std::nullopt);
                                } else {
                                  completion(VPNDNSError{Case::connectionFailed, "VPN failed to connect"});
                                }
                              }));
}

void VPNDNSManager::loadExistingConfig(std::function<void()> completion) {
  tunnel_.loadAll(hoppingToMain(dispatch_, weakly([this, completion = std::move(completion)](
                                                      const Result<TunnelService::Configurations>& listed) {
                                  adoptExisting(listed);
                                  if (completion) {
                                    completion();
                                  }
                                })));
}

void VPNDNSManager::adoptExisting(const Result<TunnelService::Configurations>& listed) {
  if (!listed.ok()) {
    log_.print("[VPNDNSManager] Error loading VPN: " + listed.error().localizedDescription());
    isConfigured = false;
    statusMessage = "Load error";
    return;
  }
  const auto manager = findOurs(listed.value());
  if (!manager) {
    isConfigured = false;
    isConnected = false;
    statusMessage = "Not configured";
    log_.print("[VPNDNSManager] No existing VPN configuration found");
    return;
  }
  vpnManager_ = manager;
  isConfigured = manager->isEnabled;
  const auto status = manager->connection().status();
  updateStatus(status);
  const auto& entries = manager->protocolConfiguration->providerConfiguration;
  if (const auto endpoint = entries.find(std::string(endpointKey)); endpoint != entries.end()) {
    currentEndpoint_ = endpoint->second;
  }
  log_.print("[VPNDNSManager] Loaded existing VPN config, status: " +
             std::to_string(static_cast<int>(status)));
}

void VPNDNSManager::observeStatus() {
  statusObserver_ =
      tunnel_.observeStatus([this](TunnelConnection& connection) { updateStatus(connection.status()); });
}

void VPNDNSManager::updateStatus(TunnelStatus status) {
  const auto known = std::ranges::find(statusFaces, status, &StatusFace::status);
  if (known == statusFaces.end()) {
    statusMessage = "Unknown";
  } else {
    isConnected = known->isConnected;
    isConnecting = known->isConnecting;
    statusMessage = std::string(known->message);
  }
  log_.print("[VPNDNSManager] Status changed: " + statusMessage());
}

}  // namespace quillmar
