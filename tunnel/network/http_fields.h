#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "tunnel/resolver/connection.h"

namespace quillmar::tunnel {

// Collects the header fields of an answer. Unknown and malformed ones are ignored.
class HttpFields {
 public:
  void take(std::string_view name, std::string_view value);
  // To be called after the last field.
  HttpAnswer answer() const;

 private:
  void takeStatus(std::string_view value);

  HttpAnswer answer_;
  std::string date_;
  std::string retryAfter_;
};

}  // namespace quillmar::tunnel
