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

  // The roots that were set at build time.
  static Deployments builtIn();
  // The same root for all three regions.
  static Deployments all(const std::string& root) { return {root, root, root}; }

  // By a region's raw value; nullopt for any other text.
  std::optional<std::string> root(std::string_view region) const;
};

}  // namespace quillmar
