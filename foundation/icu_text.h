#pragma once

#include <unicode/unistr.h>

#include <string>

// Only for sources of this folder: no other folder sees ICU's types.
namespace quillmar {

inline std::string utf8(const icu::UnicodeString& text) {
  std::string result;
  return text.toUTF8String(result);
}

}  // namespace quillmar
