#pragma once

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

// A Linux machine with a wire to the outside, a NetworkManager on a bus of its own, and nothing else; this
// process is on it. It begins with the object and ends with the process.
class DeviceWorld {
 public:
  static constexpr const char* profile = "Protection";
  static constexpr const char* profileUuid = "66666666-7777-8888-9999-000000000000";

  // Why it can't be had here; empty where it can.
  static std::string obstacle();

  DeviceWorld();

  Outside& outside() { return *outside_; }
  const PrivateBus& bus() const { return bus_; }
  std::filesystem::path file(const std::string& name) const { return directory_.path() / name; }

  void startManager();
  void stopManager();
  // Back to the wire alone.
  void tidy();

  // The program's service.
  std::unique_ptr<RunningProgram> run(const std::string& caFile) const;
  CommandResult tunnel(std::vector<std::string> words) const;
  CommandResult tryNmcli(std::vector<std::string> words) const;
  std::string nmcli(const std::vector<std::string>& words) const;
  // Each line is a change of this machine's addresses; all that come from now on are told.
  std::unique_ptr<RunningProgram> addressChanges() const;

  void addProfile(const std::string& endpoint) const;
  void changeEndpoint(const std::string& endpoint) const;
  std::vector<std::string> seenInClear();
  // What stands in it from the first server on; waits for its next changes.
  static bool resolvConfBecomes(const std::string& nameServers);

 private:
  void enterNamespaces() const;
  void writeFiles() const;

  const TemporaryDirectory directory_;
  const PrivateBus bus_;
  std::optional<RunningProgram> manager_;
  std::unique_ptr<Outside> outside_;
};

// A client's socket, connected to a server of its choice.
class DnsClient {
 public:
  enum class Outcome { answered, refused, silent };

  DnsClient(const std::string& server, Channel channel, std::uint16_t port = 53);
  ~DnsClient();
  DnsClient(const DnsClient&) = delete;
  DnsClient& operator=(const DnsClient&) = delete;

  Outcome ask(const std::string& name);
  // The address in the last answer; "SERVFAIL" and the like where there is none.
  const std::string& said() const { return said_; }

 private:
  Outcome receive();

  const Channel channel_;
  int socket_ = -1;
  int connectError_ = 0;
  std::string said_;
};

// One question by a new socket: the address, the code of the error, "refused" or "silent".
std::string askAt(const std::string& server, const std::string& name, Channel channel = Channel::udp,
                  std::uint16_t port = 53);

}  // namespace quillmar::tunnel::test
