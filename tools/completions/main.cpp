#include <array>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "command_line/command_line.h"
#include "command_line/completions.h"
#include "programs/agent/options.h"
#include "programs/quillmar/options.h"
#include "tunnel/options.h"

namespace {

using namespace quillmar::command_line;

struct Shell {
  std::string_view name;
  std::string (*write)(const Program&);
};
constexpr auto shells =
    std::to_array<Shell>({{"bash", bashCompletion}, {"zsh", zshCompletion}, {"fish", fishCompletion}});

bool writeAll(const Program& program, const std::filesystem::path& folder) {
  for (const auto& [shell, write] : shells) {
    std::ofstream file(folder / (std::string(program.name) + '.' + std::string(shell)));
    file << write(program);
    if (!file.flush()) {
      return false;
    }
  }
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  std::filesystem::path folder;
  const Program self{.name = "quillmar-completions",
                     .about = "Writes the shells' completions of the programs that are installed.",
                     .arguments = {{"FOLDER", "Where they go", to(folder)}}};
  if (const auto answer = read(self, quillmar::command_line::wordsOf(count, arguments))) {
    return say(self, *answer);
  }
  quillmar::Options window;
  quillmar::agent::Options agent;
  quillmar::tunnel::Options tunnel;
  return writeAll(quillmar::programFor(window), folder) &&
                 writeAll(quillmar::agent::programFor(agent), folder) &&
                 writeAll(quillmar::tunnel::programFor(tunnel), folder)
             ? 0
             : 1;
}
