#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/session/role_manager.h"
#include "foundation/date.h"

namespace quillmar::doctor {

// The result of examining one part. `words` follows the part's name: what is there, or what is wrong and
// what to install or start.
struct Finding {
  bool works = false;
  std::string words;
};

struct ServiceFinding {
  Finding answer;
  // How far this machine's clock is ahead of the service's; nullopt if the service sent no time.
  std::optional<Duration> clockLead = std::nullopt;
};

// The parts of a protection that is set up.
struct TunnelFindings {
  Finding connection;
  Finding redirection;
  Finding nameLookup;
  Finding endpoint;
  Finding network;
};

// Examines a machine. Each call may take some seconds and leaves the machine unchanged.
class Probes {
 public:
  Probes() = default;
  Probes(const Probes&) = delete;
  Probes& operator=(const Probes&) = delete;
  virtual ~Probes() = default;

  // For a program without a window, keyring, fingerprint reader, camera and camera module are not examined.
  virtual bool areForWindow() const = 0;
  virtual Finding dataFolder() = 0;
  virtual Finding keyring() = 0;
  virtual Finding networkManager() = 0;
  virtual Finding tunnelProgram() = 0;
  // nullopt on a machine that is not enrolled and has no tunnel set up.
  virtual std::optional<TunnelFindings> tunnel() = 0;
  virtual Finding fingerprintReader() = 0;
  virtual Finding camera() = 0;
  virtual Finding cameraModule() = 0;
  virtual ServiceFinding service() = 0;
};

struct Report {
  // One line for each part, and one for the whole at the end.
  std::vector<std::string> lines;
  // Whether the machine has everything that its role needs. Without a role, a parent's needs count.
  bool isFit = false;
};

Report examine(Probes& probes, DeviceRole role);

}  // namespace quillmar::doctor
