#include "child/child_home_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "testing/test_application.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

struct ChildHome : testing::Test {
  ChildHome() { app.settle(); }

  ChildHomeView& screen() { return app.screen<ChildHomeView>(); }
  void show(bool isConnected, bool isConnecting, bool isConfigured) {
    app.vpn().isConnected = isConnected;
    app.vpn().isConnecting = isConnecting;
    app.vpn().isConfigured = isConfigured;
  }

  TestApplication app{asEnrolledChild()};
};

TEST_F(ChildHome, appearing_starts_the_service_and_the_animation) {
  EXPECT_TRUE(screen().isPulsing());
  EXPECT_TRUE(app.background().isCheckinTimerRunning());
  EXPECT_EQ(app.machine.http.count("POST", "/device/checkin"), 1U);
}

TEST_F(ChildHome, the_headline_shows_the_connection_to_the_service) {
  app.child().isConnectedToServer = true;
  EXPECT_EQ(screen().headline(), "Protection Active");
  EXPECT_EQ(screen().statusLine(), "Your internet activity is being monitored");
  EXPECT_EQ(screen().statusIcon(), "shield.fill");
  EXPECT_EQ(screen().statusColor(), "brandGreen");
  app.child().isConnectedToServer = false;
  EXPECT_EQ(screen().headline(), "Connecting...");
  EXPECT_EQ(screen().statusLine(), "Establishing connection to Quillmar server");
  EXPECT_EQ(screen().statusIcon(), "shield.slash");
  EXPECT_EQ(screen().statusColor(), "brandOrange");
}

TEST_F(ChildHome, the_cards_check_their_conditions_in_order) {
  struct Row {
    bool isConnected, isConnecting, isConfigured;
    std::string value;
  };
  for (const auto& row : std::vector<Row>{{true, true, true, "Active"},
                                          {true, false, false, "Active"},
                                          {false, true, true, "Connecting..."},
                                          {false, false, true, "Disconnected"},
                                          {false, false, false, "Needs Setup"}}) {
    show(row.isConnected, row.isConnecting, row.isConfigured);
    const auto card = screen().cards().at(1);
    EXPECT_EQ(card.title, "Internet Protection");
    EXPECT_EQ(card.value, row.value);
    EXPECT_EQ(card.icon, "lock.fill");
    EXPECT_EQ(card.isPositive, row.isConnected);
    EXPECT_EQ(card.stateIcon, row.isConnected ? "checkmark.circle.fill" : "exclamationmark.circle.fill");
  }
  app.child().isConnectedToServer = true;
  EXPECT_EQ(screen().cards().at(0),
            (ChildStatusCard{"Server Connection", "Connected", "wifi", true, "checkmark.circle.fill"}));
  app.child().isConnectedToServer = false;
  EXPECT_EQ(screen().cards().at(0), (ChildStatusCard{"Server Connection", "Disconnected", "wifi", false,
                                                     "exclamationmark.circle.fill"}));
}

TEST_F(ChildHome, the_panel_checks_its_conditions_in_order) {
  show(true, true, true);
  EXPECT_EQ(screen().panel().heading, "Internet Protection Active");
  EXPECT_EQ(screen().panel().text, "Your browsing is protected by Quillmar");
  EXPECT_EQ(screen().panel().button, std::nullopt);
  EXPECT_FALSE(screen().enableProtection.isEnabled());

  show(false, true, true);
  EXPECT_EQ(screen().panel().heading, "Connecting...");
  EXPECT_EQ(screen().panel().text, "Setting up DNS protection");
  EXPECT_EQ(screen().panel().button, std::nullopt);
  EXPECT_FALSE(screen().enableProtection.isEnabled());

  show(false, false, true);
  EXPECT_EQ(screen().panel().heading, "VPN Disconnected");
  EXPECT_EQ(screen().panel().text,
            "DNS protection is configured but not currently active. Tap below to reconnect.");
  EXPECT_EQ(screen().panel().button, "Reconnect VPN");
  EXPECT_EQ(screen().panel().footnote, std::nullopt);
  EXPECT_TRUE(screen().enableProtection.isEnabled());

  show(false, false, false);
  app.child().dohConfigWarning = std::string();
  EXPECT_EQ(screen().panel().heading, "Internet Protection Required");
  EXPECT_EQ(
      screen().panel().text,
      "Tap below to enable DNS protection. You'll see a VPN permission prompt - this is safe and only routes "
      "DNS queries through Quillmar.");
  EXPECT_EQ(screen().panel().button, "Enable Internet Protection");
  EXPECT_EQ(screen().panel().footnote, "This VPN only filters DNS - your internet speed won't be affected.");
}

TEST_F(ChildHome, the_warning_is_shown_in_the_last_panel_only) {
  app.child().dohConfigWarning = "Something to say";
  show(false, false, true);
  EXPECT_NE(screen().panel().text, "Something to say");
  show(false, false, false);
  EXPECT_EQ(screen().panel().text, "Something to say");
}

TEST_F(ChildHome, the_panels_button_rewrites_the_whole_configuration) {
  app.advance(2s);
  show(false, false, true);
  app.machine.tunnel.forgetCalls();
  EXPECT_TRUE(screen().enableProtection());
  app.settle();
  EXPECT_EQ(std::ranges::count(app.machine.tunnel.operations(), SimulatedTunnel::Operation::save), 1);
}

