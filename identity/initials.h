#pragma once

#include <string>
#include <vector>

namespace quillmar {

// The words of a name, split at spaces.
std::vector<std::string> nameWords(const std::string& name);
// The initials of an avatar, in upper case: those of the first two words, or the first two characters of
// `otherwise` if there are fewer words.
std::string initialsOf(const std::vector<std::string>& words, const std::string& otherwise);

}  // namespace quillmar
