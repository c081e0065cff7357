#pragma once

#include <string_view>

#include "platform/port.h"

namespace quillmar {

// Log lines. Thread-safe; lines never mix. A line has no line break at its end and is not a format string;
// line breaks inside it are escaped.
class Log : public Port {
 public:
  // To the standard output.
  virtual void print(std::string_view line) = 0;
  // To the system's log.
  virtual void system(std::string_view line) = 0;
};

}  // namespace quillmar
