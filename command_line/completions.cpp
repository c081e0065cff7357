#include "command_line/completions.h"

#include <algorithm>
#include <functional>

namespace quillmar::command_line {
namespace {

constexpr std::string_view folder = "DIR";
constexpr std::string_view file = "FILE";

// A short description for a list: the beginning of the help.
std::string brief(std::string_view help) { return std::string(help.substr(0, help.find_first_of(".:;"))); }

// Puts a text in single quotes; `quote` is the shell's escape for a single quote inside.
std::string quoted(const std::string& text, std::string_view quote) {
  std::string result = "'";
  for (const char c : text) {
    if (c == '\'') {
      result += quote;
    } else {
      result += c;
    }
  }
  return result + '\'';
}

std::string joined(const std::vector<std::string>& words, std::string_view between) {
  std::string text;
  for (const std::string& word : words) {
    text += (text.empty() ? "" : std::string(between)) + word;
  }
  return text;
}

std::vector<std::string> namesOf(const std::vector<Option>& options,
                                 const std::function<bool(const Option&)>& suits = {}) {
  std::vector<std::string> names;
  for (const Option& option : options) {
    if (!suits || suits(option)) {
      names.emplace_back(option.name);
    }
  }
  return names;
}

std::vector<std::string> namesOf(const std::vector<Command>& commands) {
  std::vector<std::string> names(commands.size());
  std::ranges::transform(commands, names.begin(), &Command::name);
  return names;
}

std::string firstLine(std::string_view start, const Program& program) {
  return std::string(start) + std::string(program.name) + '\n';
}

// A branch of bash's "case" for some words; empty if there are none.
std::string bashCase(const std::vector<std::string>& words, const std::string& deed) {
  return words.empty() ? "" : "    " + joined(words, " | ") + ") " + deed + " ;;\n";
}

std::string zshSpecification(const Option& option) {
  const std::string_view action = option.value == folder ? "_files -/" : option.value == file ? "_files" : "";
  std::string rest = '[' + brief(option.help) + ']';
  if (!option.value.empty()) {
    rest.append(":").append(option.value).append(":").append(action);
  }
  const std::string name(option.name);
  return option.letter.empty() ? quoted(name + rest, "'\\''")
                               : '{' + std::string(option.letter) + ',' + name + '}' + quoted(rest, "'\\''");
}

std::string zshList(const std::vector<Option>& options, std::string_view indent) {
  std::string list;
  for (const Option& option : options) {
    list += std::string(indent) + zshSpecification(option) + '\n';
  }
  return list;
}

std::string fishLine(const Program& program, const std::string& condition, const std::string& rest,
                     std::string_view help) {
  return "complete -c " + std::string(program.name) + (condition.empty() ? "" : " -n " + condition) + rest +
         " -d " + quoted(brief(help), "\\'") + '\n';
}

std::string fishOption(const Option& option) {
  std::string text = option.letter.empty() ? "" : " -s " + std::string(option.letter.substr(1));
  text += " -l " + std::string(option.name.substr(2));
  if (option.value == folder) {
    return text + " -x -a '(__fish_complete_directories)'";
  }
  return text + (option.value == file ? " -r -F" : option.value.empty() ? "" : " -x");
}

}  // namespace

std::string bashCompletion(const Program& program) {
  std::string function = "_" + std::string(program.name);
  std::ranges::replace(function, '-', '_');
  const auto all = allOptions(program);
  const auto valued = [](std::string_view value) {
    return [value](const Option& option) { return option.value == value; };
  };
  const auto others = [](const Option& option) {
    return !option.value.empty() && option.value != folder && option.value != file;
  };
  std::string text = firstLine("# bash completion for ", program) + function + R"(() {
  local word=${COMP_WORDS[COMP_CWORD]} command= index words
  COMPREPLY=()
  case ${COMP_WORDS[COMP_CWORD - 1]} in
)";
  text += bashCase(
      namesOf(all, valued(folder)),
      "mapfile -t COMPREPLY < <(compgen -d -- \"$word\") && compopt -o filenames 2>/dev/null; return");
  text += bashCase(
      namesOf(all, valued(file)),
      "mapfile -t COMPREPLY < <(compgen -f -- \"$word\") && compopt -o filenames 2>/dev/null; return");
  text += bashCase(namesOf(all, others), "return");
  text += R"(  esac
  for ((index = 1; index < COMP_CWORD; ++index)); do
    case ${COMP_WORDS[index]} in
)";
  text += "  " +
          bashCase(namesOf(all, [](const Option& option) { return !option.value.empty(); }), "((++index))");
  text += R"(      -*) ;;
      *) command=${COMP_WORDS[index]} && break ;;
    esac
  done
  case $command in
)";
  text += bashCase({"''"}, "words='" + joined(namesOf(program.commands), " ") + "'");
  for (const Command& command : program.commands) {
    text += bashCase({std::string(command.name)},
                     "words='" + joined(namesOf(optionsOf(program, command.name)), " ") + "'");
  }
  return text + "  esac\n  mapfile -t COMPREPLY < <(compgen -W \"$words " +
         joined(namesOf(optionsOf(program)), " ") + "\" -- \"$word\")\n}\ncomplete -F " + function + ' ' +
         std::string(program.name) + '\n';
}

std::string zshCompletion(const Program& program) {
  std::string text = firstLine("#compdef ", program) + R"(
local context state state_descr line
typeset -A opt_args
local -a shared=(
)" + zshList(optionsOf(program), "  ") +
                     R"()

_arguments -S -C $shared '1:command:->command' '*::argument:->argument'

case $state in
  command)
    local -a commands=(
)";
  for (const Command& command : program.commands) {
    text += "      " + quoted(std::string(command.name) + ':' + brief(command.help), "'\\''") + '\n';
  }
  text += R"(    )
    _describe command commands
    ;;
  argument)
    local -a own=()
    case $line[1] in
)";
  for (const Command& command : program.commands) {
    if (const auto own = optionsOf(program, command.name); !own.empty()) {
      text += "      " + std::string(command.name) + ") own=(\n" + zshList(own, "        ") + "      ) ;;\n";
    }
  }
  return text + R"(    esac
    _arguments -S $shared $own
    ;;
esac
)";
}

std::string fishCompletion(const Program& program) {
  std::string text =
      firstLine("# fish completion for ", program) + "complete -c " + std::string(program.name) + " -f\n";
  for (const Command& command : program.commands) {
    text += fishLine(program, "__fish_use_subcommand", " -a " + std::string(command.name), command.help);
  }
  for (const Option& option : allOptions(program)) {
    const std::string condition =
        option.command.empty() ? "" : "'__fish_seen_subcommand_from " + std::string(option.command) + "'";
    text += fishLine(program, condition, fishOption(option), option.help);
  }
  return text;
}

}  // namespace quillmar::command_line
