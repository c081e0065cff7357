#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace quillmar::sandbox {

// ASCII only.
[[nodiscard]] inline std::string upperCase(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](char c) { return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c; });
  return text;
}

[[nodiscard]] inline std::string lowerCase(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
  return text;
}

// Whether the text contains anything but white space.
[[nodiscard]] inline bool isFilled(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") != std::string_view::npos;
}

}  // namespace quillmar::sandbox
