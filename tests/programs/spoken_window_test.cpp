#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sandbox/service.h"
#include "testing/temporary_directory.h"
#include "tests/platform/private_bus.h"
#include "tests/programs/program_session.h"
#include "tests/programs/screen_reader.h"
#include "ui/items/symbols.h"

// The real window as a screen reader finds it: what it says of each screen, and that what it can press works.
namespace quillmar {
namespace {

using test::Element;
using test::Elements;
using test::operator+;
using test::Role;
using test::ScreenReader;
using test::State;
using test::Words;
using testing::_;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

constexpr auto launcher = "/usr/libexec/at-spi-bus-launcher";
constexpr auto password = "quillmar-demo";
constexpr auto newPassword = "never to be heard 1";

// Matches an element.
struct Expected {
  Role role;
  testing::Matcher<std::string> name;
  testing::Matcher<std::string> description = _;
  std::optional<bool> isChecked{};

  bool operator()(const Element& element) const {
    return element.role == role && testing::Value(element.name, name) &&
           testing::Value(element.description, description) &&
           element.is(State::checked) == isChecked.value_or(element.is(State::checked));
  }
};

const Element* find(const Elements& elements, const Expected& expected) {
  const auto found = std::ranges::find_if(elements, expected);
  return found != elements.end() ? &*found : nullptr;
}

// One thing that a person does with the screen reader or the keyboard. What is under a closing sheet is heard
// only when that has gone, but a key would not wait: it is the first step of its screen.
struct Step {
  enum class Deed { press, write, key };
  Deed deed;
  std::string target;
  std::string more{};  // of several buttons, the one with this description; or the text that is written
  std::string action = "Press";
};
Step press(std::string name, std::string description = {}) {
  return {Step::Deed::press, std::move(name), std::move(description)};
}
Step write(std::string name, std::string text) {
  return {Step::Deed::write, std::move(name), std::move(text)};
}
Step key(std::string name) { return {Step::Deed::key, std::move(name)}; }

// What may lie over the rest of the window.
enum class Front { none, question, menu, sheet, page };

struct Screen {
  std::string name;
  std::vector<Step> steps;
  std::vector<Expected> heard;
  Front front = Front::none;
  std::vector<std::string> silent{};  // names of what was left behind
};

bool isFront(const Element& element) {
  return element.role == Role::dialog || element.role == Role::alert || element.role == Role::menu;
}

// A session of a person's own, with the window in it.
class SpokenSession {
 public:
  SpokenSession() { EXPECT_TRUE(bus_.waitFor("org.a11y.Bus")); }
  ~SpokenSession() {
    window_.end(SIGTERM);
    launcher_.end(SIGTERM);
  }
  SpokenSession(const SpokenSession&) = delete;
  SpokenSession& operator=(const SpokenSession&) = delete;

  const ScreenReader& reader() {
    if (!reader_) {
      reader_.emplace(bus_.address());
    }
    return *reader_;
  }
  // So high that nothing is scrolled out of sight: Qt calls that invisible.
  void resize(int width) const {
    static_cast<void>(onWindow({"windowsize", "--sync", std::to_string(width), "2000", "windowfocus"}));
  }
  void perform(const Step& step) {
    switch (step.deed) {
      case Step::Deed::press:
        return pressNamed(step);
      case Step::Deed::write:
        focus(step.target);
        static_cast<void>(onWindow({"type", "--delay", "1", step.more}));
        return;
      case Step::Deed::key:
        static_cast<void>(onWindow({"key", step.target}));
    }
  }
  void focus(const std::string& name) {
    const auto isIt = [&](const Element& element) {
      return element.name == name && element.can("SetFocus") && element.role != Role::label;
    };
    const auto heard = reader().listenUntil(
        "waited for \"" + name + "\"", [&](const Elements& all) { return std::ranges::any_of(all, isIt); });
    if (const auto found = std::ranges::find_if(heard, isIt); found != heard.end()) {
      reader().perform(*found, "SetFocus");
    }
    reader().listenUntil("waited for the focus on \"" + name + "\"", [&](const Elements& all) {
      return std::ranges::any_of(
          all, [&](const Element& element) { return isIt(element) && element.is(State::focused); });
    });
  }

