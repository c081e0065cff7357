#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "testing/fake_platform.h"
#include "testing/settling_http_session.h"

namespace quillmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(FakePlatform, two_machines_never_see_each_other) {
  FakePlatform one;
  FakePlatform other;
  one.ports().settings.set("key", std::string("value"));
  one.ports().log.print("line");
  bool ran = false;
  one.ports().dispatch.main().async([&] { ran = true; });
  other.dispatch.settle();
  EXPECT_FALSE(ran);
  EXPECT_THAT(other.settings.all(), IsEmpty());
  EXPECT_THAT(other.log.printed(), IsEmpty());
}

TEST(FakeBiometrics, answers_each_prompt_in_the_background) {
  FakePlatform machine;
  machine.biometrics.answer = {.success = false, .code = -2};
  std::optional<int> code;
  machine.biometrics.evaluate("to sign in", [&](const BiometricReply& reply) {
    EXPECT_FALSE(machine.dispatch.isMainThread());
    code = reply.code;
  });
  EXPECT_FALSE(code);
  machine.dispatch.settle();
  EXPECT_EQ(code, -2);
  EXPECT_THAT(machine.biometrics.prompts, ElementsAre("to sign in"));
}

TEST(FakeBiometrics, a_held_prompt_waits_for_its_reply) {
  FakePlatform machine;
  machine.biometrics.holding = true;
  int replies = 0;
  machine.biometrics.evaluate("to sign in",
                              [&](const BiometricReply& reply) { replies += reply.success ? 1 : 0; });
  machine.dispatch.settle();
  EXPECT_EQ(replies, 0);
  machine.biometrics.reply({.success = true, .code = std::nullopt});
  machine.dispatch.settle();
  EXPECT_EQ(replies, 1);
}

TEST(SettlingHttpSession, counts_a_request_until_its_completion_has_returned) {
  VirtualDispatch dispatch;
  ScriptedHttpSession scripted(dispatch);
  SettlingHttpSession session(scripted);
  int duringCompletion = 0;
  session.dataTask({.method = "GET", .url = "https://h/a", .headers = {}, .body = std::nullopt},
                   [&](const DataTaskResult&) { duringCompletion = session.inFlight(); });
  EXPECT_EQ(session.inFlight(), 1);
  dispatch.settle();
  EXPECT_EQ(duringCompletion, 1);
  EXPECT_EQ(session.inFlight(), 0);
}

TEST(SettlingHttpSession, keeps_virtual_time_still_while_a_request_is_under_way) {
  VirtualDispatch dispatch;
  dispatch.setPatience(std::chrono::milliseconds(1));
  ScriptedHttpSession scripted(dispatch);
  scripted.hold();
  SettlingHttpSession session(scripted, &dispatch);
  session.dataTask({.method = "GET", .url = "https://h/a", .headers = {}, .body = std::nullopt},
                   [](const DataTaskResult&) {});
  EXPECT_FALSE(dispatch.advance(Duration(10)));
  scripted.releaseAll();
  EXPECT_TRUE(dispatch.advance(Duration(10)));
}

}  // namespace
}  // namespace quillmar
