#include "presentation/key_commands.h"

#include <algorithm>
#include <string>
#include <utility>

namespace quillmar {
namespace {

const KeyBinding& bindingOf(Command command) {
  return *std::ranges::find(keyBindings, command, &KeyBinding::command);
}

// The place of a key in a row that starts at the first key, from 0.
std::optional<std::int64_t> placeInRow(std::string_view key, const KeyBinding& row) {
  const auto [first, last] = row.keys;
  const bool isLike =
      key.size() == first.size() && key.substr(0, key.size() - 1) == first.substr(0, first.size() - 1);
  return isLike && key.back() >= first.back() && key.back() <= last.back()
             ? std::optional<std::int64_t>(key.back() - first.back())
             : std::nullopt;
}

}  // namespace

std::optional<KeyPress> keyPress(std::string_view key) {
  for (const KeyBinding& binding : keyBindings) {
    if (binding.isRow) {
      if (const auto place = placeInRow(key, binding)) {
        return KeyPress{binding.command, *place};
      }
    } else if (!key.empty() && std::ranges::find(binding.keys, key) != binding.keys.end()) {
      return KeyPress{binding.command};
    }
  }
  return std::nullopt;
}

std::string writtenKeys(const KeyBinding& binding) {
  const auto [first, second] = binding.keys;
  std::string written(first);
  return second.empty() ? written : written.append(binding.isRow ? " to " : " or ").append(second);
}

KeyCommands::KeyCommands(ObservableObject& screen, std::vector<Answer> answers)
    : Member(screen, "keyCommands", Kind::derived), answers_(std::move(answers)) {}

Member* KeyCommands::answerTo(Command command) const {
  const auto answer = std::ranges::find_if(answers_, [command](const Answer& known) {
    return known.command == command && known.action.isEnabled();
  });
  return answer == answers_.end() ? nullptr : &answer->action;
}

bool KeyCommands::press(const KeyPress& keys) const {
  Member* const action = answerTo(keys.command);
  const auto arguments = bindingOf(keys.command).isRow ? Value::List{keys.number} : Value::List();
  return action && action->perform(arguments);
}

std::string_view KeyCommands::keyOf(const Member& action) const {
  const auto answer = std::ranges::find(answers_, &action, [](const Answer& known) { return &known.action; });
  return answer == answers_.end() ? std::string_view() : bindingOf(answer->command).keys.front();
}

Value KeyCommands::value() const {
  Value::List listed;
  for (const KeyBinding& binding : keyBindings) {
    if (binding.isEverywhere || answers(binding.command)) {
      listed.emplace_back(Value::Map{{"keys", writtenKeys(binding)}, {"effect", binding.effect}});
    }
  }
  return listed;
}

}  // namespace quillmar
