#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "client/records/enrollment.h"
#include "foundation/json.h"
#include "tests/journeys/people.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;
using Names = std::vector<std::string>;
using Operation = SimulatedTunnel::Operation;

const std::string diagnosis = "\n\n[Debug: Token: Yes, Region: Yes]";

// A parent's and a child's whole application: two machines and one service.
struct ParentAndChildJourney : testing::Test {
  ParentAndChildJourney() {
    child.machine.deviceInfo.deviceName = "Mia's Phone";
    time.settle();
  }

  // Signs in a parent with the child Mia; the child's machine is new.
  void begin() {
    parent.chooseRole();
    parent.signUp("Ann Fielding", "ann@example.com");
    parent.addChild("Mia");
    child.chooseRole();
  }

  std::string childId() { return parent.card().child().id; }
  std::string codeOf(const std::string& picture) {
    const auto payload = decodeJson<QRCodeData>(picture);
    return payload.ok() ? payload.value().enrollmentCode : std::string();
  }

  // The requests since the last `clearRequests`, in order, as "GET /api/v1/…".
  Names calls() const {
    Names lines;
    for (const auto& request : service->requests()) {
      lines.push_back(request.method + ' ' + request.target);
    }
    return lines;
  }
  std::vector<sandbox::Request> completions() const {
    auto requests = service->requests();
    std::erase_if(requests,
                  [](const auto& request) { return request.target != "/api/v1/enrollment/complete"; });
    return requests;
  }
  std::ptrdiff_t polls(const std::string& deviceId) const {
    return service.count("GET", "/api/v1/enrollment/status/" + deviceId);
  }

  void expectEnrolled() {
    time.advance(5s);
    EXPECT_EQ(child.screenNames(), Names{"ChildHomeView"});
    time.advance(2s);
    EXPECT_EQ(child.home().headline(), "Protection Active");
    EXPECT_EQ(child.home().panel().heading, "Internet Protection Active");
  }

  // The sheets' order: done on the success page, then the dashboard.
  void expectSuccessAndFinish() {
    EXPECT_EQ(parent.scanner().stage(), ScannerStage::success);
    parent.press(parent.scanner().done);
    EXPECT_EQ(parent.screenNames(), Names{"DeviceListView"});
  }

  SharedTime time;
  RealService service{time.clock()};
  Parent parent{service, time};
  Child child{service, time};
};

