#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "app/role_selection_view.h"
#include "child/child_enrollment_view.h"
#include "child/child_home_view.h"
#include "child/child_settings_view.h"
#include "tests/journeys/real_service.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;
using Operation = SimulatedTunnel::Operation;

const std::string checkinTarget = "/api/v1/device/checkin";

// A child's device and the real service, from the first screens on.
struct ChildJourney : testing::Test {
  ChildJourney() { device.machine.tunnel.behaveLikePlatform(); }

  void becomeChild() {
    device.screen<RoleSelectionView>().cards.find("child")->action();
    device.settle();
  }
  std::string startEnrollment() {
    device.screen<ChildEnrollmentView>().startEnrollment();
    device.settle();
    return device.screen<ChildEnrollmentView>().enrollmentCode();
  }
  void enrol() {
    becomeChild();
    const std::string code = startEnrollment();
    ASSERT_TRUE(service->approve(code));
    device.advance(10s);
    ASSERT_TRUE(device.child().isEnrolled());
  }
  ChildHomeView& home() { return device.screen<ChildHomeView>(); }
  std::string configuredEndpoint() {
    return device.machine.tunnel.saved().at(0).protocolConfiguration->providerConfiguration.at("dohEndpoint");
  }
  auto saves() { return std::ranges::count(device.machine.tunnel.operations(), Operation::save); }

  RealService service;
  TestApplication device{{}, service.network()};
};

