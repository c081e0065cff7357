#include "child/child_settings_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "child/child_enrollment_view.h"
#include "child/child_home_view.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;
using Operation = SimulatedTunnel::Operation;
using Operations = std::vector<Operation>;

struct ChildSettings : testing::Test {
  ChildSettings() {
    app.advance(2s);
    app.screen<ChildHomeView>().openSettings();
    app.machine.http.forgetRequests();
    app.machine.tunnel.forgetCalls();
  }

  ChildSettingsView& screen() { return app.screen<ChildSettingsView>(); }

  TestApplication app{asEnrolledChild()};
};

TEST_F(ChildSettings, the_device_rows_identify_the_device) {
  EXPECT_EQ(screen().deviceId(), "device-1...");
  EXPECT_EQ(screen().status(), "Enrolled");
  EXPECT_EQ(screen().serverConnection(), "Disconnected");
  app.child().isConnectedToServer = true;
  EXPECT_EQ(screen().serverConnection(), "Connected");
}

TEST_F(ChildSettings, a_short_id_is_shown_whole_and_characters_are_grapheme_clusters) {
  app.child().deviceID = std::string("abc");
  EXPECT_EQ(screen().deviceId(), "abc...");
  app.child().deviceID = std::string();
  EXPECT_EQ(screen().deviceId(), "...");
  app.child().deviceID = std::string("👨‍👩‍👧1234567890");
  EXPECT_EQ(screen().deviceId(), "👨‍👩‍👧1234567...");
}

TEST_F(ChildSettings, the_protection_rows_mirror_the_tunnel) {
  app.vpn().statusMessage = std::string("DNS Protection Active");
  app.vpn().isConnected = true;
  app.vpn().isConfigured = true;
  EXPECT_EQ(screen().vpnStatus(), "DNS Protection Active");
  EXPECT_EQ(screen().vpnStatusIcon(), "checkmark.shield.fill");
  EXPECT_EQ(screen().vpnStatusColor(), "brandGreen");
  EXPECT_EQ(screen().configuration(), "Configured");
  app.vpn().isConnected = false;
  app.vpn().isConfigured = false;
  EXPECT_EQ(screen().vpnStatusIcon(), "shield.slash");
  EXPECT_EQ(screen().vpnStatusColor(), "brandOrange");
  EXPECT_EQ(screen().configuration(), "Not Set Up");
}

TEST_F(ChildSettings, each_button_is_enabled_only_while_shown) {
  struct Row {
    bool isConfigured, isConnected, canReconnect, canEnable;
  };
  for (const auto& row : std::vector<Row>{{true, false, true, false},
                                          {true, true, false, false},
                                          {false, false, false, true},
                                          {false, true, false, true}}) {
    app.vpn().isConfigured = row.isConfigured;
    app.vpn().isConnected = row.isConnected;
    EXPECT_EQ(screen().reconnectTunnel.isEnabled(), row.canReconnect);
    EXPECT_EQ(screen().enableProtection.isEnabled(), row.canEnable);
  }
}

TEST_F(ChildSettings, reconnecting_starts_the_tunnel_without_reconfiguring) {
  app.vpn().isConfigured = true;
  screen().reconnectTunnel();
  app.settle();
  EXPECT_EQ(app.machine.tunnel.operations(), Operations{Operation::start});
}

TEST_F(ChildSettings, enabling_reconfigures_even_after_an_earlier_attempt) {
  app.vpn().isConfigured = false;
  screen().enableProtection();
  EXPECT_TRUE(app.background().hasAttemptedDNSConfig());
  app.settle();
  EXPECT_EQ(std::ranges::count(app.machine.tunnel.operations(), Operation::save), 1);
}

TEST_F(ChildSettings, the_base_url_is_absent_while_it_is_empty) {
  EXPECT_EQ(screen().dohEndpoint(), "https://dns.example/d1");
  EXPECT_EQ(screen().dohBaseUrl(), std::nullopt);
  app.child().dohBaseUrl = std::string("https://dns.example");
  EXPECT_EQ(screen().dohBaseUrl(), "https://dns.example");
}

