#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Text in characters, that is extended grapheme clusters. Invalid UTF-8 is read as U+FFFD. Thread-safe.
namespace quillmar {

std::size_t characterCount(std::string_view text);
// The whole text if it has fewer.
std::string firstCharacters(std::string_view text, std::size_t count);
std::vector<std::string> characters(std::string_view text);

// Full Unicode mapping in the root locale.
std::string uppercased(std::string_view text);
std::string lowercased(std::string_view text);
// Title case for the first cased letter of each word, lower case for the rest. An apostrophe doesn't end a
// word.
std::string capitalized(std::string_view text);

// Categories of a code point.
bool isDecimalDigit(char32_t c);  // Nd
bool isSymbol(char32_t c);        // S*
bool isPunctuation(char32_t c);   // P*
bool isAlphanumeric(char32_t c);  // L*, M*, N*
bool isBlank(char32_t c);         // white space that trimming removes; no line breaks
bool isUppercase(char32_t c);     // Lu, Lt
bool isLowercase(char32_t c);     // Ll

std::vector<char32_t> codePoints(std::string_view text);
// Makes no copy of an ASCII text, which may be a password.
bool anyCodePoint(std::string_view text, bool (*accepts)(char32_t));
std::string fromCodePoints(const std::vector<char32_t>& points);

std::string trimmed(std::string_view text);
// Removes code points at both ends until `keep` accepts one.
std::string trimmedTo(std::string_view text, bool (*keep)(char32_t));

bool isValidUtf8(std::string_view bytes);

// An optional sign and ASCII digits only.
std::optional<std::int64_t> wholeNumber(std::string_view text);
// Skips leading white space and one 0x, and reads up to the first other character. The largest value on
// overflow, 0 if there are no digits.
std::uint64_t scanHex(std::string_view text);

// A random (version 4) UUID in upper case.
std::string newUUID();

}  // namespace quillmar
