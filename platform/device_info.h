#pragma once

#include <functional>
#include <string>

#include "foundation/signal.h"
#include "platform/port.h"

namespace quillmar {

// Describes the machine. Main thread only.
class DeviceInfo : public Port {
 public:
  // The name that the user gave the machine, else its host name.
  virtual std::string name() const = 0;
  // An ICU locale id ("en_AU") and an Olson zone id ("Australia/Sydney") for dates.
  virtual std::string locale() const = 0;
  virtual std::string timeZone() const = 0;
};

}  // namespace quillmar
