#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/session/role_manager.h"
#include "foundation/date.h"

namespace quillmar::doctor {

// What a look at one part of the machine found. The words say what is there, or what is wrong and what to
// install or start; they follow the part's name.
struct Finding {
  bool works = false;
  std::string words;
};

struct ServiceFinding {
  Finding answer;
  // How far this machine's clock is ahead of the service's; nothing where the service told no time.
  std::optional<Duration> clockLead = std::nullopt;
};

// Looks at a machine. Each may take some seconds, and none changes anything that lasts.
class Probes {
 public:
  Probes() = default;
  Probes(const Probes&) = delete;
  Probes& operator=(const Probes&) = delete;
  virtual ~Probes() = default;

  // Where it is not for a program with a window, keyring, reader and camera are not looked at.
  virtual bool areForWindow() const = 0;
  virtual Finding keyring() = 0;
  virtual Finding networkManager() = 0;
  virtual Finding tunnelProgram() = 0;
  virtual Finding fingerprintReader() = 0;
  virtual Finding camera() = 0;
  virtual ServiceFinding service() = 0;
};

struct Report {
  // One for each part, and one for the whole at the end.
  std::vector<std::string> lines;
  // Whether the machine has all that its role needs. Without a role that is what a parent's device needs.
  bool isFit = false;
};

Report examine(Probes& probes, DeviceRole role);

}  // namespace quillmar::doctor
