#include "programs/control/control_desk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "foundation/json_decode.h"
#include "testing/test_application.h"

namespace quillmar::control {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

// A device and what another process hears of it.
struct Desk {
  explicit Desk(const StoredSettings& stored, ControlDesk::Duties duties = {})
      : app(stored), desk(app.environment(), std::move(duties)) {
    app.machine.tunnel.behaveLikePlatform();
    app.machine.http.answerAlways("POST", "/device/checkin", 200, R"({"status":"ok"})");
    app.settle();
  }

  void say(const std::string& line) {
    desk.handle(line, [this](LocalMessage message) {
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
  ControlDesk desk;
  std::vector<ControlReply> replies;
};

TEST(ControlDesk, tells_who_answers) {
  Desk desk(asNewChild(), {.worker = Worker::window});
  const ControlReply reply = desk.answerTo("status");
  EXPECT_EQ(reply.worker, "window");
  EXPECT_EQ(reply.processID, ::getpid());
  EXPECT_EQ(reply.error, std::nullopt);
}

TEST(ControlDesk, of_a_parents_device_tells_nothing_but_that_it_is_one) {
  auto stored = asParent();
  stored[settings::authToken] = std::string("secret");
  stored[settings::childIsEnrolled] = true;
  stored[settings::childDohEndpoint] = std::string("https://dns.example/d1");
  Desk desk(stored);
  EXPECT_EQ(desk.answerTo("status").device, (DeviceStatus{.role = "parent"}));
}

TEST(ControlDesk, of_a_device_that_is_not_enrolled_tells_so) {
  Desk desk(asNewChild());
  EXPECT_EQ(desk.answerTo("status").device, (DeviceStatus{.role = "child", .isEnrolled = false}));
}

TEST(ControlDesk, of_an_enrolled_device_tells_how_it_does) {
  Desk desk(asEnrolledChild());
  desk.app.advance(2s);
  const auto device = desk.answerTo("status").device;
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

TEST(ControlDesk, answers_a_sync_when_the_checkin_has_ended) {
  Desk desk(asEnrolledChild());
  const auto before = desk.checkins();
  desk.ask("sync");
  EXPECT_THAT(desk.replies, IsEmpty());
  desk.app.settle();
  ASSERT_EQ(desk.replies.size(), 1U);
  EXPECT_EQ(desk.checkins(), before + 1);
  EXPECT_TRUE(desk.replies.front().device->isConnectedToServer);
}

TEST(ControlDesk, begins_the_work_for_a_sync_where_it_has_not_begun) {
  FakePlatform machine;
  for (const auto& [key, value] : asEnrolledChild()) {
    machine.settings.set(key, value);
  }
  machine.http.answerAlways("POST", "/device/checkin", 200, R"({"status":"ok"})");
  ApplicationEnvironment environment(machine.ports(), Deployments::all("https://au.example"));
  ControlDesk desk(environment, {});
  int replies = 0;
  desk.handle(R"({"operation":"sync"})", [&](const LocalMessage& /*message*/) { ++replies; });
  machine.dispatch.settle();
  EXPECT_EQ(machine.http.count("POST", "/device/checkin"), 1U);
  EXPECT_EQ(replies, 1);
}

TEST(ControlDesk, answers_a_sync_that_failed) {
  Desk desk(asEnrolledChild());
  desk.app.machine.http.answerAlways("POST", "/device/checkin", 500, "{}");
  desk.ask("sync");
  desk.app.settle();
  ASSERT_EQ(desk.replies.size(), 1U);
  EXPECT_FALSE(desk.replies.front().device->isConnectedToServer);
  // A second failure in a row changes nothing, and is an answer all the same.
  desk.ask("sync");
  desk.app.settle();
  EXPECT_EQ(desk.replies.size(), 2U);
}

TEST(ControlDesk, tells_a_service_that_is_not_there_from_one_that_answers_with_an_error) {
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
    Desk desk(asEnrolledChild());
    desk.app.machine.http.answerAlways("POST", "/device/checkin", result);
    desk.ask("sync");
    desk.app.settle();
    EXPECT_EQ(desk.replies.front().error, problem);
    desk.app.machine.http.answerAlways("POST", "/device/checkin", 200, R"({"status":"ok"})");
    desk.ask("sync");
    desk.app.settle();
    EXPECT_EQ(desk.replies.back().error, std::nullopt);
  }
}

TEST(ControlDesk, of_a_device_that_knows_no_service_says_that) {
  auto stored = asEnrolledChild();
  stored.erase(settings::apiBaseURL);
  Desk desk(stored);
  desk.ask("sync");
  desk.app.settle();
  EXPECT_EQ(desk.replies.front().error, "No region configured. Please select a region first.");
}

TEST(ControlDesk, answers_all_who_wait_for_one_checkin_and_each_once) {
  Desk desk(asEnrolledChild());
  desk.ask("sync");
  desk.ask("sync");
  desk.app.settle();
  EXPECT_EQ(desk.replies.size(), 2U);
  desk.app.advance(10min);
  EXPECT_EQ(desk.replies.size(), 2U);
}

TEST(ControlDesk, does_not_sync_what_is_not_enrolled) {
  for (const auto& stored : {asNewChild(), asParent()}) {
    Desk desk(stored);
    EXPECT_EQ(desk.answerTo("sync").error, "This device is not enrolled.");
    desk.app.settle();
    EXPECT_EQ(desk.checkins(), 0U);
  }
}

TEST(ControlDesk, resets_and_lets_the_work_end) {
  Desk desk(asEnrolledChild());
  EXPECT_FALSE(desk.answerTo("reset").device->isEnrolled);
  EXPECT_FALSE(desk.app.child().isEnrolled());
  const auto before = desk.checkins();
  desk.app.advance(10min);
  EXPECT_EQ(desk.checkins(), before);
}

TEST(ControlDesk, shows_the_window_that_it_has) {
  std::vector<std::string> shown;
  Desk desk(asNewChild(),
            {.worker = Worker::window, .show = [&](const std::string& token) { shown.push_back(token); }});
  desk.say(R"({"operation":"show","activationToken":"t-1"})");
  desk.ask("show");
  EXPECT_THAT(shown, ElementsAre("t-1", ""));
  EXPECT_EQ(desk.replies.size(), 2U);
}

TEST(ControlDesk, without_a_window_shows_nothing_and_says_who_it_is) {
  Desk desk(asNewChild());
  EXPECT_EQ(desk.answerTo("show").worker, "agent");
}

TEST(ControlDesk, gives_the_work_up_only_where_it_may) {
  Desk desk(asEnrolledChild(), {.worker = Worker::window});
  EXPECT_EQ(desk.answerTo("yield").error, "This program keeps the work.");
}

TEST(ControlDesk, gives_the_lock_when_the_work_has_ended) {
  std::function<void(FileDescriptor)> give;
  Desk desk(asEnrolledChild(),
            {.yield = [&](std::function<void(FileDescriptor)> given) { give = std::move(given); }});
  int received = -1;
  desk.desk.handle(R"({"operation":"yield"})",
                   [&](const LocalMessage& message) { received = message.file.get(); });
  EXPECT_EQ(received, -1);
  FileDescriptor lock(::dup(STDIN_FILENO));
  const int sent = lock.get();
  give(std::move(lock));
  EXPECT_EQ(received, sent);
}

TEST(ControlDesk, refuses_what_it_does_not_understand_and_goes_on) {
  Desk desk(asEnrolledChild());
  for (const auto* line :
       {"", "garbage", "[]", "{}", R"({"operation":7})", R"({"operation":"explode"})", "\xff\xfe"}) {
    desk.replies.clear();
    desk.say(line);
    ASSERT_EQ(desk.replies.size(), 1U) << line;
    EXPECT_EQ(desk.replies.front().error, "The request can't be understood.") << line;
  }
  EXPECT_TRUE(desk.app.child().isEnrolled());
}

}  // namespace
}  // namespace quillmar::control
