#pragma once

#include <string>
#include <string_view>

#include "platform/port.h"

namespace quillmar {

// The general clipboard. Main thread only. What is read from it comes from any program and is not to be
// trusted.
class Clipboard : public Port {
 public:
  virtual void setString(std::string_view text) = 0;
  // Empty when it holds no text.
  virtual std::string string() const = 0;
};

}  // namespace quillmar
