#include "client/deployments.h"

#include <array>
#include <utility>

namespace quillmar {

Deployments Deployments::builtIn() {
  return {QUILLMAR_DEPLOYMENT_AUSTRALIA, QUILLMAR_DEPLOYMENT_NEWZEALAND, QUILLMAR_DEPLOYMENT_SINGAPORE};
}

std::optional<std::string> Deployments::root(std::string_view region) const {
  static constexpr auto members = std::to_array<std::pair<std::string_view, std::string Deployments::*>>({
      {"australia", &Deployments::australia},
      {"newzealand", &Deployments::newzealand},
      {"singapore", &Deployments::singapore},
  });
  for (const auto& [name, member] : members) {
    if (name == region) {
      return this->*member;
    }
  }
  return std::nullopt;
}

}  // namespace quillmar
