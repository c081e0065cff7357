#pragma once

#include <charconv>
#include <functional>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

// The command line of a program, described in one table. The parser, the help text and the shells'
// completions all use that table.
namespace quillmar::command_line {

// Stores an option's text, which is empty for a switch. False if the text is no valid value.
using Take = std::function<bool(std::string_view text)>;

struct Option {
  std::string_view name;        // including the dashes
  std::string_view value = {};  // the value's name in the help; empty: a switch
  std::string_view help;
  Take take = {};
  std::string_view command = {};  // the only command that takes it; empty: any
  std::string_view letter = {};   // the short form
  bool isNeeded = false;
};

// A positional argument. All of them are required.
struct Argument {
  std::string_view name;
  std::string_view help = {};
  Take take = {};
};

struct Command {
  std::string_view name;
  std::string_view help;          // a line for the list of commands
  std::string_view details = {};  // its own help, in whole lines; empty: the program's
  std::function<void()> choose = {};
  std::vector<Argument> arguments = {};
};

// A row of a list in the help.
struct Entry {
  std::string written = {};
  std::string_view meaning = {};
};

// A list of words that are not given on the command line.
struct Glossary {
  std::string_view title = {};
  std::vector<Entry> entries = {};
};

struct Program {
  std::string_view name;
  std::string_view about;  // a paragraph
  std::string_view version = {};
  std::string_view versionLetter = {};
  std::vector<Command> commands = {};
  bool needsCommand = false;
  std::vector<Argument> arguments = {};  // without a command
  std::vector<Option> options = {};
  // Parsed by the toolkit itself, with one dash or two. Listed by --help-all.
  std::vector<Option> toolkitOptions = {};
  Glossary glossary = {};
  std::string_view notes = {};  // the end of the help, in whole lines
};

// The text that a program prints instead of doing its work.
struct Answer {
  enum class Reason { asked, wrongOption, wrongWord };
  Reason reason = Reason::asked;
  std::string text;
};

// A parsed command line: what to do, or what to say instead and what to end with.
template <class Options, class ExitStatus>
struct Parsed {
  Parsed(Options given) : options(std::move(given)) {}
  Parsed(const Answer& answer)
      : text(answer.text),
        status(answer.reason == Answer::Reason::asked ? ExitStatus::done : ExitStatus::usage) {}

  std::optional<Options> options;
  std::string text;
  ExitStatus status = ExitStatus::done;
};

// nullopt if the words were parsed; their values are then stored. If an option is repeated, the last value
// counts; after "--" no word is an option.
std::optional<Answer> read(const Program& program, std::span<const std::string> words);

// The answer of a program that finds an error itself.
Answer refusal(const Program& program, Answer::Reason reason, const std::string& problem);

// The arguments without the program's name.
std::vector<std::string> wordsOf(int count, char** arguments);

// Prints an answer to the right stream and returns the exit status: 0, 1 if it can't be written, or 2 for
// wrong usage.
int say(const Program& program, const Answer& answer);

// The text of --help or --help-all, or of a command's help.
std::string help(const Program& program, bool withToolkit = false);
std::string help(const Program& program, const Command& command);

// The program's options and those that every program has.
std::vector<Option> allOptions(const Program& program);
// The options of a command; with an empty name, those that belong to no command.
std::vector<Option> optionsOf(const Program& program, std::string_view command = {});

inline Take to(bool& target) {
  return [&target](std::string_view /*none*/) {
    target = true;
    return true;
  };
}

// Stores a text or a path, also in an optional.
template <class Text>
Take to(Text& target) {
  return [&target](std::string_view text) {
    target = std::string(text);
    return true;
  };
}

template <class Target, class Number>
Take within(Target& target, Number lowest, Number highest) {
  return [&target, lowest, highest](std::string_view text) {
    Number number{};
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool fits = read.ec == std::errc() && read.ptr == text.data() + text.size() && number >= lowest &&
                      number <= highest;
    if (fits) {
      target = number;
    }
    return fits;
  };
}

template <class Target>
Take oneOf(Target& target, std::initializer_list<std::pair<std::string_view, Target>> choices) {
  return [&target, known = std::vector(choices)](std::string_view text) {
    for (const auto& [word, value] : known) {
      if (word == text) {
        target = value;
        return true;
      }
    }
    return false;
  };
}

}  // namespace quillmar::command_line
