#include "child/child_enrollment_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "testing/test_application.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

const std::string statusPath = "/enrollment/status/device-1";
const std::string pending = R"({"status":"pending","device_id":"device-1"})";
const std::string expired = R"({"status":"expired","device_id":"device-1"})";
const std::string completed =
    R"({"status":"completed","device_id":"other","doh_endpoint":"https://dns.example/device-1",)"
    R"("doh_base_url":"https://dns.example","api_base_url":"https://nz.example"})";
const std::string completedWithoutEndpoint = R"({"status":"completed","device_id":"device-1"})";

std::string initAnswer(const std::string& code = "ABC123") {
  return R"({"enrollment_code":")" + code +
         R"(","device_id":"device-1","expires_at":"2016-10-08T22:41:00.000Z"})";
}

struct ChildEnrollment : testing::Test {
  ChildEnrollment() {
    app.machine.http.answerAlways("POST", "/enrollment/init", 200, initAnswer());
    app.machine.http.answerAlways("GET", statusPath, 200, pending);
  }

  ChildEnrollmentView& screen() { return app.screen<ChildEnrollmentView>(); }
  void start() {
    screen().startEnrollment();
    app.settle();
  }
  std::size_t polls() { return app.machine.http.count("GET", statusPath); }
  std::size_t initialisations() { return app.machine.http.count("POST", "/enrollment/init"); }

  TestApplication app{asNewChild()};
};

