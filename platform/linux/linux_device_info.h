#pragma once

#include <string>

#include "platform/device_info.h"
#include "platform/linux/machine_name.h"

namespace quillmar {

// From systemd, the environment and ICU.
class LinuxDeviceInfo final : public DeviceInfo {
 public:
  using Sources = MachineNameSources;

  LinuxDeviceInfo();
  explicit LinuxDeviceInfo(Sources sources);

  std::string name() const override { return machineName(sources_); }
  std::string locale() const override { return locale_; }
  std::string timeZone() const override { return timeZone_; }

 private:
  const Sources sources_;
  const std::string locale_;
  const std::string timeZone_;
};

}  // namespace quillmar
