#pragma once

#include <functional>
#include <string>

#include "foundation/signal.h"
#include "platform/port.h"

namespace quillmar {

// What the program knows about the machine under it. Main thread only.
class DeviceInfo : public Port {
 public:
  // The name that its user gave the machine, else its host name.
  virtual std::string name() const = 0;
  // An ICU locale id ("en_AU") and an Olson zone id ("Australia/Sydney"), for dates on screens.
  virtual std::string locale() const = 0;
  virtual std::string timeZone() const = 0;
};

}  // namespace quillmar
