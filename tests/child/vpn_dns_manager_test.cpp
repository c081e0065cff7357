#include "child/vpn_dns_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/simulated/simulated_tunnel.h"
#include "testing/recording_log.h"
#include "testing/virtual_dispatch.h"

namespace quillmar {
namespace {

using Operation = SimulatedTunnel::Operation;
using Case = VPNDNSError::Case;
using Operations = std::vector<Operation>;
using Outcome = std::optional<std::optional<VPNDNSError>>;

const std::string ownEndpoint = "https://dns.example/d1";
const Outcome succeeded = std::optional<VPNDNSError>();

SavedTunnel ours(const std::string& dohEndpoint = ownEndpoint) {
  return {.protocolConfiguration =
              TunnelProtocol{
                  "live.quillmar.quillmar.PacketTunnel", "dns.example", {{"dohEndpoint", dohEndpoint}}},
          .localizedDescription = "Quillmar Internet Protection",
          .isEnabled = true,
          .onDemandRules = {OnDemandRuleConnect{}},
          .isOnDemandEnabled = true};
}

SavedTunnel foreign() {
  return {.protocolConfiguration = TunnelProtocol{"com.other.vpn", "other.example", {{"key", "value"}}},
          .localizedDescription = "Work",
          .isEnabled = true,
          .onDemandRules = {},
          .isOnDemandEnabled = false};
}

struct Tunnel : testing::Test {
  VirtualDispatch dispatch;
  RecordingLog log;
  SimulatedTunnel tunnel{dispatch};
  std::unique_ptr<VPNDNSManager> manager;

  // Makes the manager, waits for its initial load, and clears the recorded calls and log lines.
  VPNDNSManager& start() {
    manager = std::make_unique<VPNDNSManager>(tunnel, dispatch, log);
    dispatch.settle();
    tunnel.forgetCalls();
    log.clear();
    return *manager;
  }

