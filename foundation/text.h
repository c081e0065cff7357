#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Text as people see it. A character is an extended grapheme cluster; invalid UTF-8 is read as U+FFFD.
// All functions are free of state and may be called on any thread.
namespace quillmar {

std::size_t characterCount(std::string_view text);
// The first `count` characters, the whole text when it has no more.
std::string firstCharacters(std::string_view text, std::size_t count);
std::vector<std::string> characters(std::string_view text);

// Full Unicode mapping in the root locale.
std::string uppercased(std::string_view text);
std::string lowercased(std::string_view text);
// First cased letter of each word in title case, the others in lower case; an apostrophe does not end a word.
std::string capitalized(std::string_view text);

// Of one code point.
bool isDecimalDigit(char32_t c);  // Nd
bool isSymbol(char32_t c);        // S*
bool isPunctuation(char32_t c);   // P*
bool isAlphanumeric(char32_t c);  // L*, M*, N*
bool isBlank(char32_t c);         // white space that trimming removes; no line breaks
bool isUppercase(char32_t c);     // Lu, Lt
bool isLowercase(char32_t c);     // Ll

std::vector<char32_t> codePoints(std::string_view text);
std::string fromCodePoints(const std::vector<char32_t>& points);

std::string trimmed(std::string_view text);
// Without code points at both ends that `keep` refuses.
std::string trimmedTo(std::string_view text, bool (*keep)(char32_t));

bool isValidUtf8(std::string_view bytes);

// Optional sign, then ASCII digits only.
std::optional<std::int64_t> wholeNumber(std::string_view text);
// Skips leading white space and one 0x, reads up to the first other character; the largest value on overflow,
// 0 when nothing can be read.
std::uint64_t scanHex(std::string_view text);

// A random (version 4) UUID in upper case.
std::string newUUID();

}  // namespace quillmar
