#include "child/background_service.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "testing/test_application.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Operation = SimulatedTunnel::Operation;

const std::string endpoint = "https://dns.example/d1";

// An enrolled child's device without a home screen, so that only the test starts the service. This is why the
// role is unset.
struct Service : testing::Test {
  Service() : Service(endpoint) {}
  explicit Service(const std::string& storedEndpoint) : app(stored(storedEndpoint)) { answerCheckins(); }

  static StoredSettings stored(const std::string& storedEndpoint) {
    auto all = asEnrolledChild(storedEndpoint);
    all.erase(settings::deviceRole);
    return all;
  }

  void answerCheckins(const std::string& body = R"({"status":"ok"})") {
    app.machine.http.answerAlways("POST", "/device/checkin", 200, body);
  }
  void start() {
    app.background().start(app.environment().childAppState());
    app.settle();
  }
  std::size_t checkins() { return app.machine.http.count("POST", "/device/checkin"); }
  auto count(Operation operation) { return std::ranges::count(app.machine.tunnel.operations(), operation); }
  const std::string& warning() { return app.child().dohConfigWarning(); }
  // Advances to the next tunnel check and past its evaluation.
  void throughTunnelCheck() {
    app.advance(15s);
    app.advance(300ms);
  }

  TestApplication app;
};

struct ServiceWithoutEndpoint : Service {
  ServiceWithoutEndpoint() : Service("") {}
};

TEST_F(Service, does_nothing_before_it_is_started) {
  app.advance(10min);
  app.background().performCheckin();
  app.background().applyVPNDNSConfig();
  app.background().checkVPNStatus();
  app.advance(1min);
  EXPECT_EQ(checkins(), 0U);
  EXPECT_EQ(count(Operation::save), 0);
  EXPECT_EQ(warning(), "");
  EXPECT_FALSE(app.background().hasAttemptedDNSConfig());
}

TEST_F(Service, a_start_checks_in_configures_and_checks_the_tunnel_at_once) {
  start();
  EXPECT_EQ(checkins(), 1U);
  EXPECT_EQ(count(Operation::save), 1);
  EXPECT_TRUE(app.background().hasAttemptedDNSConfig());
  EXPECT_TRUE(app.machine.log.hasPrinted("[BackgroundService] Applying VPN DNS configuration for endpoint: " +
                                         endpoint));
}

TEST_F(Service, a_checkin_sends_only_the_devices_identity) {
  start();
  const auto sent = app.machine.http.requests("POST", "/device/checkin").front();
  EXPECT_EQ(sent.body, R"({"device_id":"device-1234567890","device_type":"ios"})");
  EXPECT_EQ(header(sent, "Authorization"), std::nullopt);
}

TEST_F(Service, checks_in_every_minute_after_the_start) {
  start();
  app.advance(59s);
  EXPECT_EQ(checkins(), 1U);
  app.advance(1s);
  EXPECT_EQ(checkins(), 2U);
  app.advance(10min);
  EXPECT_EQ(checkins(), 12U);
}

TEST_F(Service, checks_the_tunnel_every_15_seconds_and_evaluates_it_300_ms_later) {
  app.machine.tunnel.behaveLikePlatform();
  start();
  app.advance(10s);
  app.machine.tunnel.forgetCalls();
  app.advance(4999ms);
  EXPECT_EQ(count(Operation::load), 0);
  app.advance(1ms);
  EXPECT_EQ(count(Operation::load), 1);
  app.child().isDohConfigured = false;
  app.advance(299ms);
  EXPECT_FALSE(app.child().isDohConfigured());
  app.advance(1ms);
  EXPECT_TRUE(app.child().isDohConfigured());
}

TEST_F(Service, a_second_start_does_not_duplicate_the_timers) {
  start();
  start();
  start();
  app.machine.http.forgetRequests();
  app.advance(60s);
  EXPECT_EQ(checkins(), 1U);
}

TEST_F(Service, each_start_rewrites_the_configuration) {
  start();
  app.advance(1min);
  start();
  EXPECT_EQ(count(Operation::save), 2);
}

TEST_F(Service, a_start_without_an_attempt_keeps_the_one_shot_flag) {
  app.background().hasAttemptedDNSConfig = true;
  app.child().dohEndpoint = std::string();
  start();
  EXPECT_TRUE(app.background().hasAttemptedDNSConfig());
}

