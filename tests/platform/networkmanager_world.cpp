#include "tests/platform/networkmanager_world.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <tuple>
#include <utility>

#include "platform/common/file_descriptor.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;

constexpr const char* pluginInterface = "org.freedesktop.NetworkManager.VPN.Plugin";
constexpr const char* pluginPath = "/org/freedesktop/NetworkManager/VPN/Plugin";

enum PluginState : std::uint32_t { starting = 3, started = 4, stopped = 6 };

constexpr unsigned nobody = 65534;

std::uint32_t ipv4(const char* text) { return inet_addr(text); }

sockaddr_un socketAddress(const fs::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.string().copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
  return address;
}

FileDescriptor newSocket() { return FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)); }

// Copies bytes in both directions until one side closes.
void carry(int one, int other) {
  std::array<char, 65536> buffer{};
  std::array<pollfd, 2> ends{pollfd{one, POLLIN, 0}, pollfd{other, POLLIN, 0}};
  while (poll(ends.data(), ends.size(), -1) > 0) {
    for (std::size_t from = 0; from < ends.size(); ++from) {
      if (ends.at(from).revents != 0) {
        const auto size = read(ends.at(from).fd, buffer.data(), buffer.size());
        if (size <= 0 || write(ends.at(1 - from).fd, buffer.data(), static_cast<std::size_t>(size)) != size) {
          return;
        }
      }
    }
  }
}

[[noreturn]] void relay(int listener, const sockaddr_un& bus) {
  if (setgid(nobody) != 0 || setuid(nobody) != 0) {
    _exit(1);
  }
  for (;;) {
    const FileDescriptor client(accept(listener, nullptr, nullptr));
    const FileDescriptor server = newSocket();
    if (connect(server.get(), reinterpret_cast<const sockaddr*>(&bus), sizeof bus) == 0) {
      carry(client.get(), server.get());
    }
  }
}

}  // namespace

TunnelProgram::TunnelProgram(const std::string& busAddress, const std::string& service)
    : bus_(sdbus::createSessionBusConnectionWithAddress(busAddress)),
      object_(sdbus::createObject(*bus_, pluginPath)) {
  object_->registerMethod("Connect")
      .onInterface(pluginInterface)
      .implementedAs([this](const Settings& settings) { connect(settings); });
  using Details = std::map<std::string, sdbus::Variant>;
  object_->registerMethod("ConnectInteractive")
      .onInterface(pluginInterface)
      .implementedAs([this](const Settings& settings, const Details&) { connect(settings); });
  object_->registerMethod("NeedSecrets").onInterface(pluginInterface).implementedAs([](const Settings&) {
    return std::string();
  });
  // No signal is sent: NetworkManager would apply one that follows a disconnection to the next connection.
  object_->registerMethod("Disconnect").onInterface(pluginInterface).implementedAs([] {});
  object_->registerProperty("State").onInterface(pluginInterface).withGetter([] {
    return std::uint32_t{starting};
  });
  object_->registerSignal("StateChanged").onInterface(pluginInterface).withParameters<std::uint32_t>();
  using Values = std::map<std::string, sdbus::Variant>;
  object_->registerSignal("Config").onInterface(pluginInterface).withParameters<Values>();
  object_->registerSignal("Ip4Config").onInterface(pluginInterface).withParameters<Values>();
  object_->finishRegistration();
  bus_->requestName(service);
  bus_->enterEventLoopAsync();
}

TunnelProgram::~TunnelProgram() { bus_->leaveEventLoop(); }

std::vector<std::map<std::string, std::string>> TunnelProgram::connections() const {
  const std::scoped_lock lock(mutex_);
  return connections_;
}

void TunnelProgram::drop() { say(stopped); }

void TunnelProgram::say(std::uint32_t state) {
  object_->emitSignal("StateChanged").onInterface(pluginInterface).withArguments(state);
}

void TunnelProgram::connect(const Settings& settings) {
  {
    const std::scoped_lock lock(mutex_);
    connections_.push_back(settings.at("vpn").at("data").get<std::map<std::string, std::string>>());
  }
  say(starting);
  if (slow_) {
    return;
  }
  using Values = std::map<std::string, sdbus::Variant>;
  object_->emitSignal("Config")
      .onInterface(pluginInterface)
      .withArguments(Values{{"gateway", ipv4("10.9.9.1")}, {"has-ip4", true}});
  object_->emitSignal("Ip4Config")
      .onInterface(pluginInterface)
      .withArguments(
          Values{{"address", ipv4("10.8.8.2")}, {"prefix", std::uint32_t{32}}, {"never-default", true}});
  say(started);
}

BusRelay::BusRelay(fs::path listening, const fs::path& bus) : path_(std::move(listening)) {
  fs::remove(path_);
  const FileDescriptor listener = newSocket();
  const auto own = socketAddress(path_);
  EXPECT_EQ(bind(listener.get(), reinterpret_cast<const sockaddr*>(&own), sizeof own), 0);
  EXPECT_EQ(listen(listener.get(), 1), 0);
  const auto far = socketAddress(bus);
  process_ = fork();
  if (process_ == 0) {
    relay(listener.get(), far);
  }
}

