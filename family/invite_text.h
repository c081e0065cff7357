#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmar {

// The invite code in a scanned text, in upper case: what follows the first "code=" up to an "&", whatever its
// length, or the whole of a text of six characters. Nothing for any other text.
std::optional<std::string> parseInviteText(std::string_view text);

}  // namespace quillmar
