#pragma once

#include <string_view>

#include "platform/port.h"

namespace quillmar {

// Where log lines go. Any thread; lines never mix. A line comes without its line break and is never a format
// string; line breaks inside it are kept from starting a line of their own.
class Log : public Port {
 public:
  // The standard output.
  virtual void print(std::string_view line) = 0;
  // The system's log.
  virtual void system(std::string_view line) = 0;
};

}  // namespace quillmar