TEST_F(ChildJourney, from_the_first_tap_to_a_protected_screen) {
  EXPECT_EQ(device.screenNames(), Names{"RoleSelectionView"});
  becomeChild();
  EXPECT_TRUE(service->requests().empty()) << "nobody is asked before the first tap";

  const std::string code = startEnrollment();
  ASSERT_FALSE(code.empty());
  auto& screen = device.screen<ChildEnrollmentView>();
  EXPECT_NE(screen.qrCodeData().find(R"("enrollment_code":")" + code + '"'), std::string::npos);
  const std::string deviceId = screen.deviceId();

  device.advance(20s);
  EXPECT_EQ(service.count("GET", "/api/v1/enrollment/status/" + deviceId), 4);
  EXPECT_EQ(screen.stage(), EnrollmentStage::code);

  ASSERT_TRUE(service->approve(code));
  device.advance(5s);
  EXPECT_EQ(device.screenNames(), Names{"ChildHomeView"});
  EXPECT_EQ(device.child().deviceID(), deviceId);
  EXPECT_EQ(device.machine.settings.string("com.quillmar.apiBaseURL"), service->secureUrl());

  device.advance(2s);
  EXPECT_EQ(home().headline(), "Protection Active");
  EXPECT_EQ(home().panel().heading, "Internet Protection Active");
  EXPECT_EQ(configuredEndpoint(), device.child().dohEndpoint());
  EXPECT_EQ(home().lastCheckin(), "Last check-in: Just now");
  for (const auto& request : service->requests()) {
    for (const auto& [name, value] : request.headers) {
      EXPECT_NE(name, "authorization") << "a child's device has no account";
    }
  }
}

TEST_F(ChildJourney, an_hour_of_operation) {
  enrol();
  service->clearRequests();
  device.machine.tunnel.forgetCalls();

  device.advance(20min);
  EXPECT_EQ(service.count("POST", checkinTarget), 20);
  EXPECT_EQ(saves(), 0) << "nothing changed, nothing is written";
  EXPECT_TRUE(device.child().isDohConfigured());

  // The service changes the device's endpoint.
  ASSERT_TRUE(service->moveEndpoint(device.child().deviceID(), "https://moved.example/dns-query"));
  device.advance(1min);
  EXPECT_EQ(configuredEndpoint(), "https://moved.example/dns-query");
  EXPECT_EQ(device.machine.settings.string("child_dohEndpoint"), "https://moved.example/dns-query");
  EXPECT_EQ(saves(), 1);
  device.advance(5min);
  EXPECT_EQ(saves(), 1);

  // The tunnel disconnects, and reconnects by its next check.
  device.machine.tunnel.setStatus(TunnelStatus::disconnected);
  device.settle();
  EXPECT_EQ(home().cards().at(1).value, "Disconnected");
  device.advance(16s);
  EXPECT_EQ(home().cards().at(1).value, "Active");
  device.advance(44s);

  // The service fails for ten minutes; the protection continues.
  sandbox::Misbehaviour broken;
  broken.failEverything = true;
  service->misbehave(broken);
  service->clearRequests();
  device.advance(10min);
  EXPECT_EQ(service.count("POST", checkinTarget), 10) << "one try a minute, no more";
  EXPECT_EQ(home().headline(), "Connecting...");
  EXPECT_EQ(home().cards().at(1).value, "Active");
  EXPECT_EQ(device.child().dohEndpoint(), "https://moved.example/dns-query");

  service->misbehave({});
  device.advance(1min);
  EXPECT_EQ(home().headline(), "Protection Active");
  EXPECT_EQ(home().lastCheckin(), "Last check-in: Just now");
  device.advance(22min);
  EXPECT_TRUE(device.child().isDohConfigured());
  EXPECT_EQ(saves(), 1);
}

TEST_F(ChildJourney, a_restart_restores_the_state) {
  enrol();
  const std::string deviceId = device.child().deviceID();
  device.restart();
  EXPECT_EQ(device.screenNames(), Names{"ChildHomeView"});
  EXPECT_FALSE(device.child().isConnectedToServer()) << "until a check-in has succeeded";
  device.advance(2s);
  EXPECT_EQ(device.child().deviceID(), deviceId);
  EXPECT_EQ(home().headline(), "Protection Active");
  EXPECT_EQ(device.machine.tunnel.saved().size(), 1U);
}

TEST_F(ChildJourney, a_reset_device_is_enrolled_again_with_a_new_id) {
  enrol();
  const std::string formerId = device.child().deviceID();
  home().openSettings();
  device.screen<ChildSettingsView>().resetEnrollment();
  device.screen<ChildSettingsView>().resetConfirmation.confirm();
  device.settle();
  service->clearRequests();
  device.advance(10min);
  EXPECT_TRUE(service->requests().empty());

  ASSERT_TRUE(service->approve(startEnrollment()));
  device.advance(7s);
  EXPECT_NE(device.child().deviceID(), formerId);
  EXPECT_EQ(device.machine.tunnel.saved().size(), 1U) << "the configuration is reused";
  EXPECT_EQ(configuredEndpoint(), device.child().dohEndpoint());
}

TEST_F(ChildJourney, an_unapproved_code_times_out_and_a_new_one_can_be_requested) {
  becomeChild();
  const std::string code = startEnrollment();
  device.advance(10min);
  auto& screen = device.screen<ChildEnrollmentView>();
  EXPECT_TRUE(screen.errorAlert.isShown());
  EXPECT_EQ(screen.stage(), EnrollmentStage::start);
  screen.errorAlert.dismiss();
  EXPECT_NE(startEnrollment(), code);
}

TEST_F(ChildJourney, a_service_outage_while_waiting_shows_no_message) {
  becomeChild();
  const std::string code = startEnrollment();
  sandbox::Misbehaviour dropping;
  dropping.dropShare = 1;
  service->misbehave(dropping);
  device.advance(1min);
  EXPECT_FALSE(device.screen<ChildEnrollmentView>().errorAlert.isShown());
  service->misbehave({});
  ASSERT_TRUE(service->approve(code));
  device.advance(5s);
  EXPECT_EQ(device.screenNames(), Names{"ChildHomeView"});
}

TEST_F(ChildJourney, a_completion_without_an_endpoint_keeps_the_code) {
  becomeChild();
  const std::string code = startEnrollment();
  sandbox::Misbehaviour silent;
  silent.withoutEndpoint = true;
  service->misbehave(silent);
  ASSERT_TRUE(service->approve(code));
  device.advance(1min);
  auto& screen = device.screen<ChildEnrollmentView>();
  EXPECT_EQ(screen.enrollmentCode(), code);
  EXPECT_FALSE(screen.isPolling());
  EXPECT_FALSE(device.child().isEnrolled());
}

TEST_F(ChildJourney, two_devices_are_independent) {
  TestApplication other({}, service.network());
  other.machine.tunnel.behaveLikePlatform();
  enrol();
  EXPECT_EQ(other.screenNames(), Names{"RoleSelectionView"});
  other.screen<RoleSelectionView>().cards.find("child")->action();
  other.settle();
  other.screen<ChildEnrollmentView>().startEnrollment();
  other.settle();
  ASSERT_TRUE(service->approve(other.screen<ChildEnrollmentView>().enrollmentCode()));
  other.advance(7s);
  EXPECT_NE(other.child().deviceID(), device.child().deviceID());
  EXPECT_NE(other.child().dohEndpoint(), device.child().dohEndpoint());
}

}  // namespace
}  // namespace quillmar
