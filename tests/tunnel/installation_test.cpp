#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "testing/temporary_directory.h"
#include "tests/sandbox/support/run_command.h"

namespace quillmar::tunnel {
namespace {

using sandbox::test::CommandResult;
using sandbox::test::runCommand;
using sandbox::test::RunningProgram;
using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

constexpr const char* busName = "live.quillmar.quillmar.PacketTunnel";

TEST(TunnelUnit, is_accepted_by_systemd_and_grants_few_rights) {
  const TemporaryDirectory directory;
  const auto unit = directory.path() / "quillmar-tunnel.service";
  std::ifstream installed(QUILLMAR_TUNNEL_UNIT);
  std::string text;
  for (std::string line; std::getline(installed, line);) {
    // The program and its manual page need not be installed.
    if (!line.starts_with("Documentation=")) {
      text += (line.starts_with("ExecStart=") ? "ExecStart=/bin/true" : line) + '\n';
    }
  }
  ASSERT_THAT(text, HasSubstr("ExecStart=/bin/true"));
  std::ofstream(unit) << text;
  const auto verified = runCommand({"systemd-analyze", "verify", unit.string()});
  EXPECT_EQ(verified.status, 0);
  EXPECT_EQ(verified.errors, "");
  // Of 100 points. The rest is for root, the network and its administration.
  EXPECT_EQ(
      runCommand({"systemd-analyze", "security", "--offline=true", "--threshold=35", unit.string()}).status,
      0);
}

// Until then a killed program leaves DNS shut.
TEST(TunnelUnit, is_started_again_whatever_has_ended_it) {
  std::ifstream unit(QUILLMAR_TUNNEL_UNIT);
  EXPECT_THAT(std::string(std::istreambuf_iterator<char>(unit), {}), HasSubstr("\nRestart=always\n"));
}

// The system calls that a unit allows: its lists of calls and of systemd's groups, applied in order.
class AllowedCalls {
 public:
  explicit AllowedCalls(const std::string& unit) {
    readGroups();
    std::ifstream file(unit);
    for (std::string line; std::getline(file, line);) {
      constexpr std::string_view key = "SystemCallFilter=";
      if (line.starts_with(key)) {
        const bool isDenial = line[key.size()] == '~';
        std::istringstream names(line.substr(key.size() + (isDenial ? 1 : 0)));
        for (std::string name; names >> name;) {
          apply(name, !isDenial);
        }
      }
    }
  }
  const std::set<std::string>& all() const { return calls_; }

 private:
  void readGroups() {
    std::istringstream text(runCommand({"systemd-analyze", "syscall-filter"}).output);
    std::string group;
    for (std::string line; std::getline(text, line);) {
      if (line.starts_with('@')) {
        group = line;
      } else if (line.starts_with("    ") && line[4] != '#') {
        groups_[group].push_back(line.substr(4));
      }
    }
  }
  void apply(const std::string& name, bool isAllowed) {
    if (name.starts_with('@')) {
      for (const auto& each : groups_.at(name)) {
        apply(each, isAllowed);
      }
    } else if (isAllowed) {
      calls_.insert(name);
    } else {
      calls_.erase(name);
    }
  }

  std::map<std::string, std::vector<std::string>> groups_;
  std::set<std::string> calls_;
};

TEST(TunnelUnit, allows_what_the_workers_cage_needs) {
  const AllowedCalls allowed(QUILLMAR_TUNNEL_UNIT);
  EXPECT_THAT(allowed.all(), testing::IsSupersetOf({"prctl", "setgroups", "setresgid", "setresuid", "capset",
                                                    "prlimit64", "seccomp", "execve", "kill", "socketpair",
                                                    "timerfd_create", "timerfd_settime"}));
  EXPECT_THAT(allowed.all(),
              testing::Not(testing::Contains(testing::AnyOf("mount", "ptrace", "bpf", "chroot"))));
  std::ifstream unit(QUILLMAR_TUNNEL_UNIT);
  EXPECT_THAT(
      std::string(std::istreambuf_iterator<char>(unit), {}),
      HasSubstr(
          "\nCapabilityBoundingSet=CAP_NET_ADMIN CAP_NET_BIND_SERVICE CAP_SETUID CAP_SETGID CAP_SETPCAP "
          "CAP_KILL\n"))
      << "no less than the tests with a device have, and no more";
}

TEST(TunnelSystemUser, is_made_with_the_package) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "Making a user takes root.";
  }
  const TemporaryDirectory root;
  std::filesystem::create_directory(root.path() / "etc");
  const auto made =
      runCommand({"systemd-sysusers", "--root=" + root.path().string(), QUILLMAR_TUNNEL_SYSUSERS});
  EXPECT_EQ(made.status, 0) << made.errors;
  std::ifstream users(root.path() / "etc/passwd");
  EXPECT_THAT(
      std::string(std::istreambuf_iterator<char>(users), {}),
      testing::ContainsRegex("quillmar-tunnel:[^:]*:[0-9]+:[0-9]+:Quillmar tunnel:/:/usr/sbin/nologin"));
}