TEST_F(ChildHome, the_connection_and_the_tunnel_are_shown_independently) {
  app.child().isConnectedToServer = true;
  show(false, false, false);
  EXPECT_EQ(screen().headline(), "Protection Active");
  EXPECT_EQ(screen().panel().heading, "Internet Protection Required");
  app.child().isConnectedToServer = false;
  show(true, false, true);
  EXPECT_EQ(screen().headline(), "Connecting...");
  EXPECT_EQ(screen().cards().at(1).value, "Active");
}

TEST_F(ChildHome, the_check_in_line_and_its_button_require_a_check_in_time) {
  EXPECT_EQ(screen().lastCheckin(), std::nullopt);
  EXPECT_FALSE(screen().refresh.isEnabled());
  app.child().lastCheckinTime = app.machine.dispatch.now();
  EXPECT_EQ(screen().lastCheckin(), "Last check-in: Just now");
  EXPECT_TRUE(screen().refresh.isEnabled());
}

TEST_F(ChildHome, the_check_in_line_ages_without_further_check_ins) {
  app.machine.http.hold();
  app.child().lastCheckinTime = app.machine.dispatch.now();
  Names told;
  const auto listening = screen().observe([&](const Member& member) {
    if (member.name() == "lastCheckin") {
      told.push_back(*screen().lastCheckin());
    }
  });
  app.advance(1s);
  told.clear();
  app.advance(118s);
  EXPECT_EQ(told, Names{"Last check-in: 1 minute ago"});
  told.clear();
  app.advance(1s);
  EXPECT_EQ(told, Names{"Last check-in: 2 minutes ago"});

  told.clear();
  app.app().setScenePhase(ScenePhase::background);
  app.advance(10min);
  EXPECT_EQ(told, Names()) << "nobody looks";
  app.app().setScenePhase(ScenePhase::active);
  EXPECT_EQ(told, Names{"Last check-in: 12 minutes ago"});
}

TEST_F(ChildHome, refresh_only_checks_in) {
  app.child().lastCheckinTime = app.machine.dispatch.now();
  app.machine.http.forgetRequests();
  app.machine.tunnel.forgetCalls();
  screen().refresh();
  app.settle();
  EXPECT_EQ(app.machine.http.calls(), Names{"POST /device/checkin"});
  EXPECT_TRUE(app.machine.tunnel.calls().empty());
}

TEST_F(ChildHome, announces_every_change_of_the_observed_objects) {
  int redraws = 0;
  const auto listening = screen().observe([&](const Member& /*any*/) { ++redraws; });
  app.child().isConnectedToServer = true;
  app.vpn().isConnected = true;
  EXPECT_EQ(redraws, 2);
}

TEST_F(ChildHome, the_gear_opens_the_settings_and_done_closes_them) {
  screen().openSettings();
  EXPECT_EQ(app.screenNames(), (Names{"ChildHomeView", "ChildSettingsView"}));
  app.machine.http.forgetRequests();
  app.screen<ChildSettingsView>().done();
  EXPECT_EQ(app.screenNames(), Names{"ChildHomeView"});
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty()) << "coming back from a sheet is no appearance here";
}

TEST_F(ChildHome, the_instructions_work_but_no_control_opens_them) {
  for (const Member* member : screen().members()) {
    if (member->kind() == Member::Kind::action) {
      EXPECT_EQ(member->name().find("nstruction"), std::string_view::npos);
    }
  }
  EXPECT_FALSE(screen().showDoHInstructions());
  screen().showDoHInstructions = true;
  EXPECT_EQ(app.screenNames(), (Names{"ChildHomeView", "DoHInstructionsView"}));
}

TEST_F(ChildHome, the_texts_are_exact) {
  EXPECT_EQ(screen().title(), "Quillmar Child");
  EXPECT_EQ(screen().tagline(), "Your internet is being monitored for safety");
  EXPECT_EQ(screen().refreshTitle(), "Refresh");
  EXPECT_EQ(screen().headerImages(), (Names{"AppIcon", "icon-60@2x", "QuillmarLogo"}));
}

TEST(TimeInWords, uses_the_elapsed_whole_seconds) {
  const DateStyles styles("en_US", "UTC");
  const Date now = VirtualDispatch::defaultStart;
  const auto words = [&](Duration age) { return timeInWords(now - age, now, styles); };
  EXPECT_EQ(words(0s), "Just now");
  EXPECT_EQ(words(-1h), "Just now");
  EXPECT_EQ(words(59s), "Just now");
  EXPECT_EQ(words(59999ms), "Just now");
  EXPECT_EQ(words(60s), "1 minute ago");
  EXPECT_EQ(words(119s), "1 minute ago");
  EXPECT_EQ(words(119999ms), "1 minute ago");
  EXPECT_EQ(words(120s), "2 minutes ago");
  EXPECT_EQ(words(3599s), "59 minutes ago");
  EXPECT_EQ(words(3600s), styles.shortTime(now - 1h));
  EXPECT_NE(words(3600s).find("9:31"), std::string::npos);
}

}  // namespace
}  // namespace quillmar
