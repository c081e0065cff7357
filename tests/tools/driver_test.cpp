#include "tools/driver/driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "foundation/json.h"
#include "sandbox/service.h"

namespace quillmar::driver {
namespace {

// A driven application in virtual time. It has no service unless a test names one.
struct Driven : testing::Test {
  explicit Driven(Options options = {.clock = Clock::virtualTime}) : options_(std::move(options)) {}

  Driver& driver() {
    if (!driver_) {
      driver_ =
          std::make_unique<Driver>(options_, [this](const std::string& line) { lines_.push_back(line); });
    }
    return *driver_;
  }

  // The answer to one request: the line with its id.
  Value ask(const std::string& fields) {
    driver().handle(R"({"id":7,)" + fields + "}");
    const auto answer = parseJson(lines_.back());
    EXPECT_TRUE(answer.ok()) << lines_.back();
    EXPECT_EQ(answer.value().find("id") ? *answer.value().find("id") : Value(), Value(7));
    return answer.value();
  }
  std::string error(const std::string& fields) {
    const Value answer = ask(fields);
    const Value* words = answer.find("error");
    return words && words->string() ? *words->string() : "";
  }
  std::string screenNames() {
    std::string names;
    const Value answer = ask(R"("op":"screens")");
    for (const auto& screen : *answer.find("screens")->list()) {
      names += (names.empty() ? "" : " ") + *screen.find("screen")->string();
    }
    return names;
  }
  // A field of the topmost screen.
  Value field(const std::string& group, const std::string& name) {
    const Value answer = ask(R"("op":"screens")");
    const Value* found = answer.find("screens")->list()->back().find(group)->find(name);
    return found ? *found : Value();
  }
  std::vector<std::string> events(const std::string& kind) const {
    std::vector<std::string> found;
    for (const auto& line : lines_) {
      if (line.starts_with(R"({"event":")" + kind)) {
        found.push_back(line);
      }
    }
    return found;
  }

  Options options_;
  std::vector<std::string> lines_;
  std::unique_ptr<Driver> driver_;
};

struct DrivenWithEvents : Driven {
  DrivenWithEvents() : Driven({.clock = Clock::virtualTime, .events = true}) {}
};

struct DrivenOverService : Driven {
  DrivenOverService() {
    options_.service = (*service_)->secureUrl();
    options_.caFile = (*service_)->caFile().string();
  }
  sandbox::Service& service() { return **service_; }

