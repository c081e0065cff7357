#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "app/role_selection_view.h"
#include "child/child_enrollment_view.h"
#include "child/child_home_view.h"
#include "child/child_settings_view.h"
#include "platform/linux/networkmanager_tunnel.h"
#include "tests/journeys/real_service.h"
#include "tests/platform/networkmanager_world.h"
#include "tests/shared_world.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

const std::string bundleId(VPNDNSManager::tunnelBundleId);
const std::string description(VPNDNSManager::localizedDescription);

const auto& world = SharedWorld<NetworkManagerWorld>::forAllTests(
    [] { return std::make_unique<NetworkManagerWorld>(bundleId); });

// A child's device with the real service, and its tunnel in the real NetworkManager. Tests wait for D-Bus;
// the application's own time is virtual.
class RealTunnelJourney : public testing::Test {
 protected:
  RealTunnelJourney() { world().tidy(); }

  // Reaches NetworkManager over a relay, as an unprivileged user.
  static TestApplication::MakeTunnel tunnelOver(const std::string& busAddress) {
    return [busAddress](Dispatch& time) {
      NetworkManagerTunnel::Options options;
      options.busAddress = busAddress;
      options.timeout = 30s;
      options.startTimeout = 30s;
      return std::make_unique<NetworkManagerTunnel>(time, bundleId, options);
    };
  }

  void becomeChild() {
    device.screen<RoleSelectionView>().cards.find("child")->action();
    device.settle();
  }
  void enrol() {
    device.screen<ChildEnrollmentView>().startEnrollment();
    device.settle();
    ASSERT_TRUE(service->approve(device.screen<ChildEnrollmentView>().enrollmentCode()));
    device.advance(5s);
    ASSERT_TRUE(device.child().isEnrolled());
  }
  void protect() {
    becomeChild();
    enrol();
    ASSERT_TRUE(becomes([this] { return device.vpn().isConnected(); }));
    // Waits until a check has seen the tunnel connected.
    ASSERT_TRUE(passesInto([this] { return device.child().isDohConfigured(); }));
  }

  // Waits for D-Bus while the application's time stands still.
  bool becomes(const std::function<bool()>& predicate) {
    return device.machine.dispatch.settleUntil(predicate);
  }
  // Advances to the application's next checks until `predicate` holds. NetworkManager needs real time for
  // what they start, so more checks may pass than in normal use.
  bool passesInto(const std::function<bool()>& predicate) {
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    while (!predicate() && std::chrono::steady_clock::now() < deadline) {
      device.advance(1s);
      reachNetworkManager();
    }
    return predicate();
  }
  // Whether the connection is lost, even if only briefly.
  bool isSeenToFail(const std::function<void()>& breaking) {
    bool failed = false;
    const auto watching =
        device.vpn().isConnected.onChange([&] { failed = failed || !device.vpn().isConnected(); });
    breaking();
    return becomes([&] { return failed; });
  }
  // Returns after NetworkManager has answered all earlier requests.
  void reachNetworkManager() {
    bool answered = false;
    device.vpn().loadExistingConfig([&] { answered = true; });
    EXPECT_TRUE(becomes([&] { return answered; }));
  }

  ChildHomeView& home() { return device.screen<ChildHomeView>(); }
  std::string protection() { return home().cards().at(1).value; }

  // A property of the only connection, read with an independent tool.
  static std::string property(const std::string& name) {
    return world().nmcli({"-g", name, "connection", "show", description});
  }
  static std::string tunnels() {
    std::string found;
    std::istringstream lines(world().nmcli({"-g", "TYPE,NAME", "connection", "show"}));
    for (std::string line; std::getline(lines, line);) {
      found += line.starts_with("vpn:") ? line.substr(line.find(':') + 1) + "\n" : "";
    }
    return found;
  }
  static bool isUp() {
    return world().nmcli({"-g", "NAME", "connection", "show", "--active"}).find(description) !=
           std::string::npos;
  }
  // The settings last passed to the tunnel program.
  static std::map<std::string, std::string> carried() { return world().program().connections().back(); }
  // The settings that the tunnel program reads when NetworkManager reports a change.
  static std::map<std::string, std::string> saved() {
    const std::string text = property("vpn.data");
    const auto equals = text.find(" = ");
    std::string value = equals == std::string::npos ? "" : text.substr(equals + 3);
    std::erase(value, '\\');
    return {{text.substr(0, equals), value}};
  }
  static std::map<std::string, std::string> dataFor(const std::string& endpoint) {
    return {{"dohEndpoint", endpoint}};
  }

  RealService service;
  TestApplication device{{}, service.network(), tunnelOver(world().bus().address())};
};

TEST_F(RealTunnelJourney, from_the_first_tap_to_a_connection_visible_to_system_tools) {
  becomeChild();
  EXPECT_EQ(tunnels(), "") << "nothing is configured before a parent has approved";
  enrol();
  ASSERT_TRUE(becomes([this] { return device.vpn().isConnected(); }));

  EXPECT_EQ(tunnels(), description + "\n");
  EXPECT_TRUE(isUp());
  EXPECT_EQ(property("vpn.service-type"), bundleId);
  EXPECT_EQ(property("vpn.persistent"), "yes");
  EXPECT_EQ(carried(), dataFor(device.child().dohEndpoint()));

  EXPECT_TRUE(passesInto([this] { return device.child().isDohConfigured(); }));
  EXPECT_EQ(home().headline(), "Protection Active");
  EXPECT_EQ(home().panel().heading, "Internet Protection Active");
}

