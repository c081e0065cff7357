#pragma once

#include <csignal>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "testing/machine/outside.h"
#include "testing/temporary_directory.h"
#include "tests/platform/private_bus.h"
#include "tests/tunnel/support/messages.h"
#include "tunnel/dns/reply.h"

namespace quillmar::tunnel::test {

using machine::Outside;

// A machine in namespaces with a network card and a NetworkManager on its own bus. The constructor moves this
// process into it, until the process ends.
class DeviceWorld {
 public:
  static constexpr const char* profile = "Protection";
  static constexpr const char* profileUuid = "66666666-7777-8888-9999-000000000000";

  // Why this computer can't provide one; empty if it can.
  static std::string obstacle();

  DeviceWorld();

  Outside& outside() { return *outside_; }
  const PrivateBus& bus() const { return bus_; }
  std::filesystem::path file(const std::string& name) const { return directory_.path() / name; }

  void startManager();
  void stopManager(int signal = SIGTERM);
  // Restores the initial state: only the wire is connected.
  void tidy();

  // Starts the program's service.
  std::unique_ptr<RunningProgram> run(const std::string& caFile) const;
  CommandResult tunnel(std::vector<std::string> words) const;
  CommandResult tryNmcli(std::vector<std::string> words) const;
  std::string nmcli(const std::vector<std::string>& words) const;
  // Prints a line for each later change of this machine's addresses.
  std::unique_ptr<RunningProgram> addressChanges() const;

  void addProfile(const std::string& endpoint) const;
  void changeEndpoint(const std::string& endpoint) const;
  std::vector<std::string> seenInClear();
  // Whether this file in the format of resolv.conf has this content from its first server on. Waits for
  // changes until it does.
  static bool serversBecome(const std::filesystem::path& file, const std::string& nameServers);
  static bool resolvConfBecomes(const std::string& nameServers) {
    return serversBecome("/etc/resolv.conf", nameServers);
  }

 private:
  void enterNamespaces() const;
  void writeFiles() const;

  const TemporaryDirectory directory_;
  const PrivateBus bus_;
  std::optional<RunningProgram> manager_;
  std::unique_ptr<Outside> outside_;
};

// A client's socket, connected to a given server.
class DnsClient {
 public:
  enum class Outcome { answered, refused, silent };

  DnsClient(const std::string& server, Channel channel, std::uint16_t port = 53);
  ~DnsClient();
  DnsClient(const DnsClient&) = delete;
  DnsClient& operator=(const DnsClient&) = delete;

  Outcome ask(const std::string& name);
  // The address in the last answer, or its response code such as "SERVFAIL".
  const std::string& said() const { return said_; }

 private:
  Outcome receive();

  const Channel channel_;
  int socket_ = -1;
  int connectError_ = 0;
  std::string said_;
};

// Sends one query on a new socket. Returns the address, the response code, "refused" or "silent".
std::string askAt(const std::string& server, const std::string& name, Channel channel = Channel::udp,
                  std::uint16_t port = 53);

}  // namespace quillmar::tunnel::test
