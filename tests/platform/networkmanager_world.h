#pragma once

#include <sdbus-c++/sdbus-c++.h>
#include <sys/types.h>

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "testing/temporary_directory.h"
#include "tests/platform/permissions.h"
#include "tests/platform/private_bus.h"

namespace quillmar {

// A tunnel program, as NetworkManager asks for one: connects at once and sends no packet anywhere.
class TunnelProgram {
 public:
  TunnelProgram(const std::string& busAddress, const std::string& service);
  ~TunnelProgram();
  TunnelProgram(const TunnelProgram&) = delete;
  TunnelProgram& operator=(const TunnelProgram&) = delete;

  // The data of each connection it was asked to make.
  std::vector<std::map<std::string, std::string>> connections() const;
  // As if the other end had gone.
  void drop();
  // From now on it stays on the way to a connection, or fails there.
  void setSlow(bool slow) { slow_ = slow; }

 private:
  using Settings = std::map<std::string, std::map<std::string, sdbus::Variant>>;
  void connect(const Settings& settings);
  void say(std::uint32_t state);

  std::unique_ptr<sdbus::IConnection> bus_;
  std::unique_ptr<sdbus::IObject> object_;
  std::atomic<bool> slow_ = false;
  mutable std::mutex mutex_;
  std::vector<std::map<std::string, std::string>> connections_;
};

// A second way to a bus, of another user's. It can be cut.
class BusRelay {
 public:
  BusRelay(std::filesystem::path listening, const std::filesystem::path& bus);
  ~BusRelay();
  BusRelay(const BusRelay&) = delete;
  BusRelay& operator=(const BusRelay&) = delete;

  std::string address() const { return "unix:path=" + path_.string(); }

 private:
  const std::filesystem::path path_;
  pid_t process_ = -1;
};

// A NetworkManager in a network of its own, with one wire that is up, on a bus of its own.
class NetworkManagerWorld {
 public:
  static constexpr const char* service = "example.tunnel";
  // Installed, too, but of others.
  static constexpr const char* foreignService = "foreign.tunnel";

  // Why it can't be had here; empty where it can.
  static std::string obstacle();

  explicit NetworkManagerWorld(const std::string& tunnelService = service);

  bool running() const { return running_; }
  const PrivateBus& bus() const { return bus_; }
  TunnelProgram& program() { return *program_; }
  TunnelProgram& foreignProgram() { return *foreignProgram_; }
  Permissions& permissions() { return *permissions_; }
  std::filesystem::path file(const std::string& name) const { return directory_.path() / name; }

  // Back to the one wire, up, without any VPN.
  void tidy();
  void stop();
  void start();
  pid_t process() const;

  // The outside witness. Its output without the last line break; a failure is one of the test.
  std::string nmcli(const std::vector<std::string>& words) const;

 private:
  void writeFiles(const std::string& tunnelService) const;

  const TemporaryDirectory directory_;
  const PrivateBus bus_;
  std::optional<RunningProgram> manager_;
  std::unique_ptr<Permissions> permissions_;
  std::unique_ptr<TunnelProgram> program_;
  std::unique_ptr<TunnelProgram> foreignProgram_;
  bool running_ = false;
};

}  // namespace quillmar
