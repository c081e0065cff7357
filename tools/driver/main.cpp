#include <csignal>
#include <iostream>
#include <string>
#include <thread>

#include "command_line/command_line.h"
#include "tools/common/start.h"
#include "tools/driver/driver.h"

namespace {

using quillmar::driver::Clock;
using quillmar::driver::Options;

quillmar::command_line::Program programFor(Options& options) {
  using namespace quillmar::command_line;
  return {.name = "quillmar-driver",
          .about =
              "Drives the application by JSON lines: one request a line on standard input, one answer a line "
              "on standard output.",
          .options =
              {
                  {"--data-dir", "DIR", "Keep everything in DIR", to(options.dataDirectory)},
                  {"--service", "URL", "Use the service at URL for every region", to(options.service)},
                  quillmar::authorityOption(options.caFile),
                  {"--clock", "real|virtual", "Real or virtual time (real)",
                   oneOf(options.clock, {{"real", Clock::real}, {"virtual", Clock::virtualTime}})},
                  {"--events", "", "Write a line for each change", to(options.events)},
              },
          .glossary = quillmar::driver::Driver::requests()};
}

void writeLine(const std::string& line) { std::cout << line << std::endl; }  // NOLINT(performance-avoid-endl)

void driveInVirtualTime(quillmar::driver::Driver& driver) {
  for (std::string line; std::getline(std::cin, line);) {
    driver.handle(line);
  }
}

// Lines are read on their own thread, so that timers fire between requests.
void driveInRealTime(quillmar::driver::Driver& driver) {
  auto& loop = *driver.machine().realTime();
  std::thread reader([&] {
    for (std::string line; std::getline(std::cin, line);) {
      loop.main().async([&driver, line] { driver.handle(line); });
    }
    loop.main().async([&loop] { loop.stop(); });
  });
  loop.run();
  reader.join();
}

}  // namespace

int main(int count, char** arguments) {
  Options options;
  const auto program = programFor(options);
  if (const auto status = quillmar::endsAtOnce(program, count, arguments, options.caFile)) {
    return *status;
  }
  std::signal(SIGPIPE, SIG_IGN);
  quillmar::driver::Driver driver(options, writeLine);
  if (options.clock == Clock::virtualTime) {
    driveInVirtualTime(driver);
  } else {
    driveInRealTime(driver);
  }
  return 0;
}
