#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "tunnel/resolver/connection.h"

namespace quillmar::tunnel {

// The header fields of an answer, one by one as they come. Those that don't matter, or can't be understood,
// leave no trace.
class HttpFields {
 public:
  void take(std::string_view name, std::string_view value);
  // What they have said, once all have come.
  HttpAnswer answer() const;

 private:
  void takeStatus(std::string_view value);

  HttpAnswer answer_;
  std::string date_;
  std::string retryAfter_;
};

}  // namespace quillmar::tunnel