TEST_F(ChildEnrollment, begins_at_the_start_and_sends_nothing) {
  EXPECT_EQ(screen().stage(), EnrollmentStage::start);
  EXPECT_EQ(screen().enrollmentCode(), "");
  EXPECT_EQ(screen().deviceId(), "");
  EXPECT_EQ(screen().errorAlert.message(), "");
  EXPECT_EQ(screen().qrCodeData(), "");
  EXPECT_FALSE(screen().isLoading());
  EXPECT_FALSE(screen().isPolling());
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_FALSE(screen().cancelEnrollment.isEnabled());
  app.advance(1h);
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(ChildEnrollment, sends_a_new_uuid_with_the_devices_name_and_type) {
  app.machine.deviceInfo.deviceName = "Mia’s “Tablet”";
  start();
  const auto request = app.machine.http.requests("POST", "/enrollment/init").front();
  EXPECT_THAT(
      *request.body,
      testing::MatchesRegex(
          R"re(\{"device_id":"[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}",)re"
          R"re("device_name":"Mia’s “Tablet”","device_type":"ios"\})re"));
  EXPECT_EQ(header(request, "Authorization"), std::nullopt);
  EXPECT_EQ(request.timeout, 60s);
}

TEST_F(ChildEnrollment, uses_the_default_root_without_a_region_and_otherwise_the_stored_one) {
  start();
  EXPECT_EQ(app.machine.http.requests().front().url, "https://au.example/api/v1/enrollment/init");
  screen().cancelEnrollment();
  app.machine.settings.set("com.quillmar.apiBaseURL", std::string("https://nz.example"));
  start();
  EXPECT_EQ(app.machine.http.requests("POST", "/enrollment/init").back().url,
            "https://nz.example/api/v1/enrollment/init");
}

TEST_F(ChildEnrollment, is_loading_until_the_answer_arrives) {
  app.machine.http.hold();
  start();
  EXPECT_EQ(screen().stage(), EnrollmentStage::loading);
  EXPECT_FALSE(screen().startEnrollment.isEnabled());
  EXPECT_FALSE(screen().startEnrollment());
  app.settle();
  EXPECT_EQ(initialisations(), 1U);
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_EQ(screen().stage(), EnrollmentStage::code);
}

TEST_F(ChildEnrollment, shows_the_code_and_a_qr_code_of_it) {
  app.machine.deviceInfo.deviceName = "Tablet";
  start();
  EXPECT_EQ(screen().enrollmentCode(), "ABC123");
  EXPECT_EQ(screen().deviceId(), "device-1");
  EXPECT_EQ(
      screen().qrCodeData(),
      R"({"enrollment_code":"ABC123","device_id":"device-1","device_name":"Tablet","device_type":"ios"})");
  EXPECT_EQ(screen().qrCode(), (QRCodeView{screen().qrCodeData(), 200}));
  EXPECT_TRUE(screen().qrCode().modules(app.machine.qrEncoder).has_value());
  EXPECT_TRUE(screen().isPolling());
}

TEST_F(ChildEnrollment, a_refused_start_returns_to_the_start_with_an_alert) {
  struct Row {
    int status;
    std::string body;
    std::string message;
  };
  for (const auto& row : std::vector<Row>{
           {500, R"({"error":"Try later"})", "Try later"},
           {401, R"({"error":"Not you"})", "Not you"},
           {503, "<html>", "Unknown error"},
           {201, initAnswer(), "Unknown error"},
           {200, R"({"enrollment_code":"A"})", "The data couldn’t be read because it is missing."},
           {200, "", "The data couldn’t be read because it isn’t in the correct format."},
       }) {
    app.machine.http.answerAlways("POST", "/enrollment/init", row.status, row.body);
    start();
    EXPECT_EQ(screen().errorAlert.message(), row.message);
    EXPECT_TRUE(screen().errorAlert.isShown());
    EXPECT_EQ(screen().stage(), EnrollmentStage::start);
    EXPECT_FALSE(screen().isPolling());
    screen().errorAlert.dismiss();
    EXPECT_FALSE(screen().errorAlert.isShown());
  }
  app.advance(1min);
  EXPECT_EQ(polls(), 0U);
}

TEST_F(ChildEnrollment, without_a_network_the_transports_error_is_shown) {
  app.machine.http.failAlways("POST", "/enrollment/init", TransportError::Kind::notConnectedToInternet);
  start();
  EXPECT_EQ(screen().errorAlert.message(), "The Internet connection appears to be offline.");
}

TEST_F(ChildEnrollment, an_invalid_root_url_sends_nothing) {
  app.machine.settings.set("com.quillmar.apiBaseURL", std::string("https://bad root"));
  start();
  EXPECT_EQ(screen().errorAlert.message(), "Invalid response from server");
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(ChildEnrollment, a_device_name_that_cannot_be_encoded_sends_nothing) {
  app.machine.deviceInfo.deviceName = "\xff\xfe";
  start();
  EXPECT_EQ(screen().errorAlert.message(), "Failed to encode request");
  EXPECT_EQ(screen().stage(), EnrollmentStage::start);
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(ChildEnrollment, a_new_attempt_clears_the_last_error) {
  app.machine.http.fail("POST", "/enrollment/init", TransportError::Kind::timedOut);
  start();
  screen().errorAlert.dismiss();
  screen().startEnrollment();
  EXPECT_EQ(screen().errorAlert.message(), "");
}

TEST_F(ChildEnrollment, every_attempt_has_its_own_id) {
  start();
  screen().cancelEnrollment();
  start();
  const auto requests = app.machine.http.requests("POST", "/enrollment/init");
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_NE(requests[0].body, requests[1].body);
}

TEST_F(ChildEnrollment, waits_five_seconds_before_each_poll) {
  start();
  app.advance(4999ms);
  EXPECT_EQ(polls(), 0U);
  app.advance(1ms);
  EXPECT_EQ(polls(), 1U);
  app.advance(4999ms);
  EXPECT_EQ(polls(), 1U);
  app.advance(1ms);
  EXPECT_EQ(polls(), 2U);
  EXPECT_EQ(header(app.machine.http.requests("GET", statusPath).front(), "Authorization"), std::nullopt);
}

TEST_F(ChildEnrollment, the_time_of_an_answer_is_added_to_the_wait) {
  app.machine.http.hold("GET", statusPath);
  start();
  app.advance(5s);
  ASSERT_EQ(polls(), 1U);
  app.advance(30s);
  EXPECT_EQ(polls(), 1U) << "the round is not over";
  app.machine.http.release();
  app.settle();
  app.advance(4999ms);
  EXPECT_EQ(polls(), 1U);
  app.advance(1ms);
  EXPECT_EQ(polls(), 2U);
}

TEST_F(ChildEnrollment, failed_polls_and_unknown_statuses_are_ignored) {
  start();
  app.machine.http.fail("GET", statusPath, TransportError::Kind::networkConnectionLost);
  app.machine.http.answer("GET", statusPath, 500, R"({"error":"broken"})");
  app.machine.http.answer("GET", statusPath, 404, "");
  app.machine.http.answer("GET", statusPath, 201, completed);
  app.machine.http.answer("GET", statusPath, 200, "{");
  app.machine.http.answer("GET", statusPath, 200, R"({"status":"Completed","device_id":"device-1"})");
  app.machine.http.answer("GET", statusPath, 200, R"({"status":"","device_id":"device-1"})");
  app.advance(36s);
  EXPECT_EQ(polls(), 7U);
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_TRUE(screen().isPolling());
  EXPECT_EQ(screen().stage(), EnrollmentStage::code);
}

TEST_F(ChildEnrollment, times_out_once_after_120_polls) {
  start();
  int alerts = 0;
  const auto listening = screen().errorAlert.isShown.onChange([&] { ++alerts; });
  app.advance(595s);
  EXPECT_EQ(polls(), 119U);
  EXPECT_FALSE(screen().errorAlert.isShown());
  app.advance(5s);
  EXPECT_EQ(polls(), 120U);
  EXPECT_EQ(screen().errorAlert.message(), "Enrollment timed out. Please try again.");
  EXPECT_EQ(screen().enrollmentCode(), "");
  EXPECT_EQ(screen().qrCodeData(), "");
  EXPECT_FALSE(screen().isPolling());
  EXPECT_EQ(screen().deviceId(), "device-1") << "the id is left";
  app.advance(1h);
  EXPECT_EQ(polls(), 120U);
  EXPECT_EQ(alerts, 1);
}

TEST_F(ChildEnrollment, a_start_after_the_time_out_gets_a_new_code) {
  start();
  app.advance(600s);
  screen().errorAlert.dismiss();
  app.machine.http.answerAlways("POST", "/enrollment/init", 200, initAnswer("NEW999"));
  start();
  EXPECT_EQ(screen().enrollmentCode(), "NEW999");
  app.advance(5s);
  EXPECT_EQ(polls(), 121U);
}

TEST_F(ChildEnrollment, an_expired_code_returns_to_the_start_with_an_alert) {
  start();
  app.machine.http.answer("GET", statusPath, 200, expired);
  app.advance(5s);
  EXPECT_EQ(screen().errorAlert.message(), "Enrollment expired. Please try again.");
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_EQ(screen().stage(), EnrollmentStage::start);
  EXPECT_EQ(screen().qrCodeData(), "");
  EXPECT_FALSE(screen().isPolling());
  app.advance(1h);
  EXPECT_EQ(polls(), 1U);
  EXPECT_EQ(screen().errorAlert.message(), "Enrollment expired. Please try again.");
}

TEST_F(ChildEnrollment, a_completed_enrollment_is_saved_with_the_first_answers_id_and_shows_the_home_screen) {
  start();
  app.machine.http.answer("GET", statusPath, 200, completed);
  app.advance(5s);
  EXPECT_EQ(app.screenNames(), Names{"ChildHomeView"});
  EXPECT_EQ(app.child().deviceID(), "device-1");
  EXPECT_EQ(app.child().dohEndpoint(), "https://dns.example/device-1");
  EXPECT_EQ(app.child().dohBaseUrl(), "https://dns.example");
  EXPECT_EQ(app.machine.settings.string("com.quillmar.apiBaseURL"), "https://nz.example");
  app.advance(1h);
  EXPECT_EQ(polls(), 1U);
}

TEST_F(ChildEnrollment, the_protection_starts_with_the_home_screen_and_again_a_second_later) {
  start();
  app.machine.http.answer("GET", statusPath, 200, completed);
  app.machine.http.answerAlways("POST", "/device/checkin", 200, R"({"status":"ok"})");
  app.advance(5s);
  EXPECT_EQ(app.machine.http.count("POST", "/device/checkin"), 1U);
  app.advance(999ms);
  EXPECT_EQ(app.machine.http.count("POST", "/device/checkin"), 1U);
  app.advance(1ms);
  EXPECT_EQ(app.machine.http.count("POST", "/device/checkin"), 2U);
  EXPECT_EQ(app.machine.http.requests("POST", "/device/checkin").front().url,
            "https://nz.example/api/v1/device/checkin");
}

// The enrollment completes before the prompt to add the tunnel is answered.
struct ChildEnrollmentPrompt : ChildEnrollment {
  ChildEnrollmentPrompt() {
    app.machine.tunnel.behaveLikePlatform(
        [this](std::function<void(bool)> answer) { prompts.push_back(std::move(answer)); });
    app.machine.http.answerAlways("POST", "/device/checkin", 200, R"({"status":"ok"})");
    start();
    app.machine.http.answer("GET", statusPath, 200, completed);
    app.advance(5s);
    app.advance(2s);
  }

  std::vector<std::function<void(bool)>> prompts;
};

TEST_F(ChildEnrollmentPrompt, both_starts_of_the_protection_share_one_prompt_and_add_one_tunnel) {
  app.advance(5min);
  EXPECT_EQ(prompts.size(), 1U);
  EXPECT_EQ(app.vpn().statusMessage(), "Not configured");
  EXPECT_EQ(app.child().dohConfigWarning(), "DNS protection not enabled. Please tap the Enable button.");
  prompts.front()(true);
  app.advance(2s);
  EXPECT_EQ(prompts.size(), 1U);
  EXPECT_EQ(app.machine.tunnel.saved().size(), 1U);
  EXPECT_TRUE(app.vpn().isConnected());
  EXPECT_TRUE(app.child().isDohConfigured());
}

TEST_F(ChildEnrollmentPrompt, a_refused_prompt_ends_both_starts_and_the_next_attempt_asks_again) {
  prompts.front()(false);
  app.settle();
  EXPECT_EQ(prompts.size(), 1U);
  EXPECT_EQ(app.child().dohConfigWarning(), "Failed to save VPN configuration: permission denied");
  app.background().applyVPNDNSConfig();
  app.settle();
  ASSERT_EQ(prompts.size(), 2U);
  prompts.back()(true);
  app.advance(2s);
  EXPECT_EQ(app.machine.tunnel.saved().size(), 1U);
  EXPECT_TRUE(app.child().isDohConfigured());
}

TEST_F(ChildEnrollment, a_completion_without_an_endpoint_saves_nothing_and_keeps_the_code) {
  start();
  app.machine.http.answer("GET", statusPath, 200, completedWithoutEndpoint);
  app.advance(5s);
  EXPECT_FALSE(app.child().isEnrolled());
  EXPECT_EQ(screen().stage(), EnrollmentStage::code);
  EXPECT_EQ(screen().enrollmentCode(), "ABC123");
  EXPECT_FALSE(screen().isPolling());
  EXPECT_FALSE(static_cast<bool>(screen().loadingDots));
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_FALSE(screen().startEnrollment.isEnabled());
  app.advance(1h);
  EXPECT_EQ(polls(), 1U);
  EXPECT_EQ(app.machine.http.count("POST", "/device/checkin"), 0U);
  EXPECT_TRUE(screen().cancelEnrollment());
  EXPECT_EQ(screen().stage(), EnrollmentStage::start);
}

TEST_F(ChildEnrollment, cancelling_clears_everything_and_does_not_tell_the_service) {
  start();
  app.advance(6s);
  const auto calls = app.machine.http.calls();
  screen().cancelEnrollment();
  EXPECT_EQ(screen().enrollmentCode(), "");
  EXPECT_EQ(screen().qrCodeData(), "");
  EXPECT_EQ(screen().deviceId(), "");
  EXPECT_FALSE(screen().isPolling());
  app.settle();
  EXPECT_EQ(app.machine.http.calls(), calls);
}

TEST_F(ChildEnrollment, a_poll_after_cancelling_has_an_empty_id_and_its_failure_is_ignored) {
  start();
  app.advance(2s);
  screen().cancelEnrollment();
  app.advance(1h);
  EXPECT_EQ(polls(), 0U);
  EXPECT_EQ(app.machine.http.count("GET", "/enrollment/status/"), 1U);
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_EQ(screen().stage(), EnrollmentStage::start);
}

TEST_F(ChildEnrollment, a_restart_within_a_poll_interval_keeps_the_old_loop_beside_the_new_one) {
  start();
  app.advance(2s);
  screen().cancelEnrollment();
  start();
  app.advance(3s);
  EXPECT_EQ(polls(), 1U) << "the old loop polls the new id";
  app.advance(2s);
  EXPECT_EQ(polls(), 2U);
  app.advance(593s);
  EXPECT_EQ(polls(), 239U);
  EXPECT_TRUE(screen().errorAlert.isShown()) << "the old loop's 120 rounds end both";
  app.advance(1h);
  EXPECT_LE(polls(), 240U);
}

TEST_F(ChildEnrollment, a_poll_with_an_invalid_url_sends_nothing_and_polling_continues) {
  app.machine.http.answerAlways(
      "POST", "/enrollment/init", 200,
      R"({"enrollment_code":"A","device_id":"no url","expires_at":"2016-10-08T22:41:00Z"})");
  start();
  app.advance(599s);
  EXPECT_EQ(app.machine.http.requests().size(), 1U);
  EXPECT_FALSE(screen().errorAlert.isShown());
  app.advance(1s);
  EXPECT_EQ(screen().errorAlert.message(), "Enrollment timed out. Please try again.");
}

TEST_F(ChildEnrollment, the_dots_move_only_while_waiting) {
  EXPECT_FALSE(static_cast<bool>(screen().loadingDots));
  start();
  ASSERT_TRUE(static_cast<bool>(screen().loadingDots));
  const auto opacities = [&] { return screen().loadingDots->opacities(); };
  EXPECT_EQ(opacities(), (std::vector{1.0, 0.3, 0.3}));
  app.advance(300ms);
  EXPECT_EQ(opacities(), (std::vector{0.3, 1.0, 0.3}));
  app.advance(600ms);
  EXPECT_EQ(screen().loadingDots->animationPhase(), 0);
  screen().cancelEnrollment();
  EXPECT_FALSE(static_cast<bool>(screen().loadingDots));
}

TEST_F(ChildEnrollment, the_screen_can_be_destroyed_while_a_call_runs) {
  app.machine.http.hold();
  start();
  app.child().saveEnrollment("d", "https://dns.example/d", std::nullopt, std::nullopt);
  app.settle();
  app.machine.http.releaseAll();
  app.advance(1min);
  EXPECT_EQ(polls(), 0U);
}

TEST_F(ChildEnrollment, the_texts_are_exact) {
  const auto& texts = screen();
  EXPECT_EQ(texts.title(), "Quillmar Child");
  EXPECT_EQ(texts.tagline(), "Secure Internet for Kids");
  EXPECT_EQ(texts.loadingHeading(), "Initializing enrollment...");
  EXPECT_EQ(texts.loadingText(), "Please wait while we set up your device");
  EXPECT_EQ(texts.startHeading(), "Device Enrollment");
  EXPECT_EQ(texts.startText(),
            "Start the enrollment process to connect this device with your parent's Quillmar account.");
  EXPECT_EQ(texts.startTitle(), "Start Enrollment");
  EXPECT_EQ(texts.codeHeading(), "Scan QR Code");
  EXPECT_EQ(texts.codeText(), "Ask your parent to scan this code using the Quillmar Parent app");
  EXPECT_EQ(texts.codeLabel(), "Enrollment Code");
  EXPECT_EQ(texts.waitingText(), "Waiting for parent to complete enrollment...");
  EXPECT_EQ(texts.cancelTitle(), "Cancel");
  EXPECT_EQ(texts.errorAlert.title(), "Error");
  EXPECT_EQ(texts.errorAlert.okTitle(), "OK");
  EXPECT_EQ(texts.features(), (std::vector<ChildFeatureRow>{{"checkmark.shield", "Safe browsing protection"},
                                                            {"eye.fill", "Activity monitoring"},
                                                            {"clock.fill", "Screen time management"}}));
}

}  // namespace
}  // namespace quillmar