// A system bus with the installed policy, and the service on it.
struct TunnelBusPolicy : testing::Test {
  void SetUp() override {
    if (::geteuid() != 0 || runCommand({"unshare", "-n", "true"}).status != 0) {
      GTEST_SKIP() << "Acting as several users needs root and namespaces.";
    }
    std::filesystem::permissions(directory.path(), std::filesystem::perms(0755));
    const auto config = directory.path() / "bus.conf";
    std::ofstream(config) << "<busconfig><type>system</type><listen>" << address
                          << "</listen><auth>EXTERNAL</auth><policy context='default'><allow user='*'/>"
                          << "<allow own='*'/><allow send_destination='*'/>"
                          << "<allow receive_type='method_call'/><allow receive_type='method_return'/>"
                          << "<allow receive_type='error'/><allow receive_type='signal'/></policy>"
                          << "<include>" << QUILLMAR_TUNNEL_POLICY << "</include></busconfig>";
    bus = std::make_unique<RunningProgram>(Words{
        "sh", "-c",
        "exec dbus-daemon --nofork --config-file='" + config.string() + "' --print-address 2>/dev/null"});
    EXPECT_EQ(bus->readLine().substr(0, address.size()), address);
    service = std::make_unique<RunningProgram>(
        Words{"env", "DBUS_SYSTEM_BUS_ADDRESS=" + address, "unshare", "-n", QUILLMAR_TUNNEL, "run"});
    EXPECT_THAT(service->readLine(), HasSubstr(busName)) << "root may be the service";
  }
  CommandResult call(Words as, const Words& what) const {
    for (const Words& more : {Words{"gdbus", "call", "--address", address}, what}) {
      as.insert(as.end(), more.begin(), more.end());
    }
    return runCommand(as);
  }

  const Words nobody{"setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups"};
  const Words disconnection{"--dest",        busName,
                            "--object-path", "/org/freedesktop/NetworkManager/VPN/Plugin",
                            "--method",      "org.freedesktop.NetworkManager.VPN.Plugin.Disconnect"};
  const TemporaryDirectory directory;
  const std::string address = "unix:path=" + (directory.path() / "bus").string();
  std::unique_ptr<RunningProgram> bus;
  std::unique_ptr<RunningProgram> service;
};

TEST_F(TunnelBusPolicy, lets_only_root_call_the_service) {
  EXPECT_EQ(call({}, disconnection).status, 0);
  const auto refused = call(nobody, disconnection);
  EXPECT_NE(refused.status, 0);
  EXPECT_THAT(refused.errors, HasSubstr("org.freedesktop.DBus.Error.AccessDenied"));
}

TEST_F(TunnelBusPolicy, lets_one_process_own_the_name) {
  const auto another =
      runCommand({"env", "DBUS_SYSTEM_BUS_ADDRESS=" + address, "unshare", "-n", QUILLMAR_TUNNEL, "run"});
  EXPECT_EQ(another.status, 1);
  EXPECT_THAT(another.errors, StartsWith("quillmar-tunnel: the message bus: Failed to request bus name"));
  EXPECT_EQ(bus->end(SIGTERM), 0);
  EXPECT_EQ(service->end(0), 1) << "it ends with the bus, and is started again";
}

TEST_F(TunnelBusPolicy, lets_only_root_own_the_name) {
  EXPECT_EQ(service->end(SIGTERM), 0);
  const auto refused =
      call(nobody, {"--dest", "org.freedesktop.DBus", "--object-path", "/org/freedesktop/DBus", "--method",
                    "org.freedesktop.DBus.RequestName", busName, "0"});
  EXPECT_NE(refused.status, 0);
  EXPECT_THAT(refused.errors, HasSubstr("org.freedesktop.DBus.Error.AccessDenied"));
}

}  // namespace
}  // namespace quillmar::tunnel