TEST_F(ParentAndChildJourney, from_two_new_machines_to_a_device_that_is_online) {
  // The parent registers and adds a child.
  EXPECT_THAT(parent.machine.settings.all(), IsEmpty());
  parent.chooseRole();
  EXPECT_EQ(parent.setting("com.quillmar.deviceRole"), "parent");
  EXPECT_EQ(parent.setting("com.quillmar.region"), "australia");
  EXPECT_EQ(parent.screenNames(), Names{"LoginView"});
  EXPECT_THAT(calls(), IsEmpty());

  parent.signUp("Ann Fielding", "ann@example.com");
  EXPECT_EQ(parent.screenNames(), Names{"DeviceListView"});
  EXPECT_THAT(calls(), ElementsAre("POST /api/v1/auth/register", "GET /api/v1/children"));
  EXPECT_THAT(parent.setting("authToken"), Not(IsEmpty()));
  EXPECT_THAT(parent.setting("parentId"), Not(IsEmpty()));
  EXPECT_EQ(parent.setting("parentEmail"), "ann@example.com");
  EXPECT_EQ(parent.setting("parentName"), "Ann Fielding");
  EXPECT_EQ(parent.machine.settings.date("authTokenTimestamp"), parent.machine.dispatch.now());
  EXPECT_FALSE(parent.machine.settings.object("com.quillmar.apiBaseURL")) << "the region tells it";
  const auto parentsSettings = parent.machine.settings.all();
  EXPECT_EQ(parent.dashboard().content(), DashboardContent::empty);

  parent.addChild("Mia");
  EXPECT_EQ(parent.dashboard().content(), DashboardContent::list);
  EXPECT_EQ(parent.card().name(), "Mia");
  EXPECT_EQ(parent.card().deviceCount(), "0");
  ScannerView& scanner = parent.openScanner();
  EXPECT_EQ(parent.dashboard().showAddDevice->heading(), "Add Device for Mia");
  EXPECT_EQ(parent.screenNames(), (Names{"DeviceListView", "AddDeviceSheet", "ScannerView"}));
  EXPECT_TRUE(parent.machine.qrReader.isRunning());

  // 1: the child's device starts its enrollment.
  child.chooseRole();
  EXPECT_EQ(child.setting("com.quillmar.deviceRole"), "child");
  service->clearRequests();
  const std::string picture = child.startEnrollment();
  EXPECT_THAT(calls(), ElementsAre("POST /api/v1/enrollment/init"));
  const auto asked = parseJson(service->requests().at(0).body).value();
  EXPECT_EQ(*asked.find("device_name")->string(), "Mia's Phone");
  EXPECT_EQ(*asked.find("device_type")->string(), "ios");
  const std::string deviceId = child.enrollment().deviceId();
  EXPECT_NE(*asked.find("device_id")->string(), deviceId) << "the service's id counts";
  EXPECT_EQ(child.enrollment().enrollmentCode().size(), 8U);

  // 2: the QR code, and polls that change nothing on the machine.
  EXPECT_EQ(picture, writeJson(Value::Map{{"enrollment_code", child.enrollment().enrollmentCode()},
                                          {"device_id", deviceId},
                                          {"device_name", "Mia's Phone"},
                                          {"device_type", "ios"}}));
  time.advance(10s);
  EXPECT_EQ(polls(deviceId), 2);
  EXPECT_EQ(child.enrollment().stage(), EnrollmentStage::code);
  EXPECT_THAT(child.machine.settings.all(), testing::SizeIs(1)) << "the role and nothing else";
  EXPECT_THAT(child.machine.tunnel.calls(), IsEmpty());

  // 3: the parent scans, edits the name and completes.
  parent.scan(picture);
  EXPECT_FALSE(parent.machine.qrReader.isRunning());
  EXPECT_EQ(scanner.stage(), ScannerStage::review);
  EXPECT_EQ(scanner.deviceName(), "Mia's Phone");
  scanner.deviceName = std::string("Mia's first phone");
  parent.press(scanner.completeEnrollment);
  ASSERT_EQ(completions().size(), 1U);
  const auto completion = completions().at(0);
  EXPECT_EQ(completion.body, writeJson(Value::Map{{"enrollment_code", child.enrollment().enrollmentCode()},
                                                  {"device_name", "Mia's first phone"},
                                                  {"child_id", childId()}}));
  EXPECT_EQ(sandbox::header(completion.headers, "authorization"), "Bearer " + parent.setting("authToken"));
  EXPECT_FALSE(child.child().isEnrolled()) << "nobody has told the child's machine";
  expectSuccessAndFinish();
  EXPECT_EQ(parent.card().deviceCount(), "1");
  EXPECT_EQ(parent.card().deviceLines().at(0).name, "Mia's first phone");
  EXPECT_EQ(parent.card().onlineText(), "0 online");
  EXPECT_EQ(parent.machine.settings.all(), parentsSettings) << "nothing of children or devices stays here";

  // 4 and 5: the next poll succeeds, and the enrollment is stored.
  EXPECT_EQ(child.screenNames(), Names{"ChildEnrollmentView"});
  time.advance(5s);
  EXPECT_EQ(polls(deviceId), 3);
  EXPECT_EQ(child.screenNames(), Names{"ChildHomeView"});
  const std::string endpoint = child.child().dohEndpoint();
  EXPECT_THAT(endpoint, StartsWith(service->secureUrl() + "/dns-query/"));
  EXPECT_EQ(child.machine.settings.all(),
            (std::map<std::string, SettingValue>{{"com.quillmar.deviceRole", std::string("child")},
                                                 {"child_isEnrolled", true},
                                                 {"child_deviceID", deviceId},
                                                 {"child_dohEndpoint", endpoint},
                                                 {"child_dohBaseUrl", child.child().dohBaseUrl()},
                                                 {"com.quillmar.apiBaseURL", service->secureUrl()}}));

  // 6: the background work starts.
  service->clearRequests();
  time.advance(2s);
  EXPECT_EQ(service.count("POST", "/api/v1/device/checkin"), 1);
  EXPECT_EQ(polls(deviceId), 0) << "nothing more to wait for";
  EXPECT_TRUE(child.child().isConnectedToServer());

  // 7: the tunnel.
  ASSERT_EQ(child.machine.tunnel.saved().size(), 1U);
  const auto tunnel = child.machine.tunnel.saved().at(0);
  ASSERT_TRUE(tunnel.protocolConfiguration);
  EXPECT_EQ(tunnel.protocolConfiguration->providerBundleIdentifier, "live.quillmar.quillmar.PacketTunnel");
  EXPECT_EQ(tunnel.protocolConfiguration->providerConfiguration.at("dohEndpoint"), endpoint);
  EXPECT_TRUE(tunnel.isEnabled);
  EXPECT_EQ(child.machine.tunnel.status(0), TunnelStatus::connected);
  EXPECT_TRUE(child.child().isDohConfigured());
  EXPECT_EQ(child.home().panel().heading, "Internet Protection Active");

  // The dashboard's next refresh shows the device to the parent.
  time.advance(30s);
  EXPECT_EQ(parent.card().onlineText(), "1 online");
  EXPECT_TRUE(parent.card().deviceLines().at(0).isOnline);

  // 8: a check-in changes the endpoint, and a disconnected tunnel reconnects.
  ASSERT_TRUE(service->moveEndpoint(deviceId));
  time.advance(1min);
  EXPECT_NE(child.setting("child_dohEndpoint"), endpoint);
  EXPECT_EQ(child.machine.tunnel.saved().at(0).protocolConfiguration->providerConfiguration.at("dohEndpoint"),
            child.setting("child_dohEndpoint"));
  child.machine.tunnel.setStatus(TunnelStatus::disconnected);
  time.advance(20s);
  EXPECT_EQ(child.machine.tunnel.status(0), TunnelStatus::connected);
}

