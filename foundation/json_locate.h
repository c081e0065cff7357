#pragma once

#include <cstddef>
#include <string_view>
#include <variant>
#include <vector>

namespace quillmar {

// The parser does not say where in the text a value stood. These two walk the text once more, on the way to
// an error only, so that a developer finds the place.

using JsonStep = std::variant<std::string_view, std::size_t>;

// Where the value at `path` begins in a valid document; where the last object or list that exists on the way
// begins when the path leads nowhere.
std::size_t locate(std::string_view text, const std::vector<JsonStep>& path);

// The first byte at which `text` stops being a JSON document; its size when it merely ends too early.
std::size_t firstBadByte(std::string_view text);

}  // namespace quillmar
