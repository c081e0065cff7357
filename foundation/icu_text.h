#pragma once

#include <unicode/unistr.h>

#include <string>

// For the folder's own sources: nothing outside of it sees ICU's types.
namespace quillmar {

inline std::string utf8(const icu::UnicodeString& text) {
  std::string result;
  return text.toUTF8String(result);
}

}  // namespace quillmar
