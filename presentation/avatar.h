#pragma once

#include <string>
#include <string_view>

#include "presentation/colors.h"

// What stands for a person who has no picture: a letter on a coloured circle.
namespace quillmar {

// The same for a name for as long as the process runs; another run may choose another.
SemanticColor avatarColor(std::string_view name);
SemanticColor avatarColor(std::string_view name, std::string_view seed);

// The first character of the name, as it is written.
std::string avatarLetter(std::string_view name);

}  // namespace quillmar
