#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "platform/linux/bus_names.h"

namespace quillmar {

struct MachineNameSources {
  // The bus with hostnamed, and how long to wait for its reply.
  std::filesystem::path busSocket = systemBusSocket;
  std::chrono::milliseconds timeout{1000};
  std::filesystem::path machineInfo = "/etc/machine-info";
};

// The machine's pretty name, else its host name. Read each time, because a machine may be renamed.
std::string machineName(const MachineNameSources& sources = {});

}  // namespace quillmar
