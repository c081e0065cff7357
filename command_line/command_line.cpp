#include "command_line/command_line.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace quillmar::command_line {
namespace {

using Reason = Answer::Reason;

const Option helpOption{.name = "--help", .help = "Show this help", .letter = "-h"};
const Option versionOption{.name = "--version", .help = "Show the version"};
const Option helpAllOption{.name = "--help-all", .help = "The options of the toolkit, too"};

std::string quoted(std::string_view word) { return "'" + std::string(word) + "'"; }

bool isNamed(const Option& option, std::string_view word) {
  return option.name == word || (!option.letter.empty() && option.letter == word);
}

// Parses the words in order. An error stops it; --help or --version takes effect only after all words are
// parsed.
class Reader {
 public:
  Reader(const Program& program, std::span<const std::string> words)
      : program_(program), options_(allOptions(program)), words_(words) {}

  std::optional<Answer> read() {
    while (!words_.empty() && !problem_) {
      const std::string_view word = next();
      if (hasEnded_ || !word.starts_with('-') || word == "-") {
        takeWord(word);
      } else if (word == "--") {
        hasEnded_ = true;
      } else if (!isOfToolkit(word)) {
        takeOption(word);
      }
    }
    if (!problem_ && !isAskedFor(helpOption) && !isAskedFor(versionOption) && !isAskedFor(helpAllOption)) {
      lookForWhatIsMissing();
    }
    return problem_ ? problem_ : askedFor();
  }

 private:
  std::string_view next() {
    const std::string& word = words_.front();
    words_ = words_.subspan(1);
    return word;
  }

  void refuse(Reason reason, const std::string& problem) {
    if (!problem_) {
      problem_ = refusal(program_, reason, problem);
    }
  }

  bool isOfToolkit(std::string_view word) {
    const auto single = word.starts_with("--") ? word.substr(1) : word;
    const auto known = std::ranges::find(program_.toolkitOptions, single, &Option::name);
    if (known == program_.toolkitOptions.end()) {
      return false;
    }
    if (!known->value.empty()) {
      valueOf(*known, std::nullopt);
    }
    return true;
  }

  void takeOption(std::string_view word) {
    const auto equals = word.find('=');
    const auto name = word.substr(0, equals);
    const auto known =
        std::ranges::find_if(options_, [name](const Option& option) { return isNamed(option, name); });
    if (known == options_.end()) {
      refuse(Reason::wrongOption, "there is no option " + quoted(word) + '.');
      return;
    }
    given_.push_back(known->name);
    if (!known->command.empty()) {
      commandsOptions_.push_back(&*known);
    }
    const auto written =
        equals == std::string_view::npos ? std::nullopt : std::optional(word.substr(equals + 1));
    if (!known->value.empty()) {
      keep(*known, valueOf(*known, written));
    } else if (written) {
      refuse(Reason::wrongOption, "the option " + quoted(name) + " takes no value.");
    } else {
      keep(*known, "");
    }
  }

  // Accepts "--name value" and "--name=value".
  std::optional<std::string_view> valueOf(const Option& option, std::optional<std::string_view> written) {
    if (!written && words_.empty()) {
      refuse(Reason::wrongOption, "the option " + quoted(option.name) + " needs a value.");
      return std::nullopt;
    }
    return written ? written : next();
  }

  void keep(const Option& option, std::optional<std::string_view> text) {
    if (text && option.take && !option.take(*text)) {
      refuse(Reason::wrongOption, "the option " + quoted(option.name) + " can't be " + quoted(*text) + '.');
    }
  }

  void takeWord(std::string_view word) {
    if (const auto known = std::ranges::find(program_.commands, word, &Command::name);
        known != program_.commands.end() && !command_ && arguments_ == 0) {
      command_ = &*known;
      if (command_->choose) {
        command_->choose();
      }
      return;
    }
    const auto& expected = expectedArguments();
    if (arguments_ < expected.size()) {
      const Argument& argument = expected[arguments_++];
      if (argument.take && !argument.take(word)) {
        refuse(Reason::wrongWord, std::string(argument.name) + " can't be " + quoted(word) + '.');
      }
    } else if (expected.empty()) {
      refuse(Reason::wrongWord, "there is no command " + quoted(word) + '.');
    } else {
      refuse(Reason::wrongWord, quoted(word) + " is one word too many.");
    }
  }