 private:
  void pressNamed(const Step& step) {
    const auto isIt = [&](const Element& element) {
      return element.name == step.target && (step.more.empty() || element.description == step.more) &&
             element.can(step.action);
    };
    const auto heard =
        reader().listenUntil("waited to press \"" + step.target + "\"",
                             [&](const Elements& all) { return std::ranges::any_of(all, isIt); });
    if (const auto found = std::ranges::find_if(heard, isIt); found != heard.end()) {
      reader().perform(*found, step.action);
    }
  }
  Words inSession(const Words& words) const {
    return session_.running(
        words, {"QT_QPA_PLATFORM=xcb", "QT_QUICK_BACKEND=software", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1",
                "DISPLAY=:" + display_, "DBUS_SESSION_BUS_ADDRESS=" + bus_.address()});
  }
  CommandResult onWindow(const Words& deed) const {
    return runCommand(
        inSession(Words{"xdotool", "search", "--sync", "--onlyvisible", "--name", "Quillmar"} + deed));
  }

  const test::ProgramSession session_;
  const TemporaryDirectory busFolder_;
  PrivateBus bus_{busFolder_.path()};
  RunningProgram screen_{endingWithTheTest({"Xvfb", "-displayfd", "1", "-screen", "0", "1440x2000x24"})};
  const std::string display_ = screen_.readLine();
  // It ends its own daemon only if it is asked to end.
  RunningProgram launcher_{Words{"setpriv", "--pdeathsig", "TERM"} +
                           inSession({launcher, "--launch-immediately"})};
  const std::unique_ptr<sandbox::Service> service_ =
      std::move(*sandbox::Service::start({.seed = sandbox::Seed::demo}));
  RunningProgram window_{
      endingWithTheTest(inSession(test::programFor(QUILLMAR_PROGRAM, session_.home() / "data", *service_)))};
  std::optional<ScreenReader> reader_;
};

class SpokenWindow : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(launcher)) {
      GTEST_SKIP() << "the package at-spi2-core is not installed";
    }
    session = std::make_unique<SpokenSession>();
  }

  Elements hear(const Screen& screen, bool isWide) const {
    std::ranges::for_each(screen.steps, [&](const Step& step) { session->perform(step); });
    return session->reader().listenUntil("listened to " + screen.name, [&](const Elements& all) {
      const bool isAllThere =
          std::ranges::all_of(screen.heard, [&](const Expected& expected) { return find(all, expected); });
      const bool isCovered = std::ranges::any_of(all, isFront);
      const bool mayBeCovered = screen.front != Front::none && !(isWide && screen.front == Front::page);
      return isAllThere && isCovered == mayBeCovered && !isFading(all) &&
             std::ranges::none_of(all, [&](const Element& element) {
               return std::ranges::find(screen.silent, element.name) != screen.silent.end();
             });
    });
  }
  // A screen that fades out stands beside the next one, each with its own bar.
  static bool isFading(const Elements& all) {
    return std::ranges::any_of(all, [&](const Element& one) {
      return one.role == Role::toolBar && std::ranges::any_of(all, [&](const Element& other) {
               return other.role == Role::toolBar && other.parent == one.parent && other.path != one.path;
             });
    });
  }
  static bool saysWhatItIs(const std::string& name) {
    return std::ranges::any_of(name, [](unsigned char letter) { return std::isalpha(letter) != 0; }) &&
           std::ranges::find(ui::symbols, name, &ui::Symbol::name) == ui::symbols.end() &&
           name.find("QML") == std::string::npos && !name.starts_with("QQuick");
  }
  // A label can do nothing, although Qt lets it have the focus.
  static bool isControl(const Element& element) {
    const bool isPassive = element.role == Role::label || element.role == Role::frame;
    return !isPassive && (element.is(State::focusable) || !element.actions.empty());
  }
  static void expectNames(const Elements& heard) {
    int controls = 0;
    for (const auto& element : heard) {
      if (isControl(element) || isFront(element)) {
        EXPECT_TRUE(saysWhatItIs(element.name)) << "\"" << element.name << "\", " << element.description;
        ++controls;
      }
    }
    EXPECT_GT(controls, 0);
  }
  // In a row, a card, a bar, a menu or a question. A page may have the same field in two columns.
  static void expectDifferentNeighbours(const Elements& heard) {
    const auto isPage = [&](const Element& element) {
      return element.role == Role::frame || element.role == Role::dialog || element.role == Role::panel;
    };
    for (auto one = heard.begin(); one != heard.end(); ++one) {
      if (!one->parent || isPage(heard[*one->parent])) {
        continue;
      }
      const auto isTwin = [&](const Element& other) {
        return isControl(other) && other.parent == one->parent && other.role == one->role &&
               other.name == one->name && other.description == one->description;
      };
      EXPECT_FALSE(isControl(*one) && std::any_of(one + 1, heard.end(), isTwin))
          << "two of \"" << one->name << "\", " << one->description;
    }
  }
  // What lies in front is the only child of the window.
  static void expectNothingUnder(const Elements& heard) {
    const auto front = std::ranges::find_if(heard, isFront);
    if (front == heard.end() || front->parent != std::size_t{0}) {
      return;  // a message within a screen
    }
    EXPECT_EQ(std::ranges::count(heard, front->parent, &Element::parent), 1) << front->name;
  }
  static void expectSecrecy(const Elements& heard) {
    for (const auto& element : heard) {
      for (const auto* const secret : {password, newPassword}) {
        for (const auto& told : {element.name, element.description, element.text}) {
          EXPECT_THAT(told, testing::Not(HasSubstr(secret))) << element.name;
        }
      }
      if (element.role == Role::password) {
        EXPECT_THAT(element.text, MatchesRegex("(•)*"));
      }
    }
  }
  // Of the bars of a chart, the one with the most requests. All have a name and a number.
  static std::string fullestBar(const Elements& heard, const std::string& chart) {
    const auto numberOf = [](const Element& bar) {
      return bar.description.starts_with("No ") ? 0 : std::stoi(bar.description);
    };
    const Element* fullest = nullptr;
    for (const auto& bar : heard) {
      if (bar.parent && heard[*bar.parent].role == Role::panel && heard[*bar.parent].name == chart) {
        EXPECT_EQ(bar.role, Role::button) << bar.name;
        EXPECT_THAT(bar.description, MatchesRegex("(No|[0-9,]+) requests?.*")) << bar.name;
        fullest = !fullest || numberOf(bar) > numberOf(*fullest) ? &bar : fullest;
      }
    }
    EXPECT_NE(fullest, nullptr) << "no bars in " << chart;
    return fullest ? fullest->name : std::string();
  }
  void walk(const std::vector<Screen>& screens, int width) const {
    session->resize(width);
    for (const auto& screen : screens) {
      SCOPED_TRACE(screen.name);
      const auto heard = hear(screen, width >= 900);
      expectNames(heard);
      expectDifferentNeighbours(heard);
      expectNothingUnder(heard);
      expectSecrecy(heard);
      if (HasFailure()) {
        return;
      }
    }
  }

  std::unique_ptr<SpokenSession> session;
};

