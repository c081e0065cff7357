#include "tests/programs/program_session.h"

#include <algorithm>
#include <map>

namespace quillmar::test {

namespace fs = std::filesystem;

Words operator+(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

ProgramSession::ProgramSession() { fs::permissions(runtime(), fs::perms::owner_all); }

Words ProgramSession::environment(Words variables) const {
  const std::map<std::string, std::string> own{{"PATH", "/usr/bin:/bin"},
                                               {"HOME", home().string()},
                                               {"XDG_RUNTIME_DIR", runtime().string()},
                                               {"LC_ALL", "C.UTF-8"},
                                               {"TERM", "xterm"}};
  for (const auto& [name, value] : own) {
    const auto isNamed = [start = name + '='](const std::string& word) { return word.starts_with(start); };
    if (std::ranges::none_of(variables, isNamed)) {
      variables.push_back(name + '=' + value);
    }
  }
  return variables;
}

Words ProgramSession::running(const Words& words, const Words& variables) const {
  return Words{"env", "-i"} + environment(variables) + words;
}

Words programFor(const std::string& program, const fs::path& dataDirectory, const sandbox::Service& service,
                 const Words& command) {
  return Words{program,
               "--data-dir",
               dataDirectory.string(),
               "--service",
               service.secureUrl(),
               "--ca-file",
               service.caFile().string(),
               "--simulate-tunnel"} +
         command;
}

}  // namespace quillmar::test
