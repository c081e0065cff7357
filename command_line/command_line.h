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

// What a program understands on its command line, in one table. The words are read by it, and the help text
// and the shells' completions are made from it.
namespace quillmar::command_line {

// Keeps the text that was written, which for a switch is none. False where it is no value for this.
using Take = std::function<bool(std::string_view text)>;

struct Option {
  std::string_view name;        // with its dashes
  std::string_view value = {};  // the name of its value in the help; none: a switch
  std::string_view help;
  Take take = {};
  std::string_view command = {};  // which it belongs to; none: any
  std::string_view letter = {};   // its short form
  bool isNeeded = false;
};

// A word that stands by itself. All of them are needed.
struct Argument {
  std::string_view name;
  std::string_view help = {};
  Take take = {};
};

struct Command {
  std::string_view name;
  std::string_view help;          // a line for the list of commands
  std::string_view details = {};  // what its own help says, in whole lines; none: it is the program's
  std::function<void()> choose = {};
  std::vector<Argument> arguments = {};
};

struct Program {
  std::string_view name;
  std::string_view about;  // a paragraph
  std::string_view version = {};
  std::string_view versionLetter = {};
  std::vector<Command> commands = {};
  bool needsCommand = false;
  std::vector<Argument> arguments = {};  // where no command stands
  std::vector<Option> options = {};
  // Of the toolkit, which reads them itself, with one dash or two. Shown by --help-all.
  std::vector<Option> toolkitOptions = {};
  std::string_view notes = {};  // what else the help says, in whole lines
};

// What a program says in the place of its work.
struct Answer {
  enum class Reason { asked, wrongOption, wrongWord };
  Reason reason = Reason::asked;
  std::string text;
};

// Nothing where the words were understood, and all that was written has been kept. Of an option that stands
// there twice the second value counts; behind "--" no word is an option.
std::optional<Answer> read(const Program& program, std::span<const std::string> words);

// What a program says that finds something wrong by itself.
Answer refusal(const Program& program, Answer::Reason reason, const std::string& problem);

// The words after the program's name.
std::vector<std::string> wordsOf(int count, char** arguments);

// Writes an answer where it belongs, and returns the exit status: 0, or 2 for wrong usage.
int say(const Program& program, const Answer& answer);

// The text of --help, or of --help-all; or of one command.
std::string help(const Program& program, bool withToolkit = false);
std::string help(const Program& program, const Command& command);

// Its own options and those that every program has.
std::vector<Option> allOptions(const Program& program);
// Those of them that belong to a command; without a name those that belong to none.
std::vector<Option> optionsOf(const Program& program, std::string_view command = {});

inline Take to(bool& target) {
  return [&target](std::string_view /*none*/) {
    target = true;
    return true;
  };
}

// For a text, a path, and what may hold one.
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