std::vector<Screen> screens() {
  return {
      {"the choice of a role",
       {},
       {{Role::heading, "Welcome to Quillmar"},
        {Role::button, "I'm a Parent", HasSubstr("children's devices")},
        {Role::button, "I'm a Child", HasSubstr("monitored by a parent")}}},
      {"the choice of a region",
       {press("I'm a Parent")},
       {{Role::radio, "Australia", _, true},
        {Role::radio, "New Zealand", _, false},
        {Role::radio, "Singapore", _, false},
        {Role::button, "Back"},
        {Role::button, "Continue"}},
       Front::none,
       {"I'm a Parent"}},
      {"signing up",
       {press("Continue"), press("Sign Up"), write("Password", newPassword),
        write("Confirm Password", newPassword)},
       {{Role::dialog, "Create Account"},
        {Role::text, "Full Name"},
        {Role::text, "Phone Number", "Used for account recovery"},
        {Role::password, "Password"},
        {Role::button, "Show password", "Password"},
        {Role::password, "Confirm Password"},
        {Role::button, "Show password", "Confirm Password"},
        {Role::button, "Close"}},
       Front::sheet},
      {"joining a family",
       {press("Close"), press("Join Existing Family")},
       {{Role::dialog, "Join Family"}, {Role::text, "Invite Code"}, {Role::button, "Scan QR Code"}},
       Front::sheet},
      {"signing in",
       {press("Cancel"), write("Email", "ann@example.com"), write("Password", password),
        press("Remember me")},
       {{Role::text, "Email"},
        {Role::password, "Password"},
        {Role::button, "Show password", "Password"},
        {Role::checkBox, "Remember me", _, true},
        {Role::button, "Sign In"}},
       Front::none,
       {"Join Family", "Create Account"}},
      {"the dashboard",
       {press("Sign In")},
       {{Role::button, "Menu"},
        {Role::button, "Find"},
        {Role::button, "Refresh"},
        {Role::button, "Add Another Child"},
        {Role::label, "3 Children"},
        {Role::label, "3 Online"},
        {Role::button, "Mia, 2 devices, 1 online"},
        {Role::listItem, "Mia's Phone, Online"},
        {Role::listItem, "Galaxy Tab, Offline"},
        {Role::button, "Add Device", "Mia"},
        {Role::button, "Add Device", "Zoe"},
        {Role::button, "Home Network"}},
       Front::none,
       {"Sign In"}},
      {"the menu",
       {press("Menu")},
       {{Role::menu, "Menu"},
        {Role::menuItem, "Settings"},
        {Role::menuItem, "Family Members"},
        {Role::menuItem, "Home Network"},
        {Role::menuItem, StartsWith("Theme: ")},
        {Role::menuItem, "Logout"}},
       Front::menu},
      {"a confirmation",
       {press("Logout")},
       {{Role::alert, "Logout?", "Are you sure you want to logout?"},
        {Role::button, "Cancel"},
        {Role::button, "Logout"}},
       Front::question,
       {"Family Members"}},
      {"the dashboard again", {press("Cancel")}, {{Role::button, "Menu"}}},
      {"the list of keys",
       {key("F1")},
       {{Role::dialog, "Keys"}, {Role::button, "Close"}, {Role::listItem, "Add a child", "Ctrl+N"}},
       Front::sheet},
      {"the settings",
       {press("Close"), press("Menu"), press("Settings")},
       {{Role::radio, "System", _, true},
        {Role::radio, "Light", _, false},
        {Role::radio, "Dark", _, false},
        {Role::button, "Family Members"},
        {Role::button, "Delete Account"},
        {Role::button, "Done"}},
       Front::page,
       {"Logout"}},
      {"the family",
       {press("Done"), press("Menu"), press("Family Members")},
       {{Role::listItem, "Ann Fielding", "ann@example.com, Active"},
        {Role::button, "Ben Fielding", "ben@example.com, Active"},
        {Role::listItem, StartsWith("Invite: ")},
        {Role::button, StartsWith("Revoke Invite: ")},
        {Role::button, "Invite"}},
       Front::page,
       {"Delete Account"}},
      {"the home network",
       {press("Done"), press("Home Network")},
       {{Role::label, "Connected"},
        {Role::listItem, "Registered IP:", MatchesRegex("[0-9.]+")},
        {Role::button, "Update Home Network IP"},
        {Role::button, "Done"}},
       Front::page,
       {"Ben Fielding"}},
      {"adding a child",
       {press("Done"), press("Add Another Child")},
       {{Role::dialog, "Add Child"},
        {Role::text, "Name"},
        {Role::text, "Birth Year (optional)"},
        {Role::button, "Create Child Profile"},
        {Role::button, "Cancel"}},
       Front::sheet,
       {"Update Home Network IP"}},
      {"adding a device",
       {press("Cancel"), press("Add Device", "Leo")},
       {{Role::dialog, "Add Device"},
        {Role::heading, "Add Device for Leo"},
        {Role::button, "Phone or Tablet"},
        {Role::button, "Game Console or Smart TV"}},
       Front::sheet,
       {"Create Child Profile"}},
      {"the scanner",
       {press("Phone or Tablet")},
       {{Role::button, "Choose Picture"},
        {Role::button, "Paste Code"},
        {Role::button, "Read From Screen"},
        {Role::button, "Enter Code"}},
       Front::sheet,
       {"Phone or Tablet"}},
      {"a code by hand",
       {press("Enter Code")},
       {{Role::text, "Enrollment Code", HasSubstr("under the QR code")},
        {Role::text, "Device Name (optional)"},
        {Role::button, "Scan Again"}},
       Front::sheet,
       {"Paste Code"}},
      {"adding a device again",
       {key("Escape")},
       {{Role::dialog, "Add Device"}, {Role::button, "Phone or Tablet"}},
       Front::sheet,
       {"Scan Again"}},
      {"a child's page",
       {press("Cancel"), press("Mia, 2 devices, 1 online")},
       {{Role::pageTab, "Real-Time"},
        {Role::pageTab, "Sites Blocked"},
        {Role::pageTab, "Sites Allowed"},
        {Role::label, "1/2 online"},
        {Role::listItem, "Mia's Phone", "Online now"},
        {Role::listItem, "Galaxy Tab", StartsWith("Last seen ")},
        {Role::checkBox, "Block the Internet", _, false},
        {Role::button, "Remove ads.example"},
        {Role::text, StartsWith("Add allowed site")},
        {Role::button, "Add", StartsWith("Add allowed site")},
        {Role::button, "Add", StartsWith("Add blocked site")},
        {Role::button, "Edit name"},
        {Role::button, "Delete Child Profile"}},
       Front::page,
       {"Enrollment Code", "Add Device for Leo"}},
      {"the menu of a row",
       {press("Galaxy Tab")},
       {{Role::menu, "Galaxy Tab"}, {Role::menuItem, "Unlink"}},
       Front::menu},
      {"blocked sites",
       {key("Escape"), press("Sites Blocked")},
       {{Role::heading, "Blocked Sites"},
        {Role::radio, "Real-Time", _, true},
        {Role::radio, "Last 5 min", _, false},
        {Role::radio, "Today", _, false}},
       Front::page,
       {"Unlink"}},
      {"allowed sites",
       {press("Sites Allowed")},
       {{Role::radio, "Real-Time", _, true}, {Role::radio, "Last Hour", _, false}},
       Front::page},
      {"all activity",
       {press("Real-Time"), press("See All Activity")},
       {{Role::dialog, "Mia's Activity"},
        {Role::radio, "All Devices", _, true},
        {Role::radio, "Mia's Phone", _, false},
        {Role::button, "Today", MatchesRegex("(No|[0-9]+) requests?.*"), true},
        {Role::button, "Find"},
        {Role::button, "Done"}},
       Front::sheet},
  };
}