  const std::vector<Argument>& expectedArguments() const {
    return command_ ? command_->arguments : program_.arguments;
  }

  void lookForWhatIsMissing() {
    if (program_.needsCommand && !command_) {
      refuse(Reason::wrongWord, "a command is missing.");
    }
    if (const auto& expected = expectedArguments(); arguments_ < expected.size()) {
      refuse(Reason::wrongWord, std::string(expected[arguments_].name) + " is missing.");
    }
    for (const Option& option : options_) {
      if (option.isNeeded && isOfThisCommand(option) && !isAskedFor(option)) {
        refuse(Reason::wrongOption, "the option " + quoted(option.name) + " is missing.");
      }
    }
    for (const Option* option : commandsOptions_) {
      if (!isOfThisCommand(*option)) {
        refuse(Reason::wrongOption,
               "the option " + quoted(option->name) + " belongs to " + quoted(option->command) + '.');
      }
    }
  }

  bool isOfThisCommand(const Option& option) const {
    return option.command.empty() || (command_ && option.command == command_->name);
  }

  bool isAskedFor(const Option& option) const {
    return std::ranges::find(given_, option.name) != given_.end();
  }

  std::optional<Answer> askedFor() const {
    if (isAskedFor(versionOption)) {
      return Answer{Reason::asked, std::string(program_.name) + ' ' + std::string(program_.version) + '\n'};
    }
    if (isAskedFor(helpAllOption)) {
      return Answer{Reason::asked, help(program_, true)};
    }
    if (isAskedFor(helpOption)) {
      return Answer{Reason::asked, command_ ? help(program_, *command_) : help(program_)};
    }
    return std::nullopt;
  }

  const Program& program_;
  const std::vector<Option> options_;
  std::span<const std::string> words_;
  const Command* command_ = nullptr;
  std::size_t arguments_ = 0;
  std::vector<std::string_view> given_;
  std::vector<const Option*> commandsOptions_;
  bool hasEnded_ = false;
  std::optional<Answer> problem_;
};

}  // namespace

std::optional<Answer> read(const Program& program, std::span<const std::string> words) {
  return Reader(program, words).read();
}

Answer refusal(const Program& program, Reason reason, const std::string& problem) {
  return {reason, problem + "\nTry '" + std::string(program.name) + " --help'."};
}

std::vector<std::string> wordsOf(int count, char** arguments) {
  return count > 0 ? std::vector<std::string>(arguments + 1, arguments + count) : std::vector<std::string>();
}

int say(const Program& program, const Answer& answer) {
  constexpr int wrongUsage = 2;
  const auto complain = [&](const std::string& text) {
    std::fputs((std::string(program.name) + ": " + text + '\n').c_str(), stderr);
  };
  if (answer.reason != Reason::asked) {
    complain(answer.text);
    return wrongUsage;
  }
  if (std::fputs(answer.text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0) {
    return 0;
  }
  complain("The output can't be written: " + std::generic_category().message(errno) + '.');
  return 1;
}

std::vector<Option> allOptions(const Program& program) {
  std::vector<Option> options = program.options;
  options.push_back(helpOption);
  if (!program.toolkitOptions.empty()) {
    options.push_back(helpAllOption);
  }
  if (!program.version.empty()) {
    options.push_back(versionOption);
    options.back().letter = program.versionLetter;
  }
  return options;
}

std::vector<Option> optionsOf(const Program& program, std::string_view command) {
  auto options = allOptions(program);
  std::erase_if(options, [command](const Option& option) { return option.command != command; });
  return options;
}

}  // namespace quillmar::command_line
