#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ostream>
#include <string>
#include <vector>

#include "testing/ui/parent_stage.h"
#include "tests/ui/support/scene_walk.h"

// The same actions in a narrow and in a wide window cause the same calls.
namespace quillmar::ui {
namespace {

using namespace std::chrono_literals;
using Calls = std::vector<std::string>;

constexpr QSize narrowWindow{390, 844};
constexpr QSize wideWindow{1400, 900};

// A step: Return is pressed on a control, then a text is typed.
struct Step {
  const char* control;
  const char* typed = "";
  // A page beside the dashboard does not cover it, so the dashboard does not load again when the page closes.
  bool closesPage = false;
};

struct Journey {
  const char* name;
  std::vector<Step> steps;
  bool hasWeek = false;
};
void PrintTo(const Journey& journey, std::ostream* out) { *out << journey.name; }

constexpr Step leave{"Done", "", true};
constexpr Step openMia{"Mia, 5 devices, 2 online"};

std::vector<Journey> journeys() {
  return {
      {"looks at a child's activity",
       {openMia, {"Sites Blocked"}, {"Last Hour"}, {"Sites Allowed"}, {"Today"}, {"Real-Time"}, leave}},
      {"looks at all activity",
       {openMia, {"See All Activity"}, {"Sunday, October 2"}, {"Done"}, leave},
       true},
      {"changes a child's policy",
       {openMia,
        {"Block the Internet"},
        {"Block the Internet"},
        {"games.example"},
        {"Add allowed site (e.g., example.com)", "new.example"},
        {"Add"},
        leave}},
      {"renames a child", {openMia, {"Edit name", "m"}, {"Save", "", true}}},
      {"deletes a child", {openMia, {"Delete Child Profile"}, {"Delete", "", true}}},
      {"links a device", {openMia, {"Link Device"}, {"Old phone"}, leave}},
      {"changes nothing of a child",
       {openMia,
        {"Edit name", "x"},
        {"Cancel"},
        {"Link Device"},
        {"Cancel"},
        {"Delete Child Profile"},
        {"Cancel"},
        leave}},
      {"looks at two children", {openMia, leave, {"Theo, 1 device, 0 online"}, {"Sites Allowed"}, leave}},
      {"adds a child", {{"Add Another Child", "Zoe"}, {"Create Child Profile"}}},
      {"adds no child", {{"Add Another Child", "Zoe"}, {"Cancel"}}},
      {"adds no device", {{"Add Device"}, {"Game Console or Smart TV"}, {"Cancel"}, {"Cancel"}}},
      {"looks at the home network", {{"Home Network"}, leave}},
      {"looks at the family", {{"Menu"}, {"Family Members"}, {"Invite"}, {"Done"}, leave}},
      {"looks at the settings", {{"Menu"}, {"Settings"}, {"Family Members"}, {"Done"}, {"Dark"}, leave}},
      {"logs out", {{"Menu"}, {"Logout"}, {"Cancel"}, {"Menu"}, {"Logout"}, {"Logout"}}},
  };
}

void answerAll(UiStage& stage) {
  constexpr auto policy =
      R"({"id":"p1","child_id":"c1","family_id":"f","is_blocked":false,"block_mode":"blacklist","blocked_domains":["games.example"],"allowed_domains":["school.example"],"created_at":"c","updated_at":"u"})";
  showFamily(stage);
  auto& http = stage.application.machine.http;
  http.answerAlways("PUT", "/children/c1/policy", 200, policy);
  http.answerAlways("POST", "/children/c1/policy/allow", 200, policy);
  http.answerAlways("PUT", "/children/c1", 200, childJson("c1", "Mia", "", R"(,"display_order":0)"));
  http.answerAlways("DELETE", "/children/c1", 200, "{}");
  http.answerAlways("POST", "/children/c1/devices", 200, deviceJson("d7", "Old phone", "ios", false));
  http.answerAlways("POST", "/children", 200, childJson("c4", "Zoe", "", R"(,"display_order":0)"));
  http.answerAlways("GET", "/children/c2", 200,
                    childJson("c2", "Theo", deviceJson("d6", "Theo's tablet", "ipad", false)));
  http.answerAlways("GET", "/devices/d6/logs", 200, R"({"logs":[]})");
  http.answerAlways("GET", "/family", 200, parentsJson(stage.application.machine.dispatch.now()));
  http.answerAlways("POST", "/family/invite", 200, invitationJson());
  http.answerAlways("GET", "/home-network", 200, homeNetworkJson("203.0.113.7", true));
}

// The calls of each step.
std::vector<Calls> callsOf(const Journey& journey, QSize size) {
  UiStage stage({.stored = signedInParent(), .size = size});
  answerAll(stage);
  if (journey.hasWeek) {
    answerWeek(stage);
  }
  auto& http = stage.application.machine.http;
  http.forgetRequests();
  std::vector<Calls> all;
  for (const auto& step : journey.steps) {
    stage.focusOn(step.control);
    stage.press(Qt::Key_Return);
    stage.type(step.typed);
    stage.advance(2s);
    EXPECT_FALSE(stage.shows("Error")) << step.control << " at " << size.width();
    all.push_back(http.calls());
    http.forgetRequests();
  }
  return all;
}

class JourneyTest : public testing::TestWithParam<Journey> {};

TEST_P(JourneyTest, sends_the_same_calls_in_a_narrow_and_in_a_wide_window) {
  auto expected = callsOf(GetParam(), narrowWindow);
  const auto sent = callsOf(GetParam(), wideWindow);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const auto& step = GetParam().steps[i];
    if (step.closesPage) {
      const auto reload = std::ranges::find(expected[i], "GET /children");
      ASSERT_NE(reload, expected[i].end()) << step.control;
      expected[i].erase(reload);
    }
    EXPECT_EQ(sent[i], expected[i]) << step.control;
  }
}

INSTANTIATE_TEST_SUITE_P(All, JourneyTest, testing::ValuesIn(journeys()));

// Every scene of the pictures is the way to one state of one screen.
class SceneCallsTest : public testing::TestWithParam<Shot> {
 protected:
  static Calls callsIn(QSize size) {
    UiStage stage({.stored = GetParam().stored, .size = size});
    play(stage, GetParam());
    stage.advance(31s);
    return stage.application.machine.http.calls();
  }
};

TEST_P(SceneCallsTest, are_the_same_in_a_narrow_and_in_a_wide_window) {
  EXPECT_EQ(callsIn(wideWindow), callsIn(narrowWindow));
}

INSTANTIATE_TEST_SUITE_P(Scenes, SceneCallsTest, testing::ValuesIn(scenes()));

}  // namespace
}  // namespace quillmar::ui
