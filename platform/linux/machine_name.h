#pragma once

#include <chrono>
#include <filesystem>
#include <string>

namespace quillmar {

struct MachineNameSources {
  // Where hostnamed is asked, for no longer than `patience`.
  std::filesystem::path busSocket = "/run/dbus/system_bus_socket";
  std::chrono::milliseconds patience{1000};
  std::filesystem::path machineInfo = "/etc/machine-info";
};

// The pretty name that its owner gave this machine, or else its name in the network. Asked anew each time: a
// machine may be renamed.
std::string machineName(const MachineNameSources& sources = {});

}  // namespace quillmar
