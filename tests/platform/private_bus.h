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

// A program that is killed with the test, however the test ends.
inline std::vector<std::string> endingWithTheTest(std::vector<std::string> words) {
  words.insert(words.begin(), {"setpriv", "--pdeathsig", "KILL"});
  return words;
}

// A private message bus without access rules.
class PrivateBus {
 public:
  explicit PrivateBus(const std::filesystem::path& directory)
      : socket_(directory / "bus"), daemon_(endingWithTheTest(command(directory))) {
    running_ = !daemon_.readLine().empty();
  }

  bool running() const { return running_; }
  const std::filesystem::path& socket() const { return socket_; }
  std::string address() const { return "unix:path=" + socket_.string(); }

  // The command with this bus as system and session bus.
  std::vector<std::string> joining(std::vector<std::string> words) const {
    words.insert(words.begin(),
                 {"env", "DBUS_SYSTEM_BUS_ADDRESS=" + address(), "DBUS_SESSION_BUS_ADDRESS=" + address()});
    return words;
  }
  CommandResult run(std::vector<std::string> words) const { return runCommand(joining(std::move(words))); }
  // Waits until the name has an owner.
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
    // dbus-daemon warns about limits that it may not raise.
    return {"sh", "-c",
            "exec dbus-daemon --nofork --config-file='" + config.string() + "' --print-address 2>/dev/null"};
  }

  const std::filesystem::path socket_;
  RunningProgram daemon_;
  bool running_ = false;
};

}  // namespace quillmar