TEST_F(Service, has_no_timer_after_a_stop) {
  start();
  EXPECT_TRUE(app.background().isCheckinTimerRunning());
  EXPECT_TRUE(app.background().isVPNStatusTimerRunning());
  app.background().stop();
  EXPECT_FALSE(app.background().isCheckinTimerRunning());
  EXPECT_FALSE(app.background().isVPNStatusTimerRunning());
  app.machine.http.forgetRequests();
  app.machine.tunnel.forgetCalls();
  app.advance(10min);
  EXPECT_EQ(checkins(), 0U);
  EXPECT_EQ(count(Operation::load), 0);
}

TEST_F(Service, timers_do_nothing_once_the_device_is_no_longer_enrolled) {
  start();
  app.advance(2s);
  app.child().isEnrolled = false;
  app.machine.http.forgetRequests();
  app.machine.tunnel.forgetCalls();
  app.advance(10min);
  EXPECT_EQ(checkins(), 0U);
  EXPECT_TRUE(app.machine.tunnel.calls().empty());
}

TEST_F(Service, a_successful_checkin_sets_the_connection_and_the_time) {
  start();
  EXPECT_TRUE(app.child().isConnectedToServer());
  EXPECT_EQ(app.child().lastCheckinTime(), app.machine.dispatch.now());
}

