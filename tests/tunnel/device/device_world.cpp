#include "tests/tunnel/device/device_world.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <netdb.h>
#include <poll.h>
#include <sched.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "testing/machine/layout.h"
#include "tunnel/dns/address_records.h"

namespace quillmar::tunnel::test {
namespace {

namespace fs = std::filesystem;

void writePrivately(const fs::path& path, const std::string& text) {
  std::ofstream(path) << text;
  fs::permissions(path, fs::perms(0600));
}

struct AddressFree {
  void operator()(addrinfo* address) const { ::freeaddrinfo(address); }
};
using Address = std::unique_ptr<addrinfo, AddressFree>;

Address addressOf(const std::string& server, std::uint16_t port) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  if (::getaddrinfo(server.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
    throw std::runtime_error("no address: " + server);
  }
  return Address(found);
}

void sendMark(const std::string& server, const std::string& token) {
  const auto address = addressOf(server, 9);
  const int socket = ::socket(address->ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  const auto sent = ::sendto(socket, token.data(), token.size(), 0, address->ai_addr, address->ai_addrlen);
  EXPECT_EQ(sent, static_cast<ssize_t>(token.size())) << server << ": " << std::strerror(errno);
  ::close(socket);
}

}  // namespace

std::string DeviceWorld::obstacle() {
  if (::geteuid() != 0) {
    return "A machine of the test's own takes root.";
  }
  if (runCommand({"unshare", "-n", "-m", "true"}).status != 0) {
    return "This machine allows no network namespaces.";
  }
  if (runCommand({"unshare", "-n", "nft", "list", "ruleset"}).status != 0) {
    return "This machine has no nftables.";
  }
  if (runCommand({"unshare", "-n", "ip", "tuntap", "add", "dev", "tun9", "mode", "tun"}).status != 0) {
    return "This machine has no tun devices.";
  }
  return {};
}

DeviceWorld::DeviceWorld() : bus_(directory_.path()) {
  enterNamespaces();
  writeFiles();
  outside_ = std::make_unique<Outside>("/run/netns/outside", "v1");
  startManager();
}

// Applies to this thread and to the threads and processes that it starts.
void DeviceWorld::enterNamespaces() const {
  if (::unshare(CLONE_NEWNET | CLONE_NEWNS) != 0) {
    throw std::runtime_error("no namespaces");
  }
  const auto result = runCommand({"sh"}, machine::layOut);
  if (result.status != 0) {
    throw std::runtime_error("the machine can't be laid out: " + result.errors);
  }
}

void DeviceWorld::writeFiles() const {
  for (const char* folder : {"profiles", "state", "kept"}) {
    fs::create_directory(file(folder));
  }
  std::ofstream("/etc/NetworkManager/VPN/quillmar-tunnel.name")
      << "[VPN "
         "Connection]\nname=quillmar-tunnel\nservice=live.quillmar.quillmar.PacketTunnel\nprogram=/bin/"
         "false\n";
  writePrivately(file("profiles") / "wire.nmconnection", machine::wireProfile);
  std::ofstream(file("manager.conf"))
      << "[main]\nplugins=keyfile\ndns=default\nno-auto-default=*\nrc-manager=file\nauth-polkit=false\n"
      << "[keyfile]\nunmanaged-devices=interface-name:c0\npath=" << file("profiles").string()
      << "\n[connectivity]\nuri=http://10.9.9.1:8080/\ninterval=3600\n";
}

void DeviceWorld::startManager() {
  const std::vector<std::string> words{
      "sh", "-c",
      "exec NetworkManager --debug --config '" + file("manager.conf").string() + "' --config-dir '" +
          file("state").string() + "' --intern-config '" + file("intern.conf").string() + "' --state-file '" +
          file("state.file").string() + "' --pid-file '" + file("pid").string() + "' >>'" +
          file("log").string() + "' 2>&1"};
  manager_.emplace(endingWithTheTest(bus_.joining(words)));
  EXPECT_EQ(bus_.run({"nm-online", "-q", "-s", "-t", "30"}).status, 0)
      << (std::ostringstream() << std::ifstream(file("log")).rdbuf()).str();
}

void DeviceWorld::stopManager(int signal) {
  manager_->end(signal);
  manager_.reset();
}

void DeviceWorld::tidy() {
  EXPECT_EQ(runCommand({"ip", "link", "set", "v0", "up"}).status, 0);
  if (!manager_) {
    startManager();
  }
  const auto known = tryNmcli({"-g", "UUID", "connection", "show"});
  if (known.output.find(profileUuid) != std::string::npos) {
    nmcli({"connection", "delete", profile});
  }
  nmcli({"connection", "up", "wire"});
  EXPECT_EQ(tunnel({"release"}).status, 0);
  std::error_code ignored;
  fs::remove_all(file("kept"), ignored);
  outside_->forget();
}

std::unique_ptr<RunningProgram> DeviceWorld::run(const std::string& caFile) const {
  // With the same capabilities as in its systemd unit.
  return std::make_unique<RunningProgram>(endingWithTheTest(
      bus_.joining({"env", "STATE_DIRECTORY=" + file("kept").string(), "setpriv", "--no-new-privs",
                    "--bounding-set", "-all,+net_admin,+net_bind_service,+setuid,+setgid,+setpcap,+kill",
                    QUILLMAR_TUNNEL, "run", "--ca-file", caFile})));
}

CommandResult DeviceWorld::tunnel(std::vector<std::string> words) const {
  words.insert(words.begin(), QUILLMAR_TUNNEL);
  return runCommand(words);
}

CommandResult DeviceWorld::tryNmcli(std::vector<std::string> words) const {
  words.insert(words.begin(), "nmcli");
  return bus_.run(words);
}

std::string DeviceWorld::nmcli(const std::vector<std::string>& words) const {
  const auto result = tryNmcli(words);
  EXPECT_EQ(result.status, 0) << result.errors;
  return result.output;
}

std::unique_ptr<RunningProgram> DeviceWorld::addressChanges() const {
  auto monitor = std::make_unique<RunningProgram>(
      endingWithTheTest({"stdbuf", "-oL", "ip", "-o", "monitor", "address", "link"}));
  // The monitor is ready once it reports a change that is made until then.
  RunningProgram teller(endingWithTheTest({"sh", "-c",
                                           "while :; do ip address add 127.9.9.9/32 dev lo; ip address "
                                           "delete 127.9.9.9/32 dev lo; done 2>/dev/null"}));
  EXPECT_NE(monitor->readUntil("127.9.9.9").find("127.9.9.9"), std::string::npos);
  return monitor;
}

void DeviceWorld::addProfile(const std::string& endpoint) const {
  const auto path = file("profiles") / "protection.nmconnection";
  writePrivately(path,
                 "[connection]\nid=" + std::string(profile) + "\nuuid=" + profileUuid +
                     "\ntype=vpn\n[vpn]\nservice-type=live.quillmar.quillmar.PacketTunnel\npersistent=true\n"
                     "dohEndpoint=" +
                     endpoint +
                     "\n[ipv4]\nmethod=auto\ndns-priority=-100\ndns-search=~.;\nnever-default=true\n"
                     "[ipv6]\nmethod=auto\ndns-priority=-100\nnever-default=true\n");
  nmcli({"connection", "load", path.string()});
}

void DeviceWorld::changeEndpoint(const std::string& endpoint) const {
  nmcli({"connection", "modify", profile, "+vpn.data", "dohEndpoint=" + endpoint});
}

std::vector<std::string> DeviceWorld::seenInClear() {
  return outside_->seenInClear([](const std::string& token) {
    sendMark("10.9.9.1", token);
    sendMark("2001:db8:9::1", token);
  });
}

bool DeviceWorld::serversBecome(const fs::path& file, const std::string& nameServers) {
  const int watch = ::inotify_init1(IN_CLOEXEC);
  ::inotify_add_watch(watch, file.parent_path().c_str(), IN_MOVED_TO | IN_CLOSE_WRITE);
  pollfd change{watch, POLLIN, 0};
  std::array<char, 4096> events{};
  bool isSo = false;
  do {
    const auto text = (std::ostringstream() << std::ifstream(file).rdbuf()).str();
    const auto start = text.find("nameserver");
    isSo = start != std::string::npos && text.substr(start) == nameServers;
  } while (!isSo && ::poll(&change, 1, 30'000) > 0 && ::read(watch, events.data(), events.size()) > 0);
  ::close(watch);
  return isSo;
}

DnsClient::DnsClient(const std::string& server, Channel channel, std::uint16_t port) : channel_(channel) {
  const auto address = addressOf(server, port);
  socket_ =
      ::socket(address->ai_family, (channel == Channel::udp ? SOCK_DGRAM : SOCK_STREAM) | SOCK_CLOEXEC, 0);
  const timeval patience{.tv_sec = 10, .tv_usec = 0};
  ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  ::setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
  // Closes by a reset. A FIN that is not acknowledged would be repeated after the tunnel has ended, in clear.
  const linger reset{.l_onoff = 1, .l_linger = 0};
  ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
  connectError_ = ::connect(socket_, address->ai_addr, address->ai_addrlen) == 0 ? 0 : errno;
}

DnsClient::~DnsClient() { ::close(socket_); }

DnsClient::Outcome DnsClient::ask(const std::string& name) {
  said_.clear();
  if (connectError_ != 0) {
    return connectError_ == EINPROGRESS || connectError_ == ETIMEDOUT ? Outcome::silent : Outcome::refused;
  }
  auto message = queryText({.name = name});
  if (channel_ == Channel::tcp) {
    std::string length;
    append16(length, static_cast<std::uint16_t>(message.size()));
    message = length + message;
  }
  if (::send(socket_, message.data(), message.size(), MSG_NOSIGNAL) < 0) {
    return Outcome::refused;
  }
  return receive();
}

DnsClient::Outcome DnsClient::receive() {
  std::array<char, 4096> buffer{};
  const auto size = ::recv(socket_, buffer.data(), buffer.size(), 0);
  if (size <= 0) {
    return size < 0 && (errno == EAGAIN || errno == EWOULDBLOCK) ? Outcome::silent : Outcome::refused;
  }
  std::string_view message(buffer.data(), static_cast<std::size_t>(size));
  message.remove_prefix(channel_ == Channel::tcp ? 2 : 0);  // written atomically
  const auto header = readHeader(message);
  if (!header || header->rcode() != rcode::noError || header->answers == 0) {
    said_ = header ? "code " + std::to_string(header->rcode()) : "nonsense";
    return Outcome::answered;
  }
  in_addr address{};
  message.substr(message.size() - sizeof address).copy(reinterpret_cast<char*>(&address), sizeof address);
  std::array<char, INET_ADDRSTRLEN> text{};
  said_ = ::inet_ntop(AF_INET, &address, text.data(), text.size());
  return Outcome::answered;
}

std::string askAt(const std::string& server, const std::string& name, Channel channel, std::uint16_t port) {
  DnsClient client(server, channel, port);
  switch (client.ask(name)) {
    case DnsClient::Outcome::refused:
      return "refused";
    case DnsClient::Outcome::silent:
      return "silent";
    case DnsClient::Outcome::answered:
      break;
  }
  return client.said();
}

}  // namespace quillmar::tunnel::test