BusRelay::~BusRelay() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

std::string NetworkManagerWorld::obstacle() {
  if (geteuid() != 0) {
    return "A NetworkManager of its own takes root.";
  }
  if (runCommand({"unshare", "-n", "-m", "true"}).status != 0) {
    return "This machine allows no network namespaces.";
  }
  return {};
}

NetworkManagerWorld::NetworkManagerWorld(const std::string& tunnelService) : bus_(directory_.path()) {
  writeFiles(tunnelService);
  permissions_ = std::make_unique<Permissions>(bus_.address());
  program_ = std::make_unique<TunnelProgram>(bus_.address(), tunnelService);
  foreignProgram_ = std::make_unique<TunnelProgram>(bus_.address(), foreignService);
  start();
}

void NetworkManagerWorld::writeFiles(const std::string& tunnelService) const {
  for (const char* folder : {"vpn", "profiles", "state"}) {
    fs::create_directory(file(folder));
  }
  for (const std::string& name : {tunnelService, std::string(foreignService)}) {
    std::ofstream(file("vpn") / (name + ".name"))
        << "[VPN Connection]\nname=" << name << "\nservice=" << name << "\nprogram=/bin/false\n";
  }
  const auto wire = file("profiles") / "wire.nmconnection";
  std::ofstream(wire) << "[connection]\nid=wire\nuuid=11111111-2222-3333-4444-555555555555\ntype=ethernet\n"
                      << "interface-name=v0\n[ipv4]\nmethod=manual\naddress1=10.9.9.2/24,10.9.9.1\n"
                      << "[ipv6]\nmethod=disabled\n";
  fs::permissions(wire, fs::perms(0600));
  std::ofstream(file("manager.conf"))
      << "[main]\nplugins=keyfile\ndns=none\nno-auto-default=*\nrc-manager=unmanaged\nauth-polkit=true\n"
      << "[keyfile]\npath=" << file("profiles").string() << "\n";
  // With a read-only /sys NetworkManager manages devices without udev.
  std::ofstream(file("world.sh"))
      << "set -e; exec >'" << file("log").string() << "' 2>&1\n"
      << "mount --make-rprivate /; mount -t sysfs -o ro sysfs /sys\n"
      << "mkdir -p /etc/NetworkManager/VPN /run/NetworkManager /var/lib/NetworkManager\n"
      << "mount --bind '" << file("vpn").string() << "' /etc/NetworkManager/VPN\n"
      << "mount -t tmpfs none /run/NetworkManager; mount -t tmpfs none /var/lib/NetworkManager\n"
      << "ip link set lo up; ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up\n"
      << "exec NetworkManager --debug --config '" << file("manager.conf").string() << "' --config-dir '"
      << file("state").string() << "' --intern-config '" << file("intern.conf").string() << "' --state-file '"
      << file("state.file").string() << "' --pid-file '" << file("pid").string() << "'\n";
}

void NetworkManagerWorld::start() {
  manager_.emplace(endingWithTheTest(bus_.joining({"unshare", "-n", "-m", "sh", file("world.sh").string()})));
  running_ = bus_.run({"nm-online", "-q", "-s", "-t", "30"}).status == 0;
  EXPECT_TRUE(running_) << (std::ostringstream() << std::ifstream(file("log")).rdbuf()).str();
}

void NetworkManagerWorld::stop() {
  manager_->end(SIGTERM);
  manager_.reset();
}

void NetworkManagerWorld::tidy() {
  permissions_->grant(true);
  program_->setSlow(false);
  std::istringstream connections(nmcli({"-g", "TYPE,UUID", "connection", "show"}));
  std::vector<std::string> deletion{"connection", "delete"};
  for (std::string line; std::getline(connections, line);) {
    if (line.starts_with("vpn:")) {
      deletion.push_back(line.substr(line.find(':') + 1));
    }
  }
  if (deletion.size() > 2) {
    nmcli(deletion);
  }
  if (nmcli({"-g", "NAME", "connection", "show", "--active"}).find("wire") == std::string::npos) {
    nmcli({"connection", "up", "wire"});
  }
}

pid_t NetworkManagerWorld::process() const {
  std::uint32_t process = 0;
  const auto witness = sdbus::createSessionBusConnectionWithAddress(bus_.address());
  sdbus::createProxy(*witness, "org.freedesktop.DBus", "/org/freedesktop/DBus")
      ->callMethod("GetConnectionUnixProcessID")
      .onInterface("org.freedesktop.DBus")
      .withArguments(std::string("org.freedesktop.NetworkManager"))
      .storeResultsTo(process);
  return static_cast<pid_t>(process);
}

std::string NetworkManagerWorld::nmcli(const std::vector<std::string>& words) const {
  std::vector<std::string> command{"nmcli"};
  command.insert(command.end(), words.begin(), words.end());
  auto result = bus_.run(command);
  EXPECT_EQ(result.status, 0) << result.errors;
  if (result.output.ends_with('\n')) {
    result.output.pop_back();
  }
  return result.output;
}

}  // namespace quillmar