TEST_F(Service, another_status_only_clears_the_connection) {
  start();
  const auto before = app.child().lastCheckinTime();
  for (const std::string status : {"OK", "error", "", "ok "}) {
    app.child().isConnectedToServer = true;
    answerCheckins(R"({"status":")" + status + R"(","doh_endpoint":"https://moved.example"})");
    app.background().performCheckin();
    app.settle();
    EXPECT_FALSE(app.child().isConnectedToServer()) << status;
    EXPECT_EQ(app.child().dohEndpoint(), endpoint);
    EXPECT_EQ(app.child().lastCheckinTime(), before);
  }
  EXPECT_EQ(count(Operation::save), 1);
}

TEST_F(Service, a_failed_checkin_clears_the_connection_and_is_retried_after_a_minute) {
  start();
  app.machine.http.failAlways("POST", "/device/checkin", TransportError::Kind::notConnectedToInternet);
  app.advance(60s);
  EXPECT_FALSE(app.child().isConnectedToServer());
  EXPECT_EQ(checkins(), 2U);
  app.advance(59s);
  EXPECT_EQ(checkins(), 2U) << "no retry of its own";
  answerCheckins();
  app.advance(1s);
  EXPECT_TRUE(app.child().isConnectedToServer());
}

TEST_F(Service, a_failed_checkin_does_not_change_the_protection) {
  app.machine.tunnel.behaveLikePlatform();
  start();
  app.machine.http.failAlways("POST", "/device/checkin", TransportError::Kind::timedOut);
  app.advance(61s);
  EXPECT_FALSE(app.child().isConnectedToServer());
  EXPECT_TRUE(app.child().isDohConfigured());
  EXPECT_EQ(warning(), "");
}

TEST_F(Service, a_checkin_without_a_root_counts_as_failed) {
  start();
  ASSERT_TRUE(app.child().isConnectedToServer());
  app.machine.settings.remove("com.quillmar.apiBaseURL");
  app.background().performCheckin();
  app.settle();
  EXPECT_FALSE(app.child().isConnectedToServer());
  EXPECT_EQ(checkins(), 1U);
}

TEST_F(Service, a_changed_endpoint_is_saved_and_then_configured_once) {
  start();
  answerCheckins(
      R"({"status":"ok","doh_endpoint":"https://dns.example/moved","doh_base_url":"https://base.example"})");
  app.advance(60s);
  EXPECT_EQ(app.machine.settings.string("child_dohEndpoint"), "https://dns.example/moved");
  EXPECT_EQ(app.child().dohBaseUrl(), "https://base.example");
  EXPECT_EQ(count(Operation::save), 2);
  EXPECT_EQ(app.machine.tunnel.saved()[0].protocolConfiguration->providerConfiguration.at("dohEndpoint"),
            "https://dns.example/moved");
  app.advance(60s);
  EXPECT_EQ(count(Operation::save), 2) << "the same endpoint again is no move";
}

TEST_F(Service, an_absent_empty_or_unchanged_endpoint_causes_no_attempt) {
  start();
  for (const std::string body : {R"({"status":"ok"})", R"({"status":"ok","doh_endpoint":null})",
                                 R"({"status":"ok","doh_endpoint":"https://dns.example/d1"})",
                                 R"({"status":"ok","doh_endpoint":""})"}) {
    answerCheckins(body);
    app.background().performCheckin();
    app.settle();
    EXPECT_EQ(count(Operation::save), 1) << body;
  }
  EXPECT_EQ(app.child().dohEndpoint(), "") << "an empty endpoint is still saved";
}

TEST_F(ServiceWithoutEndpoint, shows_that_it_waits_for_the_service) {
  start();
  EXPECT_TRUE(app.machine.log.hasPrinted("[BackgroundService] No DoH endpoint available to configure"));
  EXPECT_FALSE(app.background().hasAttemptedDNSConfig());
  EXPECT_EQ(warning(), "No DoH endpoint configured. Please wait for server sync.");
  EXPECT_FALSE(app.child().isDohConfigured());
  EXPECT_EQ(count(Operation::save), 0);
}

TEST_F(ServiceWithoutEndpoint, configures_itself_once_the_service_sends_an_endpoint) {
  start();
  answerCheckins(R"({"status":"ok","doh_endpoint":"https://dns.example/new"})");
  app.advance(60s);
  EXPECT_EQ(count(Operation::save), 1);
}

TEST_F(Service, a_connected_attempt_leaves_no_warning) {
  app.machine.tunnel.behaveLikePlatform();
  start();
  app.advance(2s);
  EXPECT_TRUE(app.child().isDohConfigured());
  EXPECT_EQ(warning(), "");
  EXPECT_TRUE(app.machine.log.hasPrinted("[BackgroundService] VPN DNS configuration applied successfully"));
}

TEST_F(Service, a_saved_but_unconnected_attempt_leaves_a_warning) {
  start();
  app.advance(2s);
  EXPECT_FALSE(app.child().isDohConfigured());
  EXPECT_EQ(warning(), "VPN configured, connecting...");
}

TEST_F(Service, a_failed_save_shows_its_error_until_the_next_check_and_is_not_retried) {
  app.machine.tunnel.fail(Operation::save, "permission denied");
  start();
  EXPECT_EQ(warning(), "Failed to save VPN configuration: permission denied");
  EXPECT_TRUE(
      app.machine.log.hasPrinted("[BackgroundService] VPN DNS configuration failed: Failed to save VPN "
                                 "configuration: permission denied"));
  app.advance(300ms);
  EXPECT_EQ(warning(), "DNS protection not enabled. Please tap the Enable button.");
  app.advance(10min);
  EXPECT_EQ(count(Operation::save), 1);
  EXPECT_EQ(warning(), "DNS protection not enabled. Please tap the Enable button.");
}

TEST_F(Service, an_invalid_endpoint_shows_its_full_error_until_the_next_check) {
  app.child().dohEndpoint = std::string("http://dns.example");
  start();
  EXPECT_EQ(warning(), "VPN setup failed. Invalid DNS endpoint: Invalid HTTPS URL");
  EXPECT_FALSE(app.child().isDohConfigured());
  app.advance(300ms);
  EXPECT_EQ(warning(), "DNS protection not enabled. Please tap the Enable button.");
}

TEST_F(Service, other_failures_show_the_full_error) {
  start();
  app.advance(2s);
  app.machine.tunnel.fail(Operation::reload, "gone");
  app.background().applyVPNDNSConfig();
  app.settle();
  EXPECT_EQ(warning(), "VPN setup failed. Failed to load VPN configuration: gone");
}

TEST_F(Service, a_disconnected_tunnel_is_reconnected_at_every_check_without_limit) {
  app.machine.tunnel.behaveLikePlatform();
  start();
  app.advance(10s);
  app.machine.tunnel.fail(Operation::start, "no network");
  app.machine.tunnel.setStatus(TunnelStatus::disconnected);
  app.settle();
  app.machine.tunnel.forgetCalls();
  app.advance(5s);
  for (int check = 1; check <= 40; ++check) {
    app.advance(300ms);
    EXPECT_EQ(warning(), "VPN disconnected. Reconnecting...");
    EXPECT_FALSE(app.child().isDohConfigured());
    EXPECT_EQ(count(Operation::start), check);
    app.advance(14700ms);
  }
  EXPECT_EQ(count(Operation::save), 0) << "a reconnection rewrites nothing";
}

TEST_F(Service, a_connecting_tunnel_is_waited_for) {
  start();
  app.advance(10s);
  app.machine.tunnel.setStatus(TunnelStatus::connecting);
  app.settle();
  const auto starts = count(Operation::start);
  app.advance(5300ms);
  EXPECT_EQ(warning(), "Connecting to VPN...");
  EXPECT_FALSE(app.child().isDohConfigured());
  EXPECT_EQ(count(Operation::start), starts);
}

TEST_F(Service, a_removed_configuration_is_recreated_only_without_an_earlier_attempt) {
  start();
  app.advance(10s);
  app.machine.tunnel.removeSaved(0);
  throughTunnelCheck();
  EXPECT_EQ(count(Operation::save), 1);
  EXPECT_EQ(warning(), "DNS protection not enabled. Please tap the Enable button.");

  app.background().hasAttemptedDNSConfig = false;
  const std::string before = warning();
  throughTunnelCheck();
  EXPECT_EQ(count(Operation::save), 2);
}

TEST_F(Service, a_slow_refresh_is_evaluated_with_the_earlier_values) {
  start();
  app.advance(10s);
  ASSERT_TRUE(app.vpn().isConfigured());
  app.machine.tunnel.change(0, [](SavedTunnel& saved) { saved.isEnabled = false; });
  app.machine.tunnel.setLatency(Duration(2s));
  app.advance(5300ms);
  EXPECT_EQ(warning(), "VPN disconnected. Reconnecting...");
  app.advance(15s);
  EXPECT_EQ(warning(), "DNS protection not enabled. Please tap the Enable button.");
}

TEST_F(Service, the_reconnecting_warning_is_replaced_by_the_result) {
  app.machine.tunnel.behaveLikePlatform();
  start();
  app.advance(10s);
  app.machine.tunnel.setStatus(TunnelStatus::disconnected);
  app.advance(5300ms);
  EXPECT_EQ(warning(), "VPN disconnected. Reconnecting...");
  throughTunnelCheck();
  EXPECT_EQ(warning(), "");
  EXPECT_TRUE(app.child().isDohConfigured());
}

TEST(BackgroundServiceLife, without_its_state_every_step_does_nothing) {
  TestApplication app(asParent());
  auto state = std::make_shared<ChildAppState>(app.machine.settings, app.machine.dispatch);
  state->saveEnrollment("d1", endpoint, std::nullopt, std::string(TestApplication::serviceRoot));
  app.background().start(state);
  app.advance(2s);
  state.reset();
  app.machine.http.forgetRequests();
  app.machine.tunnel.forgetCalls();
  app.advance(5min);
  EXPECT_TRUE(app.machine.http.requests().empty());
  EXPECT_TRUE(app.machine.tunnel.calls().empty());
}

TEST(BackgroundServiceLife, losing_its_state_during_a_tunnel_check_leaves_the_tunnel_alone) {
  TestApplication app(asParent());
  auto state = std::make_shared<ChildAppState>(app.machine.settings, app.machine.dispatch);
  state->saveEnrollment("d1", endpoint, std::nullopt, std::string(TestApplication::serviceRoot));
  app.background().start(state);
  app.advance(10s);
  app.machine.tunnel.setStatus(TunnelStatus::disconnected);
  app.advance(5s);
  ASSERT_TRUE(app.vpn().isConfigured());
  ASSERT_FALSE(app.vpn().isConnected());
  state.reset();
  app.machine.tunnel.forgetCalls();
  app.advance(1min);
  EXPECT_TRUE(app.machine.tunnel.calls().empty());
}

TEST(BackgroundServiceLife, an_answer_after_its_destruction_is_dropped) {
  TestApplication app(asEnrolledChild());
  app.machine.http.hold();
  app.settle();
  app.restart();
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_EQ(app.machine.http.count("POST", "/device/checkin"), 2U);
}

}  // namespace
}  // namespace quillmar
