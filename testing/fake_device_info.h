#pragma once

#include <string>

#include "platform/device_info.h"

namespace quillmar {

class FakeDeviceInfo final : public DeviceInfo {
 public:
  std::string deviceName = "Test Device";
  std::string deviceLocale = "en_US";
  std::string deviceTimeZone = "UTC";

  std::string name() const override { return deviceName; }
  std::string locale() const override { return deviceLocale; }
  std::string timeZone() const override { return deviceTimeZone; }
};

}  // namespace quillmar