TEST_F(ParentAndChildJourney, both_restart_and_restore_their_state) {
  begin();
  parent.enrol(child);
  expectEnrolled();
  const std::string token = parent.setting("authToken");

  parent.restart();
  child.restart();
  time.settle();
  EXPECT_EQ(parent.screenNames(), Names{"DeviceListView"});
  EXPECT_EQ(parent.card().name(), "Mia");
  EXPECT_EQ(parent.card().deviceLines().at(0).name, "Mia's Phone");
  EXPECT_EQ(parent.setting("authToken"), token) << "a token this young is kept";
  time.advance(2s);
  EXPECT_EQ(child.home().headline(), "Protection Active");
}

TEST_F(ParentAndChildJourney, an_attempt_cancelled_by_the_child_has_no_effect) {
  begin();
  const std::string firstPicture = child.startEnrollment();
  const std::string firstDevice = child.enrollment().deviceId();
  time.advance(10s);
  EXPECT_TRUE(child.enrollment().cancelEnrollment());
  EXPECT_EQ(child.enrollment().stage(), EnrollmentStage::start);
  service->clearRequests();
  time.advance(1min);
  EXPECT_EQ(polls(firstDevice), 0);

  const std::string secondPicture = child.startEnrollment();
  EXPECT_NE(codeOf(secondPicture), codeOf(firstPicture));
  const std::string secondDevice = child.enrollment().deviceId();
  EXPECT_NE(secondDevice, firstDevice);
  parent.openScanner();
  parent.scan(secondPicture);
  parent.press(parent.scanner().completeEnrollment);
  expectSuccessAndFinish();
  expectEnrolled();
  EXPECT_EQ(child.setting("child_deviceID"), secondDevice);
  EXPECT_EQ(polls(firstDevice), 0);
  EXPECT_EQ(parent.card().deviceCount(), "1");
}

TEST_F(ParentAndChildJourney, an_attempt_cancelled_by_the_parent_enrols_nothing) {
  begin();
  const std::string picture = child.startEnrollment();
  parent.openScanner();
  parent.scan(picture);
  parent.press(parent.scanner().cancel);
  EXPECT_EQ(parent.screenNames(), (Names{"DeviceListView", "AddDeviceSheet"}));
  parent.press(parent.dashboard().showAddDevice->cancel);
  time.advance(1min);
  EXPECT_THAT(completions(), IsEmpty());
  EXPECT_EQ(parent.card().deviceCount(), "0");
  EXPECT_EQ(child.enrollment().stage(), EnrollmentStage::code);

  // The code is still valid and can be scanned again.
  parent.openScanner();
  EXPECT_EQ(parent.scanner().stage(), ScannerStage::scanning);
  parent.scan(picture);
  parent.press(parent.scanner().completeEnrollment);
  expectSuccessAndFinish();
  expectEnrolled();
}

