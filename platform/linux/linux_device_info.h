#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "platform/device_info.h"

namespace quillmar {

// The machine as systemd and ICU describe it.
class LinuxDeviceInfo final : public DeviceInfo {
 public:
  struct Sources {
    // Where hostnamed is asked, for no longer than `patience`.
    std::filesystem::path busSocket = "/run/dbus/system_bus_socket";
    std::chrono::milliseconds patience{1000};
    std::filesystem::path machineInfo = "/etc/machine-info";
  };

  LinuxDeviceInfo();
  explicit LinuxDeviceInfo(Sources sources);

  // Asked anew each time: a machine may be renamed.
  std::string name() const override;
  std::string locale() const override { return locale_; }
  std::string timeZone() const override { return timeZone_; }

 private:
  const Sources sources_;
  const std::string locale_;
  const std::string timeZone_;
};

}  // namespace quillmar