std::vector<Step> signingIn() {
  return {press("I'm a Parent"), press("Continue"), write("Email", "ann@example.com"),
          write("Password", password), press("Sign In")};
}

TEST_F(SpokenWindow, says_what_everything_is_in_a_narrow_window) { walk(screens(), 390); }

TEST_F(SpokenWindow, says_what_everything_is_in_a_wide_window) { walk(screens(), 1400); }

TEST_F(SpokenWindow, chooses_by_radio_buttons_and_by_the_arrows_among_them) {
  session->resize(390);
  const auto expectChosen = [&](const std::string& region) {
    session->reader().listenUntil("waited for the choice of " + region, [&](const Elements& all) {
      return std::ranges::count_if(all, Expected{Role::radio, _, _, true}) == 1 &&
             find(all, {Role::radio, region, _, true});
    });
  };
  session->perform(press("I'm a Parent"));
  expectChosen("Australia");
  session->perform(Step{Step::Deed::press, "Singapore", {}, "Toggle"});
  expectChosen("Singapore");
  session->focus("Singapore");
  session->perform(key("Up"));
  expectChosen("New Zealand");
  session->perform(key("Down"));
  expectChosen("Singapore");
}

// A day of the last week to its hours, an hour to its sites.
TEST_F(SpokenWindow, comes_from_the_bars_of_the_charts_to_their_rows) {
  session->resize(1400);
  auto steps = signingIn();
  steps.push_back(press("Mia, 2 devices, 1 online"));
  steps.push_back(press("See All Activity"));
  const auto opened = hear({"all activity", steps, {{Role::panel, "Last 7 Days"}}, Front::sheet}, true);
  const auto day = fullestBar(opened, "Last 7 Days");
  const auto chosen =
      hear({"a day", {press(day)}, {{Role::button, day, _, true}, {Role::panel, day}}, Front::sheet}, true);
  const auto hour = fullestBar(chosen, day);
  hear({"an hour",
        {press(hour)},
        {{Role::button, hour, _, true},
         {Role::heading, hour},
         {Role::button, "Show Whole Day"},
         {Role::listItem, HasSubstr("."), HasSubstr("request")}},
        Front::sheet},
       true);
}

}  // namespace
}  // namespace quillmar