TEST_F(ParentAndChildJourney, a_code_that_expires_before_completion_is_refused_and_a_new_one_works) {
  begin();
  parent.openScanner();
  parent.scan(child.startEnrollment());
  time.advance(10min);
  EXPECT_TRUE(child.enrollment().errorAlert.isShown());
  EXPECT_EQ(child.enrollment().errorAlert.message(), "Enrollment expired. Please try again.");
  EXPECT_TRUE(child.enrollment().errorAlert.dismiss());

  ScannerView& scanner = parent.scanner();
  EXPECT_EQ(scanner.stage(), ScannerStage::review) << "silent refreshes beneath leave it alone";
  parent.press(scanner.completeEnrollment);
  EXPECT_TRUE(scanner.errorAlert.isShown());
  EXPECT_EQ(scanner.errorAlert.message(),
            "This enrollment code has expired. Start again on the child's device." + diagnosis);
  parent.press(scanner.errorAlert.dismiss);
  scanner.deviceName = std::string("Mia's first phone");
  parent.press(scanner.scanAgain);
  EXPECT_TRUE(parent.machine.qrReader.isRunning());

  parent.scan(child.startEnrollment());
  EXPECT_EQ(scanner.deviceName(), "Mia's Phone") << "the new code's own name";
  parent.press(scanner.completeEnrollment);
  expectSuccessAndFinish();
  expectEnrolled();
  EXPECT_EQ(parent.card().deviceCount(), "1");
}

TEST_F(ParentAndChildJourney, a_token_that_expires_before_the_completion_is_refreshed_for_one_retry) {
  begin();
  parent.openScanner();
  parent.scan(child.startEnrollment());
  const std::string oldToken = parent.setting("authToken");
  service->expireTokens();
  service->clearRequests();
  parent.press(parent.scanner().completeEnrollment);
  EXPECT_THAT(calls(), ElementsAre("POST /api/v1/enrollment/complete", "POST /api/v1/auth/refresh",
                                   "POST /api/v1/enrollment/complete"));
  const std::string newToken = parent.setting("authToken");
  EXPECT_NE(newToken, oldToken);
  const auto tries = completions();
  EXPECT_EQ(sandbox::header(tries.at(0).headers, "authorization"), "Bearer " + oldToken);
  EXPECT_EQ(sandbox::header(tries.at(1).headers, "authorization"), "Bearer " + newToken);
  EXPECT_EQ(tries.at(0).body, tries.at(1).body);
  EXPECT_FALSE(parent.scanner().errorAlert.isShown());
  expectSuccessAndFinish();
  expectEnrolled();
}

TEST_F(ParentAndChildJourney, a_token_that_cannot_be_refreshed_shows_an_error_and_keeps_the_session) {
  begin();
  parent.openScanner();
  parent.scan(child.startEnrollment());
  service->expireTokens();
  sandbox::Misbehaviour strict;
  strict.refuseRefresh = true;
  service->misbehave(strict);
  service->clearRequests();
  ScannerView& scanner = parent.scanner();
  parent.press(scanner.completeEnrollment);
  EXPECT_THAT(calls(), ElementsAre("POST /api/v1/enrollment/complete", "POST /api/v1/auth/refresh"));
  EXPECT_EQ(scanner.errorAlert.message(), "Please log in again" + diagnosis);
  EXPECT_TRUE(scanner.errorAlert.isShown());
  EXPECT_THAT(parent.setting("authToken"), Not(IsEmpty()));
  EXPECT_EQ(parent.screenNames(), (Names{"DeviceListView", "AddDeviceSheet", "ScannerView"}));

  service->misbehave({});
  parent.press(scanner.errorAlert.dismiss);
  parent.press(scanner.completeEnrollment);
  expectSuccessAndFinish();
  expectEnrolled();
}

