#include <malloc.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "command_line/standard_streams.h"
#include "platform/linux/process_privacy.h"
#include "programs/agent/commands.h"
#include "programs/agent/terminal.h"

namespace {

using namespace quillmar::agent;

constexpr std::array<std::pair<Command, ExitStatus (*)(const Options&)>, 6> commands{{
    {Command::enroll, enroll},
    {Command::run, run},
    {Command::status, tellStatus},
    {Command::sync, sync},
    {Command::reset, reset},
    {Command::doctor, examine},
}};

ExitStatus carryOut(const Options& options) {
  if (const auto problem = quillmar::problemWithAuthorities(options.caFile)) {
    complain(*problem);
    return ExitStatus::noAuthorities;
  }
  for (const auto& [command, work] : commands) {
    if (command == options.command) {
      return work(options);
    }
  }
  return ExitStatus::usage;
}

ExitStatus answer(const Parsed& parsed) {
  if (parsed.status == ExitStatus::done) {
    return writeAnswer(parsed.text) ? ExitStatus::done : ExitStatus::failed;
  }
  complain(parsed.text);
  return parsed.status;
}

}  // namespace

int main(int count, char** arguments) {
  // A few threads that do little: one malloc arena per thread would be most of the memory.
  mallopt(M_ARENA_MAX, 1);  // NOLINT(concurrency-mt-unsafe): there is no other thread yet
  quillmar::command_line::holdStandardStreams();
  quillmar::keepNewFilesPrivate();
  quillmar::forbidCoreDumps();
  quillmar::forbidInspection();
  const auto parsed = parse(std::vector<std::string>(arguments + 1, arguments + count));
  if (!parsed.options) {
    return static_cast<int>(answer(parsed));
  }
  return static_cast<int>(carryOut(*parsed.options));
}
