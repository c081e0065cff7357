#include <algorithm>

#include "command_line/command_line.h"

namespace quillmar::command_line {
namespace {

constexpr std::size_t lineWidth = 80;
// The greatest width of the left column, so that the text at the right keeps enough room.
constexpr std::size_t widestLeft = 26;

std::string formOf(const Option& option) {
  std::string form = option.letter.empty() ? "" : std::string(option.letter) + ", ";
  form += option.name;
  return option.value.empty() ? form : form + ' ' + std::string(option.value);
}

std::string wordsOf(const std::vector<Argument>& arguments) {
  std::string words;
  for (const Argument& argument : arguments) {
    words += ' ' + std::string(argument.name);
  }
  return words;
}

// For example "enroll [--autostart]".
std::string formOf(const Program& program, const Command& command) {
  std::string form = std::string(command.name) + wordsOf(command.arguments);
  for (const Option& option : optionsOf(program, command.name)) {
    form += option.isNeeded ? ' ' + formOf(option) : " [" + formOf(option) + ']';
  }
  return form;
}

std::string commandsForm(const Program& program) {
  if (program.needsCommand) {
    return " COMMAND";
  }
  std::string names;
  for (const Command& command : program.commands) {
    names += (names.empty() ? "" : "|") + std::string(command.name) + wordsOf(command.arguments);
  }
  return names.empty() ? "" : " [" + names + ']';
}

std::vector<Entry> commandEntries(const Program& program) {
  std::vector<Entry> entries(program.commands.size());
  std::ranges::transform(program.commands, entries.begin(), [&](const Command& command) {
    return Entry{formOf(program, command), command.help};
  });
  return entries;
}

std::vector<Entry> argumentEntries(const std::vector<Argument>& arguments) {
  std::vector<Entry> entries(arguments.size());
  std::ranges::transform(arguments, entries.begin(), [](const Argument& argument) {
    return Entry{std::string(argument.name), argument.help};
  });
  return entries;
}

std::vector<Entry> optionEntries(const std::vector<Option>& options) {
  std::vector<Entry> entries(options.size());
  std::ranges::transform(options, entries.begin(), [](const Option& option) {
    return Entry{formOf(option), option.help};
  });
  return entries;
}

std::vector<Entry> sharedEntries(const Program& program) {
  auto entries = optionEntries(optionsOf(program));
  if (std::ranges::any_of(program.commands,
                          [](const Command& command) { return !command.details.empty(); })) {
    entries.push_back({"COMMAND --help", "Show the help of a command"});
  }
  return entries;
}

std::size_t columnFor(const std::vector<Entry>& entries) {
  std::size_t widest = 0;
  for (const Entry& entry : entries) {
    widest = entry.written.size() <= widestLeft ? std::max(widest, entry.written.size()) : widest;
  }
  constexpr std::size_t margins = 4;
  return widest + margins;
}

// The text from this column on, wrapped at words.
std::string inColumn(std::string_view text, std::size_t column) {
  std::string lines;
  while (text.size() > lineWidth - column) {
    const auto space = text.rfind(' ', lineWidth - column);
    const auto end = space == std::string_view::npos ? text.size() : space;
    lines += std::string(text.substr(0, end)) + '\n' + std::string(column, ' ');
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines + std::string(text) + '\n';
}

std::string list(const std::vector<Entry>& entries, std::size_t column) {
  std::string lines;
  for (const Entry& entry : entries) {
    std::string left = "  " + entry.written;
    if (left.size() + 2 > column) {
      lines += left + '\n';
      left.clear();
    }
    left.resize(column, ' ');
    lines += left + inColumn(entry.meaning, column);
  }
  return lines;
}

}  // namespace

std::string help(const Program& program, bool withToolkit) {
  const std::vector<std::pair<std::string_view, std::vector<Entry>>> lists{
      {"Commands", commandEntries(program)},
      {"Arguments", argumentEntries(program.arguments)},
      {"Options", sharedEntries(program)},
      {"Options of the toolkit", withToolkit ? optionEntries(program.toolkitOptions) : std::vector<Entry>()},
      {program.glossary.title, program.glossary.entries}};
  std::size_t column = 0;
  for (const auto& [title, entries] : lists) {
    column = std::max(column, columnFor(entries));
  }
  std::string text = "Usage: " + std::string(program.name) + " [OPTION]..." + commandsForm(program) +
                     wordsOf(program.arguments) + "\n\n" + inColumn(program.about, 0);
  for (const auto& [title, entries] : lists) {
    if (!entries.empty()) {
      text += '\n' + std::string(title) + ":\n" + list(entries, column);
    }
  }
  return program.notes.empty() ? text : text + '\n' + std::string(program.notes);
}

std::string help(const Program& program, const Command& command) {
  if (command.details.empty()) {
    return help(program);
  }
  const auto options = optionEntries(optionsOf(program, command.name));
  std::string text = "Usage: " + std::string(program.name) + ' ' + formOf(program, command) + "\n\n" +
                     std::string(command.details);
  return options.empty() ? text : text + '\n' + list(options, columnFor(options));
}

}  // namespace quillmar::command_line
