#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/sandbox/support/run_command.h"

namespace quillmar {

using sandbox::test::CommandResult;
using sandbox::test::runCommand;
using sandbox::test::RunningProgram;

// A program of the test's that ends with it, however the test ends.
inline std::vector<std::string> endingWithTheTest(std::vector<std::string> words) {
  words.insert(words.begin(), {"setpriv", "--pdeathsig", "KILL"});
  return words;
}

// A message bus of its own, on which everybody may do everything.
class PrivateBus {
 public:
  explicit PrivateBus(const std::filesystem::path& directory)
      : socket_(directory / "bus"), daemon_(endingWithTheTest(command(directory))) {
    running_ = !daemon_.readLine().empty();
  }

  bool running() const { return running_; }
  const std::filesystem::path& socket() const { return socket_; }
  std::string address() const { return "unix:path=" + socket_.string(); }

  // The words that run a program which finds this bus in the place of the system's and the session's.
  std::vector<std::string> joining(std::vector<std::string> words) const {
    words.insert(words.begin(),
                 {"env", "DBUS_SYSTEM_BUS_ADDRESS=" + address(), "DBUS_SESSION_BUS_ADDRESS=" + address()});
    return words;
  }
  CommandResult run(std::vector<std::string> words) const { return runCommand(joining(std::move(words))); }
  // Until somebody owns the name.
  bool waitFor(const std::string& name) const {
    return run({"gdbus", "wait", "--system", "--timeout", "30", name}).status == 0;
  }

 private:
  std::vector<std::string> command(const std::filesystem::path& directory) const {
    std::filesystem::permissions(directory, std::filesystem::perms(0755));
    const auto config = directory / "bus.conf";
    std::ofstream(config) << "<busconfig><type>system</type><listen>" << address()
                          << "</listen><auth>EXTERNAL</auth>"
                          << "<policy context='default'><allow user='*'/><allow own='*'/>"
                          << "<allow send_destination='*'/><allow eavesdrop='true'/></policy></busconfig>";
    // It complains of limits it may not raise.
    return {"sh", "-c",
            "exec dbus-daemon --nofork --config-file='" + config.string() + "' --print-address 2>/dev/null"};
  }

  const std::filesystem::path socket_;
  RunningProgram daemon_;
  bool running_ = false;
};

}  // namespace quillmar
