#include "identity/initials.h"

#include <sstream>

#include "foundation/text.h"

namespace quillmar {

std::vector<std::string> nameWords(const std::string& name) {
  std::vector<std::string> words;
  std::istringstream pieces(name);
  for (std::string piece; std::getline(pieces, piece, ' ');) {
    if (!piece.empty()) {
      words.push_back(piece);
    }
  }
  return words;
}

std::string initialsOf(const std::vector<std::string>& words, const std::string& otherwise) {
  if (words.size() >= 2) {
    return uppercased(firstCharacters(words[0], 1) + firstCharacters(words[1], 1));
  }
  return uppercased(firstCharacters(otherwise, 2));
}

}  // namespace quillmar
