#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmar {

// The invite code in a scanned text, in upper case: the text between the first "code=" and the next "&", of
// any length, or a whole text of six characters. nullopt for any other text.
std::optional<std::string> parseInviteText(std::string_view text);

}  // namespace quillmar
