#include "presentation/avatar.h"

#include <algorithm>
#include <array>
#include <functional>
#include <vector>

#include "foundation/text.h"

namespace quillmar {
namespace {

constexpr std::array avatarColors = {SemanticColor::brandBlue,    SemanticColor::brandTeal,
                                     SemanticColor::brandGreen,   SemanticColor::brandOrange,
                                     SemanticColor::systemPurple, SemanticColor::systemOrange};

std::vector<std::string_view> wordsOf(std::string_view name) {
  std::vector<std::string_view> words;
  while (!name.empty()) {
    const auto word = name.substr(0, name.find(' '));
    name.remove_prefix(std::min(word.size() + 1, name.size()));
    if (!word.empty()) {
      words.push_back(word);
    }
  }
  return words;
}

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

std::string initials(std::string_view name) {
  const auto words = wordsOf(name);
  return uppercased(words.size() >= 2 ? firstCharacters(words[0], 1) + firstCharacters(words[1], 1)
                                      : firstCharacters(name, 2));
}

}  // namespace quillmar
