#pragma once

#include <string>
#include <vector>

namespace quillmar {

// What stands between the blanks of a name.
std::vector<std::string> nameWords(const std::string& name);
// The letters of an avatar, in upper case: those of the first two words, or the first two characters of
// `otherwise` where there are not two.
std::string initialsOf(const std::vector<std::string>& words, const std::string& otherwise);

}  // namespace quillmar
