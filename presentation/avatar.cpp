#include "presentation/avatar.h"

#include <array>
#include <functional>

#include "foundation/text.h"

namespace quillmar {
namespace {

constexpr std::array avatarColors = {SemanticColor::brandBlue,    SemanticColor::brandTeal,
                                     SemanticColor::brandGreen,   SemanticColor::brandOrange,
                                     SemanticColor::systemPurple, SemanticColor::systemOrange};

}  // namespace

SemanticColor avatarColor(std::string_view name) {
  static const std::string seedOfThisRun = newUUID();
  return avatarColor(name, seedOfThisRun);
}

SemanticColor avatarColor(std::string_view name, std::string_view seed) {
  const auto hash = std::hash<std::string>()(std::string(seed) + std::string(name));
  return avatarColors[hash % avatarColors.size()];
}

std::string avatarLetter(std::string_view name) { return firstCharacters(name, 1); }

}  // namespace quillmar
