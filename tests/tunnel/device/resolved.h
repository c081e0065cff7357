#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/tunnel/device/device_world.h"

namespace quillmar::tunnel::test {

// systemd-resolved on a machine, as the resolver of NetworkManager and of all programs, until the destructor.
class Resolved {
 public:
  static constexpr const char* stub = "127.0.0.53";

  // Why it can't run; empty if it can.
  static std::string obstacle();

  // With these lines in its configuration.
  explicit Resolved(const DeviceWorld& world, const std::string& settings = {});
  ~Resolved();
  Resolved(const Resolved&) = delete;
  Resolved& operator=(const Resolved&) = delete;

  void start();
  void end();
  // Whether these are the servers that it knows. Waits for changes until they are.
  static bool asks(const std::vector<std::string>& servers);
  // What it says of a name by a call on the bus.
  std::string resolve(const std::string& name) const;
  std::unique_ptr<RunningProgram> startResolving(const std::string& name) const;

 private:
  std::vector<std::string> resolving(const std::string& name) const;

  const DeviceWorld& world_;
  std::optional<RunningProgram> program_;
};

}  // namespace quillmar::tunnel::test
