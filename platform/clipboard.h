#pragma once

#include <string>
#include <string_view>

#include "platform/port.h"

namespace quillmar {

// The general clipboard. Main thread only. Any program may have put the text there: don't trust it.
class Clipboard : public Port {
 public:
  virtual void setString(std::string_view text) = 0;
  // Empty if it holds no text.
  virtual std::string string() const = 0;
};

}  // namespace quillmar