TEST_F(RealTunnelJourney, a_changed_endpoint_is_saved_while_the_tunnel_stays_up) {
  protect();
  const auto uuid = property("connection.uuid");
  const auto before = world().program().connections().size();
  ASSERT_TRUE(service->moveEndpoint(device.child().deviceID(), "https://moved.example/dns-query"));
  device.advance(1min);
  EXPECT_TRUE(passesInto([] { return saved() == dataFor("https://moved.example/dns-query"); }));
  EXPECT_EQ(world().program().connections().size(), before);
  EXPECT_EQ(property("connection.uuid"), uuid);
  EXPECT_TRUE(passesInto([this] { return protection() == "Active"; }));
}

TEST_F(RealTunnelJourney, ten_quiet_minutes_change_nothing) {
  protect();
  const auto before = property("all");
  const auto asked = world().program().connections().size();
  for (int minute = 0; minute < 10; ++minute) {
    device.advance(1min);
    reachNetworkManager();
  }
  EXPECT_EQ(property("all"), before);
  EXPECT_EQ(world().program().connections().size(), asked);
  EXPECT_EQ(protection(), "Active");
}

TEST_F(RealTunnelJourney, a_dropped_tunnel_is_shown_and_reconnected) {
  protect();
  EXPECT_TRUE(isSeenToFail([] { world().program().drop(); }));
  EXPECT_TRUE(passesInto([this] { return protection() == "Active"; }));
  EXPECT_TRUE(isUp());
}

TEST_F(RealTunnelJourney, a_tunnel_stopped_by_a_person_is_started_again) {
  protect();
  EXPECT_TRUE(isSeenToFail([] { world().nmcli({"connection", "down", description}); }));
  EXPECT_TRUE(passesInto([this] { return protection() == "Active"; }));
  EXPECT_TRUE(isUp());
}

TEST_F(RealTunnelJourney, a_restarted_application_keeps_its_running_tunnel) {
  protect();
  const auto uuid = property("connection.uuid");
  const auto asked = world().program().connections().size();
  device.restart();
  EXPECT_TRUE(passesInto([this] { return home().headline() == "Protection Active"; }));
  EXPECT_EQ(tunnels(), description + "\n");
  EXPECT_EQ(property("connection.uuid"), uuid);
  EXPECT_EQ(world().program().connections().size(), asked);
}

TEST_F(RealTunnelJourney, a_device_enrolled_again_reuses_its_connection) {
  protect();
  const auto uuid = property("connection.uuid");
  home().openSettings();
  device.screen<ChildSettingsView>().resetEnrollment();
  device.screen<ChildSettingsView>().resetConfirmation.confirm();
  device.settle();
  EXPECT_TRUE(isUp()) << "protected until there is another endpoint";

  enrol();
  EXPECT_TRUE(passesInto([this] { return saved() == dataFor(device.child().dohEndpoint()); }));
  EXPECT_EQ(tunnels(), description + "\n");
  EXPECT_EQ(property("connection.uuid"), uuid);
}

TEST_F(RealTunnelJourney, a_stopped_networkmanager_is_shown_and_the_protection_returns_with_it) {
  protect();
  EXPECT_TRUE(isSeenToFail([] { world().stop(); }));
  world().start();
  EXPECT_TRUE(passesInto([this] { return protection() == "Active"; }));
  EXPECT_TRUE(isUp());
  EXPECT_EQ(tunnels(), description + "\n");
}

// A user who needs an administrator's permission.
class GuestJourney : public RealTunnelJourney {
 protected:
  GuestJourney() { world().permissions().grant(false); }

  const BusRelay relay{world().file("user-bus"), world().bus().socket()};
  TestApplication guest{{}, service.network(), tunnelOver(relay.address())};
};

TEST_F(GuestJourney, a_denied_permission_is_shown_and_the_button_asks_again) {
  guest.screen<RoleSelectionView>().cards.find("child")->action();
  guest.settle();
  guest.screen<ChildEnrollmentView>().startEnrollment();
  guest.settle();
  ASSERT_TRUE(service->approve(guest.screen<ChildEnrollmentView>().enrollmentCode()));
  guest.advance(5s);
  ASSERT_TRUE(guest.machine.dispatch.settleUntil([this] { return !guest.vpn().errorMessage().empty(); }));
  EXPECT_EQ(guest.vpn().errorMessage(), "Insufficient privileges");
  EXPECT_FALSE(guest.vpn().isConfigured());
  EXPECT_EQ(tunnels(), "");
  EXPECT_EQ(guest.screen<ChildHomeView>().panel().heading, "Internet Protection Required");
  EXPECT_EQ(guest.screen<ChildHomeView>().panel().button, "Enable Internet Protection");

  world().permissions().grant(true);
  EXPECT_TRUE(guest.screen<ChildHomeView>().enableProtection());
  ASSERT_TRUE(guest.machine.dispatch.settleUntil([this] { return guest.vpn().isConnected(); }));
  EXPECT_EQ(guest.screen<ChildHomeView>().panel().heading, "Internet Protection Active");
  EXPECT_TRUE(isUp());
}

}  // namespace
}  // namespace quillmar
