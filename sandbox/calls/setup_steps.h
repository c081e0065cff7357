#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillmar::sandbox::calls {

// How to enter a DNS server on a device that can't run the application.
struct SetupGuide {
  std::string platform;
  std::vector<std::string> steps;
};

// Null for an unknown type.
[[nodiscard]] const SetupGuide* setupGuide(std::string_view deviceType);

}  // namespace quillmar::sandbox::calls
