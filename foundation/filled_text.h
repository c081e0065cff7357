#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>

namespace quillmar {

// Replaces each "%@" and "%d" in order. A placeholder without a value stays. Inserted values are not searched
// for placeholders.
inline std::string filled(std::string_view text, std::initializer_list<std::string_view> values) {
  constexpr std::size_t placeLength = 2;
  std::string result;
  for (const auto value : values) {
    const auto place = std::min(text.find("%@"), text.find("%d"));
    if (place == std::string_view::npos) {
      break;
    }
    result.append(text.substr(0, place)).append(value);
    text.remove_prefix(place + placeLength);
  }
  return result.append(text);
}

}  // namespace quillmar
