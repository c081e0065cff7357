#pragma once

#include <string>
#include <string_view>

#include "presentation/colors.h"

// The avatar of a person without a picture: a letter on a coloured circle.
namespace quillmar {

// The same name gets the same colour while the process runs; another run may choose another.
SemanticColor avatarColor(std::string_view name);
SemanticColor avatarColor(std::string_view name, std::string_view seed);

// The first character of the name, in its own case.
std::string avatarLetter(std::string_view name);

}  // namespace quillmar