  sandbox::Outcome<std::unique_ptr<sandbox::Service>> service_ = sandbox::Service::start({});
};

TEST_F(Driven, refuses_an_invalid_request_and_says_why) {
  driver().handle("not json");
  EXPECT_EQ(lines_.back(), R"({"id":null,"error":"a request is one JSON object"})");
  driver().handle("[1]");
  EXPECT_EQ(lines_.back(), R"({"id":null,"error":"a request is one JSON object"})");
  EXPECT_EQ(error(R"("op":"fly")"), "no such op: fly");
}

TEST_F(Driven, echoes_an_id_of_any_type) {
  driver().handle(R"({"op":"haptics","id":{"a":[1]}})");
  EXPECT_EQ(lines_.back(), R"({"id":{"a":[1]},"played":[]})");
}

TEST_F(Driven, lists_screens_with_their_rows) {
  const Value answer = ask(R"("op":"screens")");
  const Value& screen = answer.find("screens")->list()->at(0);
  EXPECT_EQ(*screen.find("screen"), Value("RoleSelectionView"));
  EXPECT_EQ(*screen.find("texts")->find("welcome"), Value("Welcome to Quillmar"));
  const Value& card = screen.find("rows")->find("cards")->list()->at(1);
  EXPECT_EQ(*card.find("key"), Value("child"));
  EXPECT_EQ(*card.find("derived")->find("role"), Value("child"));
  EXPECT_EQ(card.find("actions")->list()->at(0), Value(Value::Map{{"name", "action"}, {"enabled", true}}));
}

TEST_F(Driven, lists_the_long_lived_objects) {
  std::string names;
  const Value answer = ask(R"("op":"objects")");
  for (const auto& object : *answer.find("objects")->list()) {
    names += *object.find("object")->string() + " ";
  }
  EXPECT_EQ(names, "RoleManager AuthState ChildAppState AppearanceManager VPNDNSManager BackgroundService ");
}

TEST_F(Driven, acts_on_rows_and_screens_and_refuses_disabled_controls) {
  EXPECT_EQ(error(R"("op":"act","screen":"RoleSelectionView","row":"cards/parent","action":"action")"), "");
  EXPECT_EQ(screenNames(), "RoleSelectionView CountrySelectionView");
  EXPECT_EQ(error(R"("op":"act","screen":"CountrySelectionView","action":"goBack")"), "");
  EXPECT_EQ(error(R"("op":"act","screen":"CountrySelectionView","action":"goBack")"),
            "no such screen or row is up");
  EXPECT_EQ(error(R"("op":"act","screen":"RoleSelectionView","row":"cards/aunt","action":"action")"),
            "no such screen or row is up");
  EXPECT_EQ(error(R"("op":"act","screen":"RoleSelectionView","action":"fly")"), "no such action");
  ask(R"("op":"act","screen":"RoleSelectionView","row":"cards/child","action":"action")");
  ask(R"("op":"settle")");
  EXPECT_EQ(error(R"("op":"act","screen":"ChildEnrollmentView","action":"cancelEnrollment")"),
            "the control is out of use");
  EXPECT_EQ(error(R"("op":"act","screen":"ChildEnrollmentView","action":"startEnrollment","args":[1])"),
            "the arguments do not fit the action");
}

TEST_F(Driven, sets_inputs_and_nothing_else) {
  ask(R"("op":"act","screen":"RoleSelectionView","row":"cards/parent","action":"action")");
  EXPECT_EQ(
      error(R"("op":"set","screen":"CountrySelectionView","field":"selectedRegion","value":"singapore")"),
      "");
  EXPECT_EQ(field("state", "selectedRegion"), Value("singapore"));
  EXPECT_EQ(error(R"("op":"set","screen":"CountrySelectionView","field":"selectedRegion","value":"mars")"),
            "the value does not fit the field");
  EXPECT_EQ(
      error(R"("op":"set","screen":"CountrySelectionView","field":"isDetectingLocation","value":false)"),
      "no such field that a person can set");
  EXPECT_EQ(field("state", "isDetectingLocation"), Value(true));
}

TEST_F(Driven, advances_virtual_time) {
  ask(R"("op":"act","screen":"RoleSelectionView","row":"cards/parent","action":"action")");
  EXPECT_EQ(error(R"("op":"advance","seconds":0.5)"), "");
  EXPECT_EQ(field("state", "isDetectingLocation"), Value(false));
  EXPECT_EQ(error(R"("op":"advance","seconds":-1)"), "seconds must be a number that is not negative");
  EXPECT_EQ(error(R"("op":"advance")"), "seconds must be a number that is not negative");
}

TEST_F(Driven, reads_and_writes_settings_with_their_types) {
  const Value answer = ask(R"("op":"settings","set":{"authToken":"t","child_isEnrolled":true,)"
                           R"("authTokenTimestamp":{"type":"date","value":"2016-10-08T22:31:00Z"}})");
  EXPECT_EQ(writeJson(*answer.find("settings")),
            R"({"authToken":{"type":"string","value":"t"},)"
            R"("authTokenTimestamp":{"type":"date","value":"2016-10-08T22:31:00Z"},)"
            R"("child_isEnrolled":{"type":"bool","value":true}})");
  const Value after = ask(R"("op":"settings","remove":["authToken","authTokenTimestamp"])");
  EXPECT_EQ(writeJson(*after.find("settings")), R"({"child_isEnrolled":{"type":"bool","value":true}})");
  EXPECT_EQ(error(R"("op":"settings","set":{"x":[1]})"), "not a value of the settings: x");
}

TEST_F(Driven, steers_the_tunnel_and_shows_its_calls) {
  EXPECT_EQ(error(R"("op":"tunnel","status":"connected")"), "no configuration is saved");
  EXPECT_EQ(error(R"("op":"tunnel","status":"sideways")"), "no such status");
  const Value answer = ask(R"("op":"tunnel","fail":{"save":"permission denied"})");
  EXPECT_EQ(writeJson(*answer.find("configurations")), "[]");
}

TEST_F(Driven, steers_the_biometric_check) {
  EXPECT_EQ(
      writeJson(*ask(R"("op":"biometrics","type":"touchID","available":false,"answer":-8)").find("prompts")),
      "[]");
  EXPECT_EQ(driver().machine().fakes.biometrics.type, 1);
  EXPECT_FALSE(driver().machine().fakes.biometrics.available);
  EXPECT_EQ(driver().machine().fakes.biometrics.answer.code, -8);
  EXPECT_EQ(error(R"("op":"biometrics","type":"nose")"), "a type is none, touchID, faceID or a number");
}

TEST_F(Driven, forwards_phases_and_activation) {
  EXPECT_EQ(error(R"("op":"phase","value":"active")"), "");
  EXPECT_EQ(error(R"("op":"phase","value":"asleep")"), "a phase is active, inactive or background");
  EXPECT_EQ(error(R"("op":"activate")"), "");
}

TEST_F(Driven, log_lines_are_sent_as_events) {
  driver();
  EXPECT_EQ(
      events("log"),
      std::vector<std::string>{
          R"({"event":"log","sink":"stdout","line":"[AuthState] loadState - no token found, isLoggedIn: false"})"});
  ask(R"("op":"act","screen":"RoleSelectionView","row":"cards/child","action":"action")");
  EXPECT_TRUE(events("changed").empty()) << "changes are told only where they were asked for";
}

TEST_F(DrivenWithEvents, changes_are_sent_as_events_too) {
  ask(R"("op":"act","screen":"RoleSelectionView","row":"cards/child","action":"action")");
  EXPECT_EQ(events("changed"),
            std::vector<std::string>{R"({"event":"changed","object":"RoleManager","field":"currentRole"})"});
}

TEST_F(DrivenOverService, walks_the_whole_enrollment) {
  ask(R"("op":"act","screen":"RoleSelectionView","row":"cards/child","action":"action")");
  ask(R"("op":"settle")");
  ask(R"("op":"act","screen":"ChildEnrollmentView","action":"startEnrollment")");
  EXPECT_EQ(error(R"("op":"settle","timeout":20)"), "");
  const Value code = field("state", "enrollmentCode");
  ASSERT_TRUE(service().approve(*code.string()));
  EXPECT_EQ(error(R"("op":"advance","seconds":7)"), "");
  EXPECT_EQ(screenNames(), "ChildHomeView");
  const Value tunnel = ask(R"("op":"tunnel","status":"connected")");
  EXPECT_EQ(tunnel.find("configurations")->list()->size(), 1U);
  ask(R"("op":"settle")");
  const Value panel = field("derived", "panel");
  EXPECT_EQ(*panel.find("heading"), Value("Internet Protection Active"));
  ask(R"("op":"act","screen":"ChildHomeView","action":"openSettings")");
  ask(R"("op":"act","screen":"ChildSettingsView","action":"copyDoHEndpoint")");
  const Value clipboard = ask(R"("op":"clipboard")");
  EXPECT_EQ(*clipboard.find("text"), field("derived", "dohEndpoint"));
}

TEST(DrivenByTheRealClock, settles_once_nothing_is_in_flight) {
  const auto service = sandbox::Service::start({});
  ASSERT_TRUE(static_cast<bool>(service));
  std::vector<std::string> answers;
  Driver* running = nullptr;
  Driver driver({.service = (*service)->url(), .clock = Clock::real}, [&](const std::string& line) {
    answers.push_back(line);
    if (line.starts_with(R"({"id":3)")) {
      running->machine().realTime()->stop();
    }
  });
  running = &driver;
  driver.handle(R"({"op":"act","screen":"RoleSelectionView","row":"cards/child","action":"action"})");
  driver.machine().dispatch().main().async([&] {
    driver.handle(R"({"op":"act","screen":"ChildEnrollmentView","action":"startEnrollment"})");
    driver.handle(R"({"id":1,"op":"advance","seconds":1})");
    driver.handle(R"({"id":3,"op":"settle","timeout":20})");
  });
  driver.machine().realTime()->run();
  EXPECT_EQ(answers.back(), R"({"id":3})");
  driver.handle(R"({"id":4,"op":"screens"})");
  EXPECT_NE(answers.back().find(R"("stage":"code")"), std::string::npos) << answers.back();
  EXPECT_NE(std::ranges::find(answers, R"({"id":1,"error":"the clock is real; start with --clock virtual"})"),
            answers.end());
}

}  // namespace
}  // namespace quillmar::driver
