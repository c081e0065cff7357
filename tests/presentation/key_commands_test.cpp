#include "presentation/key_commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quillmar {
namespace {

using testing::ElementsAre;

class KeyedScreen final : public ObservableObject {
 public:
  KeyedScreen() : ObservableObject("KeyedScreen") {}

  Published<bool> isBusy{*this, "isBusy", false};
  Published<std::string> done{*this, "done"};

  Action<> reload{*this, "reload", [this] { done = "reload"; }, [this] { return !isBusy(); }};
  Action<> leave{*this, "leave", [this] { done = "leave"; }, [this] { return isBusy(); }};
  Action<> cancel{*this, "cancel", [this] { done = "cancel"; }};
  Action<std::int64_t> choose{*this, "choose",
                              [this](std::int64_t place) { done = "choose " + std::to_string(place); }};
  Action<> unbound{*this, "unbound", [this] { done = "unbound"; }};
  KeyCommands keys{*this,
                   {{Command::refresh, reload},
                    {Command::choose, choose},
                    {Command::back, leave},
                    {Command::back, cancel}}};

  std::string press(std::string_view key) {
    done = "";
    const auto asked = keyPress(key);
    const bool isPerformed = asked && keys.press(*asked);
    EXPECT_EQ(isPerformed, !done().empty()) << key;
    return done();
  }
};

std::vector<std::string> listed(const KeyCommands& keys, std::string_view field) {
  std::vector<std::string> texts;
  const Value rows = keys.value();
  for (const Value& row : *rows.list()) {
    texts.push_back(*row.find(field)->string());
  }
  return texts;
}

TEST(KeyBindings, give_each_key_one_meaning) {
  std::set<std::string_view> keys;
  std::set<Command> commands;
  for (const KeyBinding& binding : keyBindings) {
    EXPECT_TRUE(commands.insert(binding.command).second) << binding.effect;
    EXPECT_FALSE(binding.effect.empty());
    for (const auto key : binding.keys) {
      EXPECT_TRUE(key.empty() || keys.insert(key).second) << key;
    }
  }
}

TEST(KeyBindings, know_their_keys_and_no_others) {
  EXPECT_EQ(keyPress("F5"), (KeyPress{Command::refresh}));
  EXPECT_EQ(keyPress("Ctrl+R"), (KeyPress{Command::refresh}));
  EXPECT_EQ(keyPress("Ctrl+F"), (KeyPress{Command::find}));
  EXPECT_EQ(keyPress("Ctrl+N"), (KeyPress{Command::add}));
  EXPECT_EQ(keyPress("Ctrl+,"), (KeyPress{Command::settings}));
  EXPECT_EQ(keyPress("Alt+Left"), (KeyPress{Command::back}));
  EXPECT_EQ(keyPress("Esc"), (KeyPress{Command::back}));
  EXPECT_EQ(keyPress("F1"), (KeyPress{Command::listKeys}));
  for (const char* const key : {"", "F", "F55", "R", "Ctrl+Shift+R", "Left", "Ctrl+", "1"}) {
    EXPECT_EQ(keyPress(key), std::nullopt) << key;
  }
}

TEST(KeyBindings, count_a_row_of_digits_from_its_first) {
  EXPECT_EQ(keyPress("Ctrl+1"), (KeyPress{Command::choose, 0}));
  EXPECT_EQ(keyPress("Ctrl+9"), (KeyPress{Command::choose, 8}));
  EXPECT_EQ(keyPress("Ctrl+0"), std::nullopt);
  EXPECT_EQ(keyPress("Ctrl+10"), std::nullopt);
  EXPECT_EQ(keyPress("Alt+1"), std::nullopt);
}

TEST(KeyBindings, are_those_of_the_manual) {
  std::ifstream file(QUILLMAR_PROGRAM_MANUAL);
  const std::string manual{std::istreambuf_iterator<char>(file), {}};
  std::string list = ".Bl -tag -width Ds\n";
  for (const KeyBinding& binding : keyBindings) {
    list.append(".It ").append(writtenKeys(binding)).append("\n").append(binding.effect).append(".\n");
  }
  EXPECT_THAT(manual, testing::HasSubstr(list + ".El\n"));
}

TEST(KeyCommands, perform_the_actions_of_their_screen) {
  KeyedScreen screen;
  EXPECT_EQ(screen.press("F5"), "reload");
  EXPECT_EQ(screen.press("Ctrl+R"), "reload");
  EXPECT_EQ(screen.press("Ctrl+3"), "choose 2");
}

TEST(KeyCommands, do_nothing_that_the_screen_does_not_offer) {
  KeyedScreen screen;
  EXPECT_EQ(screen.press("Ctrl+N"), "");
  EXPECT_EQ(screen.press("Ctrl+,"), "");
}

TEST(KeyCommands, do_nothing_while_the_control_is_disabled) {
  KeyedScreen screen;
  screen.isBusy = true;
  EXPECT_EQ(screen.press("F5"), "");
}

TEST(KeyCommands, take_the_first_action_that_is_enabled) {
  KeyedScreen screen;
  EXPECT_EQ(screen.press("Esc"), "cancel");
  screen.isBusy = true;
  EXPECT_EQ(screen.press("Esc"), "leave");
}

TEST(KeyCommands, list_what_they_do_now) {
  KeyedScreen screen;
  EXPECT_THAT(listed(screen.keys, "keys"),
              ElementsAre("F5 or Ctrl+R", "Ctrl+1 to Ctrl+9", "Alt+Left or Esc", "F1", "Ctrl+W or Ctrl+Q"));
  screen.isBusy = true;
  EXPECT_THAT(listed(screen.keys, "effect"), ElementsAre("Open the first to the ninth child", "Go back",
                                                         "List the keys", "Close the window"));
}

TEST(KeyCommands, tell_the_key_of_an_action) {
  const KeyedScreen screen;
  EXPECT_EQ(screen.keys.keyOf(screen.reload), "F5");
  EXPECT_EQ(screen.keys.keyOf(screen.cancel), "Alt+Left");
  EXPECT_EQ(screen.keys.keyOf(screen.unbound), "");
}

}  // namespace
}  // namespace quillmar
