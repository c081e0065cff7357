#pragma once

#include <cstddef>
#include <string_view>
#include <variant>
#include <vector>

namespace quillmar {

// simdjson doesn't report where in the text a value began. After an error these walk the text a second time.

using JsonStep = std::variant<std::string_view, std::size_t>;

// The offset of the value at `path` in a valid document, or of the last container on the way if the path
// doesn't exist.
std::size_t locate(std::string_view text, const std::vector<JsonStep>& path);

// The offset of the first invalid byte; the size of the text if it is only truncated.
std::size_t firstBadByte(std::string_view text);

}  // namespace quillmar
