#include "programs/control/control_handler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "foundation/json.h"
#include "testing/test_application.h"

namespace quillmar::control {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

// A device, and the answers that another process gets about it.
struct Handling {
  explicit Handling(const StoredSettings& stored, ControlHandler::Duties duties = {})
      : app(stored), handler(app.environment(), std::move(duties)) {
    app.machine.tunnel.behaveLikePlatform();
    app.machine.http.answerAlways("POST", "/device/checkin", 200, R"({"status":"ok"})");
    app.settle();
  }

  void say(const std::string& line) {
    handler.handle(line, [this](LocalMessage message) {
      const auto reply = decodeJson<ControlReply>(message.line);
      ASSERT_TRUE(reply.ok()) << message.line;
      replies.push_back(reply.value());
    });
  }
  void ask(const std::string& operation) { say(R"({"operation":")" + operation + "\"}"); }
  ControlReply answerTo(const std::string& operation) {
    ask(operation);
    EXPECT_EQ(replies.size(), 1U);
    return replies.empty() ? ControlReply{} : replies.back();
  }
  std::size_t checkins() { return app.machine.http.count("POST", "/device/checkin"); }

  TestApplication app;
  ControlHandler handler;
  std::vector<ControlReply> replies;
};

TEST(ControlHandler, names_the_process_that_answers) {
  Handling handling(asNewChild(), {.worker = Worker::window});
  const ControlReply reply = handling.answerTo("status");
  EXPECT_EQ(reply.worker, "window");
  EXPECT_EQ(reply.processID, ::getpid());
  EXPECT_EQ(reply.error, std::nullopt);
}

TEST(ControlHandler, reports_only_the_role_of_a_parents_device) {
  auto stored = asParent();
  stored[settings::authToken] = std::string("secret");
  stored[settings::childIsEnrolled] = true;
  stored[settings::childDohEndpoint] = std::string("https://dns.example/d1");
  Handling handling(stored);
  EXPECT_EQ(handling.answerTo("status").device, (DeviceStatus{.role = "parent"}));
}

TEST(ControlHandler, reports_a_device_that_is_not_enrolled) {
  Handling handling(asNewChild());
  EXPECT_EQ(handling.answerTo("status").device, (DeviceStatus{.role = "child", .isEnrolled = false}));
}

TEST(ControlHandler, reports_the_state_of_an_enrolled_device) {
  Handling handling(asEnrolledChild());
  handling.app.advance(2s);
  const auto device = handling.answerTo("status").device;
  ASSERT_TRUE(device);
  EXPECT_EQ(*device, (DeviceStatus{.role = "child",
                                   .isEnrolled = true,
                                   .deviceID = "device-1234567890",
                                   .dohEndpoint = "https://dns.example/d1",
                                   .dohBaseUrl = {},
                                   .isConnectedToServer = true,
                                   .lastCheckinTime = formatISO8601(VirtualDispatch::defaultStart),
                                   .isVPNConfigured = true,
                                   .isVPNConnected = true,
                                   .vpnStatus = "DNS Protection Active",
                                   .warning = {}}));
}

TEST(ControlHandler, answers_a_sync_when_the_checkin_has_ended) {
  Handling handling(asEnrolledChild());
  const auto before = handling.checkins();
  handling.ask("sync");
  EXPECT_THAT(handling.replies, IsEmpty());
  handling.app.settle();
  ASSERT_EQ(handling.replies.size(), 1U);
  EXPECT_EQ(handling.checkins(), before + 1);
  EXPECT_TRUE(handling.replies.front().device->isConnectedToServer);
}

TEST(ControlHandler, a_sync_starts_the_work_if_it_has_not_started) {
  FakePlatform machine;
  for (const auto& [key, value] : asEnrolledChild()) {
    machine.settings.set(key, value);
  }
  machine.http.answerAlways("POST", "/device/checkin", 200, R"({"status":"ok"})");
  ApplicationEnvironment environment(machine.ports(), Deployments::all("https://au.example"));
  ControlHandler handler(environment, {});
  int replies = 0;
  handler.handle(R"({"operation":"sync"})", [&](const LocalMessage& /*message*/) { ++replies; });
  machine.dispatch.settle();
  EXPECT_EQ(machine.http.count("POST", "/device/checkin"), 1U);
  EXPECT_EQ(replies, 1);
}

TEST(ControlHandler, answers_a_sync_that_failed) {
  Handling handling(asEnrolledChild());
  handling.app.machine.http.answerAlways("POST", "/device/checkin", 500, "{}");
  handling.ask("sync");
  handling.app.settle();
  ASSERT_EQ(handling.replies.size(), 1U);
  EXPECT_FALSE(handling.replies.front().device->isConnectedToServer);
  // A second failure in a row publishes no change, but still ends the check-in.
  handling.ask("sync");
  handling.app.settle();
  EXPECT_EQ(handling.replies.size(), 2U);
}

