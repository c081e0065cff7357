#include <getopt.h>

#include <csignal>
#include <iostream>
#include <string>
#include <thread>

#include "platform/common/authority_file.h"
#include "tools/driver/driver.h"

namespace {

constexpr const char* usage =
    "Usage: quillmar-driver [--data-dir DIR] [--service URL] [--ca-file FILE] [--clock real|virtual] "
    "[--events]\n"
    "Drives the application by JSON lines: one request a line on standard input, one answer a line on "
    "standard "
    "output.\n";

std::optional<quillmar::driver::Options> parse(int argc, char** argv) {
  const option known[] = {
      {"data-dir", required_argument, nullptr, 'd'}, {"service", required_argument, nullptr, 's'},
      {"ca-file", required_argument, nullptr, 'a'},  {"clock", required_argument, nullptr, 'c'},
      {"events", no_argument, nullptr, 'e'},         {nullptr, 0, nullptr, 0}};
  quillmar::driver::Options options;
  for (int letter = 0;
       (letter = getopt_long(argc, argv, "", known, nullptr)) != -1;) {  // NOLINT(concurrency-mt-unsafe)
    const std::string value = optarg ? optarg : "";
    switch (letter) {
      case 'd':
        options.dataDirectory = value;
        break;
      case 's':
        options.service = value;
        break;
      case 'a':
        options.caFile = value;
        break;
      case 'e':
        options.events = true;
        break;
      case 'c':
        if (value != "real" && value != "virtual") {
          return std::nullopt;
        }
        options.clock =
            value == "real" ? quillmar::driver::Clock::real : quillmar::driver::Clock::virtualTime;
        break;
      default:
        return std::nullopt;
    }
  }
  return optind == argc ? std::optional(options) : std::nullopt;
}

void writeLine(const std::string& line) { std::cout << line << std::endl; }  // NOLINT(performance-avoid-endl)

void driveInVirtualTime(quillmar::driver::Driver& driver) {
  for (std::string line; std::getline(std::cin, line);) {
    driver.handle(line);
  }
}

// Lines are read beside the main loop, so that timers fire while nobody asks anything.
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

int main(int argc, char** argv) {
  const auto options = parse(argc, argv);
  if (!options) {
    std::cerr << usage;
    return 2;
  }
  if (const auto problem = quillmar::problemWithAuthorities(options->caFile)) {
    std::cerr << "quillmar-driver: " << *problem << '\n';
    return quillmar::unusableAuthorities;
  }
  std::signal(SIGPIPE, SIG_IGN);
  quillmar::driver::Driver driver(*options, writeLine);
  if (options->clock == quillmar::driver::Clock::virtualTime) {
    driveInVirtualTime(driver);
  } else {
    driveInRealTime(driver);
  }
  return 0;
}