  Outcome configure(const std::string& text) {
    const auto outcome = std::make_shared<Outcome>();
    manager->configureVPN(text, [outcome](const std::optional<VPNDNSError>& error) { *outcome = error; });
    dispatch.advance(std::chrono::seconds(2));
    return *outcome;
  }
  Outcome connect() {
    const auto outcome = std::make_shared<Outcome>();
    manager->connectVPN([outcome](const std::optional<VPNDNSError>& error) { *outcome = error; });
    dispatch.advance(std::chrono::seconds(2));
    return *outcome;
  }
};

TEST_F(Tunnel, begins_unconfigured_and_loads_the_existing_configuration) {
  manager = std::make_unique<VPNDNSManager>(tunnel, dispatch, log);
  EXPECT_FALSE(manager->isConfigured());
  EXPECT_FALSE(manager->isConnected());
  EXPECT_FALSE(manager->isConnecting());
  EXPECT_EQ(manager->statusMessage(), "Not configured");
  EXPECT_EQ(manager->errorMessage(), "");
  EXPECT_EQ(manager->currentEndpoint(), "");
  EXPECT_EQ(manager->vpnManager(), nullptr);
  dispatch.settle();
  EXPECT_EQ(tunnel.operations(), Operations{Operation::load});
  EXPECT_EQ(log.printed(), std::vector<std::string>{"[VPNDNSManager] No existing VPN configuration found"});
}

TEST_F(Tunnel, an_empty_endpoint_is_rejected_at_once_before_the_fields_change) {
  start();
  Outcome outcome;
  manager->configureVPN("", [&](const std::optional<VPNDNSError>& error) {
    outcome = error;
    EXPECT_EQ(manager->errorMessage(), "");
  });
  EXPECT_EQ(outcome, (VPNDNSError{Case::invalidEndpoint, "Endpoint URL is empty"}));
  dispatch.settle();
  EXPECT_EQ(manager->errorMessage(), "Invalid DNS endpoint: Endpoint URL is empty");
  EXPECT_EQ(manager->statusMessage(), "Configuration failed");
  EXPECT_TRUE(tunnel.calls().empty());
  EXPECT_TRUE(log.printed().empty());
}

TEST_F(Tunnel, an_endpoint_that_is_not_an_https_url_is_rejected) {
  for (const std::string text :
       {"http://dns.example", "HTTPS://dns.example", "Https://dns.example", "dns.example", "//dns.example",
        "https://dns example", "https://dns.example/é", " "}) {
    start();
    EXPECT_EQ(configure(text), (VPNDNSError{Case::invalidEndpoint, "Invalid HTTPS URL"})) << text;
    EXPECT_EQ(manager->errorMessage(), "Invalid DNS endpoint: Invalid HTTPS URL");
    EXPECT_EQ(manager->statusMessage(), "Invalid endpoint URL");
    EXPECT_TRUE(tunnel.calls().empty()) << text;
  }
}

TEST_F(Tunnel, the_first_configuration_is_created_saved_reloaded_and_started) {
  start();
  EXPECT_EQ(configure(ownEndpoint)->has_value(), false);
  EXPECT_EQ(tunnel.operations(),
            (Operations{Operation::load, Operation::save, Operation::reload, Operation::start}));
  EXPECT_EQ(tunnel.saved(), std::vector{ours()});
  EXPECT_TRUE(manager->isConfigured());
  EXPECT_EQ(manager->currentEndpoint(), ownEndpoint);
  EXPECT_THAT(
      log.printed(),
      testing::ElementsAre("[VPNDNSManager] Configuring VPN with DoH endpoint: " + ownEndpoint,
                           "[VPNDNSManager] Status changed: Disconnected",
                           "[VPNDNSManager] VPN configuration saved successfully",
                           "[VPNDNSManager] VPN tunnel start initiated",
                           "[VPNDNSManager] VPN configured but start failed: VPN connection failed: VPN "
                           "failed to connect"));
}

TEST_F(Tunnel, an_endpoint_without_a_host_gets_a_display_name) {
  for (const std::string text : {"https:///x", "https://", "https:abc"}) {
    start();
    configure(text);
    const auto saved = tunnel.saved().back();
    EXPECT_EQ(saved.protocolConfiguration->serverAddress, "Quillmar DNS");
    EXPECT_EQ(saved.protocolConfiguration->providerConfiguration.at("dohEndpoint"), text);
  }
}

TEST_F(Tunnel, a_second_configuration_reuses_the_first_and_replaces_its_protocol) {
  auto old = ours("https://old.example/d1");
  old.protocolConfiguration->providerConfiguration["leftover"] = "x";
  old.isEnabled = false;
  old.onDemandRules.clear();
  tunnel.put(foreign());
  tunnel.put(old);
  start();
  configure(ownEndpoint);
  EXPECT_EQ(tunnel.saved(), (std::vector{foreign(), ours()}));
}

TEST_F(Tunnel, the_first_of_several_own_configurations_is_used) {
  tunnel.put(ours("https://one.example"));
  tunnel.put(ours("https://two.example"));
  start();
  configure(ownEndpoint);
  EXPECT_EQ(tunnel.saved()[0], ours());
  EXPECT_EQ(tunnel.saved()[1], ours("https://two.example"));
}

TEST_F(Tunnel, other_programs_and_other_types_of_configuration_are_left_alone) {
  SavedTunnel other = foreign();
  other.protocolConfiguration.reset();
  tunnel.put(foreign());
  tunnel.put(other);
  start();
  EXPECT_FALSE(manager->isConfigured());
  configure(ownEndpoint);
  EXPECT_EQ(tunnel.saved(), (std::vector{foreign(), other, ours()}));
}

TEST_F(Tunnel, a_running_tunnel_is_not_stopped_for_a_new_endpoint) {
  tunnel.put(ours());
  start();
  tunnel.setStatus(0, TunnelStatus::connected);
  dispatch.settle();
  std::vector<bool> seen;
  const auto listening = manager->isConnected.onChange([&] { seen.push_back(manager->isConnected()); });
  configure("https://dns.example/moved");
  EXPECT_TRUE(seen.empty());
  EXPECT_EQ(tunnel.operations().back(), Operation::start);
}

TEST_F(Tunnel, a_failed_listing_ends_the_configuration) {
  start();
  tunnel.fail(Operation::load, "no service");
  EXPECT_EQ(configure(ownEndpoint), (VPNDNSError{Case::loadFailed, "no service"}));
  EXPECT_EQ(manager->errorMessage(), "no service");
  EXPECT_EQ(manager->statusMessage(), "Failed to load VPN");
  EXPECT_TRUE(log.hasPrinted("[VPNDNSManager] Error loading VPN configurations: no service"));
  EXPECT_EQ(tunnel.operations(), Operations{Operation::load});
}

TEST_F(Tunnel, a_denied_permission_fails_like_a_failed_save) {
  start();
  tunnel.behaveLikePlatform([](const std::function<void(bool)>& answer) { answer(false); });
  EXPECT_EQ(configure(ownEndpoint), (VPNDNSError{Case::saveFailed, "permission denied"}));
  EXPECT_EQ(manager->errorMessage(), "permission denied");
  EXPECT_EQ(manager->statusMessage(), "Configuration failed");
  EXPECT_FALSE(manager->isConfigured());
  EXPECT_TRUE(log.hasPrinted("[VPNDNSManager] Failed to save VPN configuration: permission denied"));
  EXPECT_TRUE(tunnel.saved().empty());
}

TEST_F(Tunnel, a_failed_reload_keeps_the_status_text) {
  start();
  tunnel.fail(Operation::reload, "gone");
  EXPECT_EQ(configure(ownEndpoint), (VPNDNSError{Case::loadFailed, "gone"}));
  EXPECT_EQ(manager->errorMessage(), "");
  EXPECT_EQ(manager->statusMessage(), "Disconnected") << "as the saved configuration's status left it";
  EXPECT_FALSE(manager->isConfigured());
  EXPECT_EQ(manager->vpnManager(), nullptr);
  EXPECT_TRUE(log.hasPrinted("[VPNDNSManager] Failed to reload VPN configuration: gone"));
}

TEST_F(Tunnel, configuring_succeeds_once_saved_even_if_the_start_fails) {
  start();
  tunnel.fail(Operation::start, "no network");
  EXPECT_EQ(configure(ownEndpoint), succeeded);
  EXPECT_TRUE(manager->isConfigured());
  EXPECT_FALSE(manager->isConnecting());
  EXPECT_EQ(manager->statusMessage(), "Connection failed");
  EXPECT_EQ(manager->errorMessage(), "");
  EXPECT_TRUE(log.hasPrinted("[VPNDNSManager] Failed to start VPN tunnel: no network"));
  EXPECT_TRUE(
      log.hasPrinted("[VPNDNSManager] VPN configured but start failed: VPN connection failed: no network"));
}

TEST_F(Tunnel, a_tunnel_down_after_a_second_fails_connecting_but_not_configuring) {
  start();
  EXPECT_EQ(configure(ownEndpoint), succeeded);
  EXPECT_TRUE(log.hasPrinted(
      "[VPNDNSManager] VPN configured but start failed: VPN connection failed: VPN failed to connect"));
  EXPECT_EQ(connect(), (VPNDNSError{Case::connectionFailed, "VPN failed to connect"}));
}

TEST_F(Tunnel, a_tunnel_still_connecting_after_a_second_counts_as_success) {
  tunnel.put(ours());
  start();
  for (const auto status : {TunnelStatus::connecting, TunnelStatus::connected}) {
    tunnel.setStatus(0, status);
    EXPECT_EQ(connect(), succeeded);
  }
  for (const auto status : {TunnelStatus::reasserting, TunnelStatus::disconnecting, TunnelStatus::invalid}) {
    tunnel.setStatus(0, status);
    EXPECT_EQ(connect(), (VPNDNSError{Case::connectionFailed, "VPN failed to connect"}));
  }
}

TEST_F(Tunnel, the_connection_is_checked_after_exactly_one_second) {
  tunnel.put(ours());
  start();
  bool isJudged = false;
  manager->connectVPN([&](const std::optional<VPNDNSError>& /*error*/) { isJudged = true; });
  dispatch.advance(std::chrono::milliseconds(999));
  EXPECT_FALSE(isJudged);
  EXPECT_TRUE(manager->isConnecting());
  EXPECT_EQ(manager->statusMessage(), "Connecting...");
  dispatch.advance(std::chrono::milliseconds(1));
  EXPECT_TRUE(isJudged);
  EXPECT_FALSE(manager->isConnecting());
}

TEST_F(Tunnel, the_start_is_requested_before_the_fields_change) {
  tunnel.put(ours());
  start();
  manager->connectVPN([](const std::optional<VPNDNSError>& /*error*/) {});
  EXPECT_EQ(tunnel.operations(), Operations{Operation::start});
  EXPECT_FALSE(manager->isConnecting());
  dispatch.settle();
  EXPECT_TRUE(manager->isConnecting());
}

TEST_F(Tunnel, connecting_without_a_configuration_loads_and_then_fails) {
  start();
  EXPECT_EQ(connect(), (VPNDNSError{Case::notConfigured, {}}));
  EXPECT_EQ(tunnel.operations(), Operations{Operation::load});
}

TEST_F(Tunnel, a_load_error_while_connecting_ends_as_not_configured) {
  start();
  tunnel.fail(Operation::load, "no service");
  EXPECT_EQ(connect(), (VPNDNSError{Case::notConfigured, {}}));
  EXPECT_EQ(manager->statusMessage(), "Load error");
}

TEST_F(Tunnel, connecting_finds_a_configuration_created_elsewhere) {
  start();
  tunnel.put(ours());
  tunnel.setStatus(0, TunnelStatus::connected);
  EXPECT_EQ(connect(), succeeded);
  EXPECT_EQ(tunnel.operations(), (Operations{Operation::load, Operation::start}));
}

TEST_F(Tunnel, a_disabled_configuration_counts_as_not_configured_but_is_started) {
  auto switchedOff = ours();
  switchedOff.isEnabled = false;
  tunnel.put(switchedOff);
  start();
  EXPECT_FALSE(manager->isConfigured());
  EXPECT_NE(manager->vpnManager(), nullptr);
  connect();
  EXPECT_EQ(tunnel.operations(), Operations{Operation::start});
}

TEST_F(Tunnel, loading_reads_status_and_endpoint) {
  tunnel.put(ours());
  tunnel.setStatus(0, TunnelStatus::connected);
  manager = std::make_unique<VPNDNSManager>(tunnel, dispatch, log);
  dispatch.settle();
  EXPECT_TRUE(manager->isConfigured());
  EXPECT_TRUE(manager->isConnected());
  EXPECT_EQ(manager->currentEndpoint(), ownEndpoint);
  EXPECT_EQ(log.printed().back(), "[VPNDNSManager] Loaded existing VPN config, status: 3");
  EXPECT_EQ(log.printed()[log.printed().size() - 2], "[VPNDNSManager] Status changed: DNS Protection Active");
}

TEST_F(Tunnel, a_failed_load_keeps_the_connection_state) {
  tunnel.put(ours());
  tunnel.setStatus(0, TunnelStatus::connected);
  start();
  const auto configuration = manager->vpnManager();
  tunnel.fail(Operation::load, "no service");
  bool isDone = false;
  manager->loadExistingConfig([&] { isDone = true; });
  dispatch.settle();
  EXPECT_TRUE(isDone);
  EXPECT_FALSE(manager->isConfigured());
  EXPECT_TRUE(manager->isConnected());
  EXPECT_EQ(manager->vpnManager(), configuration);
  EXPECT_EQ(manager->statusMessage(), "Load error");
  EXPECT_TRUE(log.hasPrinted("[VPNDNSManager] Error loading VPN: no service"));
}

TEST_F(Tunnel, a_configuration_removed_elsewhere_is_noticed_and_the_object_is_kept) {
  tunnel.put(ours());
  tunnel.setStatus(0, TunnelStatus::connected);
  start();
  tunnel.removeSaved(0);
  manager->loadExistingConfig();
  dispatch.settle();
  EXPECT_FALSE(manager->isConfigured());
  EXPECT_FALSE(manager->isConnected());
  EXPECT_EQ(manager->statusMessage(), "Not configured");
  EXPECT_NE(manager->vpnManager(), nullptr);
  EXPECT_EQ(manager->currentEndpoint(), ownEndpoint);
}

TEST_F(Tunnel, every_status_sets_its_fields_and_is_logged) {
  struct Row {
    TunnelStatus status;
    bool isConnected;
    bool isConnecting;
    std::string message;
  };
  for (const auto& row : std::vector<Row>{{TunnelStatus::invalid, false, false, "Invalid"},
                                          {TunnelStatus::disconnected, false, false, "Disconnected"},
                                          {TunnelStatus::connecting, false, true, "Connecting..."},
                                          {TunnelStatus::connected, true, false, "DNS Protection Active"},
                                          {TunnelStatus::reasserting, false, true, "Reconnecting..."},
                                          {TunnelStatus::disconnecting, false, false, "Disconnecting..."}}) {
    start();
    manager->isConfigured = true;
    manager->errorMessage = "kept";
    manager->isConnected = !row.isConnected;
    manager->isConnecting = !row.isConnecting;
    manager->updateStatus(row.status);
    EXPECT_EQ(manager->isConnected(), row.isConnected) << row.message;
    EXPECT_EQ(manager->isConnecting(), row.isConnecting) << row.message;
    EXPECT_EQ(manager->statusMessage(), row.message);
    EXPECT_TRUE(manager->isConfigured());
    EXPECT_EQ(manager->errorMessage(), "kept");
    EXPECT_EQ(log.printed(), std::vector<std::string>{"[VPNDNSManager] Status changed: " + row.message});
  }
}

TEST_F(Tunnel, an_unknown_status_changes_only_the_status_text) {
  start();
  manager->isConnected = true;
  manager->isConnecting = true;
  manager->updateStatus(static_cast<TunnelStatus>(6));
  EXPECT_TRUE(manager->isConnected());
  EXPECT_TRUE(manager->isConnecting());
  EXPECT_EQ(manager->statusMessage(), "Unknown");
}

TEST_F(Tunnel, a_status_change_of_any_connection_counts) {
  tunnel.put(foreign());
  start();
  tunnel.setStatus(0, TunnelStatus::connected);
  dispatch.settle();
  EXPECT_TRUE(manager->isConnected());
}

TEST_F(Tunnel, notifications_and_completions_after_its_destruction_are_ignored) {
  start();
  bool isCalled = false;
  manager->configureVPN(ownEndpoint, [&](const std::optional<VPNDNSError>& /*error*/) { isCalled = true; });
  manager.reset();
  tunnel.put(ours());
  tunnel.setStatus(0, TunnelStatus::connected);
  dispatch.advance(std::chrono::seconds(5));
  EXPECT_FALSE(isCalled);
}

TEST_F(Tunnel, no_operation_ever_stops_or_removes_the_tunnel) {
  tunnel.put(ours());
  start();
  tunnel.setStatus(0, TunnelStatus::connected);
  configure("https://dns.example/moved");
  configure("");
  connect();
  EXPECT_EQ(tunnel.saved().size(), 1U);
  EXPECT_EQ(tunnel.status(0), TunnelStatus::connected);
}

TEST_F(Tunnel, overlapping_configurations_both_finish) {
  start();
  std::vector<std::string> finished;
  manager->configureVPN("https://dns.example/one",
                        [&](const auto& /*error*/) { finished.emplace_back("one"); });
  manager->configureVPN("https://dns.example/two",
                        [&](const auto& /*error*/) { finished.emplace_back("two"); });
  dispatch.advance(std::chrono::seconds(2));
  EXPECT_EQ(finished, (std::vector<std::string>{"one", "two"}));
  ASSERT_EQ(tunnel.saved().size(), 1U);
  EXPECT_EQ(tunnel.saved().front().protocolConfiguration->providerConfiguration.at("dohEndpoint"),
            "https://dns.example/two");
}

}  // namespace
}  // namespace quillmar