TEST_F(ParentAndChildJourney, both_wait_for_a_service_that_is_down_for_a_minute) {
  begin();
  parent.openScanner();
  parent.scan(child.startEnrollment());
  const std::string deviceId = child.enrollment().deviceId();
  sandbox::Misbehaviour down;
  down.failEverything = true;
  down.errorStatus = 503;
  service->misbehave(down);
  service->clearRequests();
  ScannerView& scanner = parent.scanner();
  parent.press(scanner.completeEnrollment);
  EXPECT_EQ(scanner.errorAlert.message(),
            "Something went wrong on our side. Please try again later." + diagnosis);
  parent.press(scanner.errorAlert.dismiss);
  EXPECT_EQ(scanner.stage(), ScannerStage::review);

  time.advance(1min);
  EXPECT_EQ(polls(deviceId), 12) << "each failed poll is followed by the next";
  EXPECT_FALSE(child.enrollment().errorAlert.isShown());
  EXPECT_EQ(child.enrollment().stage(), EnrollmentStage::code);
  EXPECT_EQ(service.count("GET", "/api/v1/children"), 2) << "the dashboard beneath tries on";
  EXPECT_EQ(parent.card().name(), "Mia") << "and keeps what it has";
  EXPECT_FALSE(parent.dashboard().errorAlert.isShown());

  service->misbehave({});
  parent.press(scanner.completeEnrollment);
  expectSuccessAndFinish();
  expectEnrolled();
  EXPECT_EQ(parent.card().deviceCount(), "1");
}

TEST_F(ParentAndChildJourney, a_lost_answer_to_the_parent_still_enrols_the_child) {
  begin();
  parent.openScanner();
  parent.scan(child.startEnrollment());
  sandbox::Misbehaviour losing;
  losing.onlyPath = "/enrollment/complete";
  losing.dropShare = 1;
  service->misbehave(losing);
  ScannerView& scanner = parent.scanner();
  parent.press(scanner.completeEnrollment);
  EXPECT_TRUE(scanner.errorAlert.isShown());
  EXPECT_EQ(scanner.errorAlert.message(), "The network connection was lost." + diagnosis);
  expectEnrolled();

  service->misbehave({});
  parent.press(scanner.errorAlert.dismiss);
  parent.press(scanner.completeEnrollment);
  EXPECT_EQ(scanner.errorAlert.message(),
            "This enrollment code was used already. Start again on the child's device." + diagnosis);
  parent.press(scanner.errorAlert.dismiss);
  parent.press(scanner.cancel);
  parent.press(parent.dashboard().showAddDevice->cancel);
  EXPECT_EQ(parent.card().deviceCount(), "1");
  EXPECT_EQ(parent.card().onlineText(), "1 online");
}

TEST_F(ParentAndChildJourney, an_unrelated_picture_sends_nothing) {
  begin();
  parent.openScanner();
  service->clearRequests();
  ScannerView& scanner = parent.scanner();
  parent.scan("https://example.com/join?code=ABC123");
  EXPECT_EQ(scanner.errorAlert.message(), "Invalid QR code format");
  parent.press(scanner.errorAlert.dismiss);
  parent.press(scanner.completeEnrollment);
  EXPECT_EQ(scanner.errorAlert.message(), "Invalid QR code data");
  EXPECT_THAT(calls(), IsEmpty());
  parent.press(scanner.errorAlert.dismiss);
  parent.press(scanner.scanAgain);
  parent.scan(child.startEnrollment());
  parent.press(scanner.completeEnrollment);
  expectSuccessAndFinish();
  expectEnrolled();
}

TEST_F(ParentAndChildJourney, a_console_is_registered_manually_without_a_child_application) {
  begin();
  parent.press(parent.card().addDevice);
  parent.press(parent.dashboard().showAddDevice->addConsole);
  auto& form = parent.screen<ManualEnrollmentView>();
  form.deviceName = std::string("Mia's PlayStation");
  parent.press(form.addDevice);
  EXPECT_TRUE(form.showInstructions()) << form.errorAlert.message();
  EXPECT_FALSE(form.dnsServerIP().empty());
  EXPECT_FALSE(form.steps().empty());
  parent.press(form.copyIPAddress);
  EXPECT_EQ(parent.machine.clipboard.string(), form.dnsServerIP());
  parent.press(form.done);
  EXPECT_EQ(parent.screenNames(), Names{"DeviceListView"});
  EXPECT_EQ(parent.card().deviceCount(), "1");
  EXPECT_EQ(parent.card().deviceLines().at(0).name, "Mia's PlayStation");
  EXPECT_EQ(parent.card().onlineText(), "0 online");
}

}  // namespace
}  // namespace quillmar