TEST(ControlHandler, distinguishes_an_unreachable_service_from_one_that_answers_with_an_error) {
  using Kind = TransportError::Kind;
  const std::string answered = "The service answered with an error: ";
  const std::string unreached = "The service can't be reached: ";
  for (const auto& [result, problem] :
       {std::pair(httpAnswer(500, R"({"error":"Try later"})"), answered + "Try later"),
        std::pair(httpAnswer(404, R"({"error":"Device not found"})"), answered + "Device not found"),
        std::pair(httpAnswer(200, R"({"status":"unknown"})"), answered + "Invalid response from server"),
        std::pair(httpAnswer(200, "<html>"),
                  answered + "The data couldn’t be read because it isn’t in the correct format."),
        std::pair(transportFailure(Kind::badServerResponse),
                  answered + "There was a bad response from the server."),
        std::pair(transportFailure(Kind::cannotConnectToHost),
                  unreached + "Could not connect to the server."),
        std::pair(transportFailure(Kind::notConnectedToInternet),
                  unreached + "The Internet connection appears to be offline.")}) {
    Handling handling(asEnrolledChild());
    handling.app.machine.http.answerAlways("POST", "/device/checkin", result);
    handling.ask("sync");
    handling.app.settle();
    EXPECT_EQ(handling.replies.front().error, problem);
    handling.app.machine.http.answerAlways("POST", "/device/checkin", 200, R"({"status":"ok"})");
    handling.ask("sync");
    handling.app.settle();
    EXPECT_EQ(handling.replies.back().error, std::nullopt);
  }
}

TEST(ControlHandler, reports_that_no_region_is_configured) {
  auto stored = asEnrolledChild();
  stored.erase(settings::apiBaseURL);
  Handling handling(stored);
  handling.ask("sync");
  handling.app.settle();
  EXPECT_EQ(handling.replies.front().error, "No region configured. Please select a region first.");
}

TEST(ControlHandler, answers_each_sync_that_waits_for_one_checkin_once) {
  Handling handling(asEnrolledChild());
  handling.ask("sync");
  handling.ask("sync");
  handling.app.settle();
  EXPECT_EQ(handling.replies.size(), 2U);
  handling.app.advance(10min);
  EXPECT_EQ(handling.replies.size(), 2U);
}

TEST(ControlHandler, does_not_sync_a_device_that_is_not_enrolled) {
  for (const auto& stored : {asNewChild(), asParent()}) {
    Handling handling(stored);
    EXPECT_EQ(handling.answerTo("sync").error, "This device is not enrolled.");
    handling.app.settle();
    EXPECT_EQ(handling.checkins(), 0U);
  }
}

TEST(ControlHandler, a_reset_ends_the_work) {
  Handling handling(asEnrolledChild());
  EXPECT_FALSE(handling.answerTo("reset").device->isEnrolled);
  EXPECT_FALSE(handling.app.child().isEnrolled());
  const auto before = handling.checkins();
  handling.app.advance(10min);
  EXPECT_EQ(handling.checkins(), before);
}

TEST(ControlHandler, shows_its_window) {
  std::vector<std::string> shown;
  Handling handling(asNewChild(), {.worker = Worker::window,
                                   .show = [&](const std::string& token) { shown.push_back(token); }});
  handling.say(R"({"operation":"show","activationToken":"t-1"})");
  handling.ask("show");
  EXPECT_THAT(shown, ElementsAre("t-1", ""));
  EXPECT_EQ(handling.replies.size(), 2U);
}

TEST(ControlHandler, names_its_process_if_it_has_no_window_to_show) {
  Handling handling(asNewChild());
  EXPECT_EQ(handling.answerTo("show").worker, "agent");
}

TEST(ControlHandler, yields_only_if_it_may) {
  Handling handling(asEnrolledChild(), {.worker = Worker::window});
  EXPECT_EQ(handling.answerTo("yield").error, "This program keeps the work.");
}

TEST(ControlHandler, gives_the_lock_after_the_work_has_ended) {
  std::function<void(FileDescriptor)> give;
  Handling handling(asEnrolledChild(),
                    {.yield = [&](std::function<void(FileDescriptor)> given) { give = std::move(given); }});
  int received = -1;
  handling.handler.handle(R"({"operation":"yield"})",
                          [&](const LocalMessage& message) { received = message.file.get(); });
  EXPECT_EQ(received, -1);
  FileDescriptor lock(::dup(STDIN_FILENO));
  const int sent = lock.get();
  give(std::move(lock));
  EXPECT_EQ(received, sent);
}

TEST(ControlHandler, refuses_an_invalid_request_and_goes_on) {
  Handling handling(asEnrolledChild());
  for (const auto* line :
       {"", "garbage", "[]", "{}", R"({"operation":7})", R"({"operation":"explode"})", "\xff\xfe"}) {
    handling.replies.clear();
    handling.say(line);
    ASSERT_EQ(handling.replies.size(), 1U) << line;
    EXPECT_EQ(handling.replies.front().error, "The request can't be understood.") << line;
  }
  EXPECT_TRUE(handling.app.child().isEnrolled());
}

}  // namespace
}  // namespace quillmar::control