TEST_F(ChildSettings, copying_puts_the_endpoint_on_the_clipboard_without_a_message) {
  int changes = 0;
  const auto listening = screen().observe([&](const Member& /*any*/) { ++changes; });
  screen().copyDoHEndpoint();
  EXPECT_EQ(app.machine.clipboard.string(), "https://dns.example/d1");
  EXPECT_EQ(changes, 0);
}

TEST_F(ChildSettings, a_forced_sync_checks_in_and_checks_the_tunnel) {
  screen().forceSync();
  app.settle();
  EXPECT_EQ(app.machine.http.calls(), Names{"POST /device/checkin"});
  EXPECT_EQ(app.machine.tunnel.operations(), Operations{Operation::load});
}

TEST_F(ChildSettings, a_reset_asks_first_and_cancel_changes_nothing) {
  EXPECT_FALSE(screen().resetConfirmation.confirm.isEnabled());
  EXPECT_FALSE(screen().resetConfirmation.confirm());
  screen().resetEnrollment();
  EXPECT_TRUE(screen().resetConfirmation.isShown());
  EXPECT_TRUE(app.child().isEnrolled());
  screen().resetConfirmation.cancel();
  EXPECT_FALSE(screen().resetConfirmation.isShown());
  EXPECT_TRUE(app.child().isEnrolled());
  EXPECT_TRUE(app.background().isCheckinTimerRunning());
}

TEST_F(ChildSettings, a_reset_stops_clears_and_returns_without_telling_the_service) {
  screen().resetEnrollment();
  screen().resetConfirmation.confirm();
  EXPECT_FALSE(app.background().isCheckinTimerRunning());
  EXPECT_FALSE(app.background().isVPNStatusTimerRunning());
  app.settle();
  EXPECT_EQ(app.screenNames(), Names{"ChildEnrollmentView"});
  app.advance(1h);
  EXPECT_TRUE(app.machine.http.requests().empty());
  EXPECT_TRUE(app.machine.tunnel.calls().empty());
  EXPECT_EQ(app.machine.tunnel.saved().size(), 1U) << "the configuration stays";
}

TEST_F(ChildSettings, a_reset_stops_then_clears_then_dismisses) {
  Names steps;
  const auto forgotten = app.child().isEnrolled.onChange([&] {
    EXPECT_FALSE(app.background().isCheckinTimerRunning());
    steps.emplace_back("forgotten");
  });
  const auto home = app.find<ChildHomeView>();
  const auto gone = home->observe([&](const Member& member) {
    if (member.name() == "showSettings") {
      steps.emplace_back("gone");
    }
  });
  screen().resetEnrollment();
  screen().resetConfirmation.confirm();
  EXPECT_EQ(steps, (Names{"forgotten", "gone"}));
}

TEST_F(ChildSettings, enrolling_again_reuses_the_configuration) {
  screen().resetEnrollment();
  screen().resetConfirmation.confirm();
  app.settle();
  app.child().saveEnrollment("d2", "https://dns.example/d2", std::nullopt, std::nullopt);
  app.advance(2s);
  ASSERT_EQ(app.machine.tunnel.saved().size(), 1U);
  EXPECT_EQ(app.machine.tunnel.saved()[0].protocolConfiguration->providerConfiguration.at("dohEndpoint"),
            "https://dns.example/d2");
}

TEST_F(ChildSettings, the_texts_are_exact) {
  const auto& texts = screen();
  EXPECT_EQ(texts.title(), "Settings");
  EXPECT_EQ(texts.doneTitle(), "Done");
  EXPECT_EQ(texts.deviceSection(), "Device Information");
  EXPECT_EQ(texts.protectionSection(), "Internet Protection");
  EXPECT_EQ(texts.actionsSection(), "Actions");
  EXPECT_EQ(texts.confirmationTitle(), "Reset Enrollment?");
  EXPECT_EQ(texts.confirmationText(),
            "This will remove this device from parental monitoring. You will need to enroll again.");
  EXPECT_EQ(texts.confirmTitle(), "Reset");
  EXPECT_EQ(texts.forceSyncTitle(), "Force Sync");
  EXPECT_EQ(texts.copyTitle(), "Copy DoH Endpoint");
}

}  // namespace
}  // namespace quillmar
