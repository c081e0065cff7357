#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "foundation/observable.h"

// The keys that work on many screens. One table names them: shortcuts, tooltips, the list of keys and the
// manual are made from it.
namespace quillmar {

enum class Command { refresh, find, add, settings, choose, back, listKeys, close };

struct KeyBinding {
  Command command;
  // The first is shown in tooltips.
  std::array<std::string_view, 2> keys;
  // The effect of the keys, as the list of keys shows it.
  std::string_view effect;
  // The keys are the first and the last of a row of digits.
  bool isRow = false;
  // Handled by the window itself, whatever it shows.
  bool isEverywhere = false;
};

inline constexpr auto keyBindings = std::to_array<KeyBinding>({
    {Command::refresh, {"F5", "Ctrl+R"}, "Refresh, or try again"},
    {Command::find, {"Ctrl+F"}, "Find in the lists"},
    {Command::add, {"Ctrl+N"}, "Add a child"},
    {Command::choose, {"Ctrl+1", "Ctrl+9"}, "Open the first to the ninth child", true},
    {Command::settings, {"Ctrl+,"}, "Open the settings"},
    {Command::back, {"Alt+Left", "Esc"}, "Go back"},
    {Command::listKeys, {"F1"}, "List the keys", false, true},
    {Command::close, {"Ctrl+W", "Ctrl+Q"}, "Close the window", false, true},
});

// The command of a pressed key.
struct KeyPress {
  Command command;
  // The index in a row of keys, from 0.
  std::int64_t number = 0;

  friend bool operator==(const KeyPress& one, const KeyPress& other) = default;
};

// Parses a key as written in the table.
std::optional<KeyPress> keyPress(std::string_view key);
// "F5, Ctrl+R"; a row of keys as "Ctrl+1 to Ctrl+9".
std::string writtenKeys(const KeyBinding& binding);

// Which actions of a screen its keys perform. A key does what a control of the screen could do now: nothing
// if the action is disabled.
class KeyCommands final : public Member {
 public:
  struct Answer {
    Command command;
    // Takes the number if the keys are a row, else nothing.
    Member& action;
  };

  // If a command has several actions, the first enabled one is performed.
  KeyCommands(ObservableObject& screen, std::vector<Answer> answers);

  // False if no enabled action answers.
  bool press(const KeyPress& keys) const;
  bool answers(Command command) const { return answerTo(command) != nullptr; }
  // The key for the action's tooltip; empty if it has none.
  std::string_view keyOf(const Member& action) const;

  // The keys that do something now, as records of `keys` and `effect`.
  Value value() const override;

 private:
  Member* answerTo(Command command) const;

  std::vector<Answer> answers_;
};

}  // namespace quillmar
