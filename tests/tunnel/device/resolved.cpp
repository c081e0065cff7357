#include "tests/tunnel/device/resolved.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>

namespace quillmar::tunnel::test {
namespace {

namespace fs = std::filesystem;

const fs::path unpacked = QUILLMAR_UNPACKED;
constexpr const char* rights = "-all,+setpcap,+net_raw,+net_bind_service";

// Its user may not pass through the folders above the unpacked packages, so these are bound elsewhere. That
// user is nobody under another name, because the bus refuses users that it did not know when it started.
constexpr const char* prepare = R"(
id systemd-resolve >/dev/null 2>&1 || {
  echo "systemd-resolve:x:$(id -u nobody):$(id -g nobody)::/:/usr/sbin/nologin" >>/etc/passwd
}
rm -rf /etc/systemd/resolved.conf /etc/systemd/resolved.conf.d
mkdir -p /run/unpacked /etc/systemd/resolved.conf.d
mountpoint -q /run/unpacked || mount --bind "$0" /run/unpacked
install -d -o systemd-resolve /run/systemd/resolve
ln -sf ../run/systemd/resolve/stub-resolv.conf /etc/resolv.conf
)";

constexpr const char* settingsFile = "/etc/systemd/resolved.conf.d/test.conf";

std::vector<std::string> unpackedProgram(const std::string& path) {
  return {"sh", "-c",
          "LD_LIBRARY_PATH=$(echo /run/unpacked/libsystemd-shared/usr/lib/*/systemd) exec "
          "/run/unpacked/systemd-resolved" +
              path + R"( "$@")",
          "sh"};
}

}  // namespace

std::string Resolved::obstacle() {
  return fs::exists(unpacked / "systemd-resolved") && fs::exists(unpacked / "libsystemd-shared")
             ? std::string()
             : "There is no systemd-resolved in build/unpacked, where scripts/install-packages unpacks it.";
}

Resolved::Resolved(const DeviceWorld& world, const std::string& settings) : world_(world) {
  const auto result = runCommand({"sh", "-ec", prepare, unpacked.string()});
  EXPECT_EQ(result.status, 0) << result.errors;
  std::ofstream(settingsFile) << "[Resolve]\n" << settings;
  start();
  std::ofstream(world_.file("state") / "resolved.conf") << "[main]\ndns=systemd-resolved\n";
  world_.nmcli({"general", "reload", "conf"});
}

Resolved::~Resolved() {
  end();
  fs::remove(settingsFile);
  // NetworkManager would follow the link.
  fs::remove("/etc/resolv.conf");
  fs::remove(world_.file("state") / "resolved.conf");
  world_.nmcli({"general", "reload", "conf"});
}

void Resolved::start() {
  // With the same rights as from its systemd unit. A change of the user clears the signal that ends a program
  // with the test, so the signal is set last.
  std::vector<std::string> words{"setpriv",        "--reuid",     "systemd-resolve",
                                 "--regid",        "nogroup",     "--clear-groups",
                                 "--no-new-privs", "--inh-caps",  rights,
                                 "--ambient-caps", rights,        "--bounding-set",
                                 rights,           "--pdeathsig", "KILL"};
  const auto command = unpackedProgram("/lib/systemd/systemd-resolved");
  words.insert(words.end(), command.begin(), command.end());
  words.insert(words.begin(), {"env", "SYSTEMD_LOG_LEVEL=warning"});
  program_.emplace(world_.bus().joining(words));
  EXPECT_TRUE(world_.bus().waitFor("org.freedesktop.resolve1"));
}

void Resolved::end() {
  if (program_) {
    program_->end(SIGTERM);
    program_.reset();
  }
}

bool Resolved::asks(const std::vector<std::string>& servers) {
  std::string lines;
  for (const auto& server : servers) {
    lines += "nameserver " + server + '\n';
  }
  return DeviceWorld::serversBecome("/run/systemd/resolve/resolv.conf", lines + "search .\n");
}

std::string Resolved::resolve(const std::string& name) const {
  const auto result = runCommand(resolving(name));
  return result.output + result.errors;
}

std::unique_ptr<RunningProgram> Resolved::startResolving(const std::string& name) const {
  return std::make_unique<RunningProgram>(endingWithTheTest(resolving(name)));
}

std::vector<std::string> Resolved::resolving(const std::string& name) const {
  auto words = unpackedProgram("/usr/bin/resolvectl");
  words.insert(words.end(), {"query", "--legend=no", "-4", name});
  return world_.bus().joining(words);
}

}  // namespace quillmar::tunnel::test
