#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmar {

// The service's root URL for each region, without the /api/v1 tail.
struct Deployments {
  std::string australia;
  std::string newzealand;
  std::string singapore;

  // As set when the program was built.
  static Deployments builtIn();
  // One service in the place of all three.
  static Deployments all(const std::string& root) { return {root, root, root}; }

  // By a region's raw value; nothing for any other text.
  std::optional<std::string> root(std::string_view region) const;
};

}  // namespace quillmar
