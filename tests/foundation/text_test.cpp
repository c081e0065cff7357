#include "foundation/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace quillmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

const std::string family = "👨‍👩‍👧‍👦";
const std::string flag = "🇦🇺";
const std::string decomposed = "e\u0301";

TEST(Characters, are_grapheme_clusters) {
  const std::vector<std::pair<std::string, std::size_t>> cases = {
      {"", 0},
      {"abc", 3},
      {"é", 1},
      {decomposed, 1},
      {family, 1},
      {flag, 1},
      {flag + flag, 2},
      {"👍🏽", 1},
      {"한국", 2},
      {"\r\n", 1},
      {"\n\r", 2},
      {"a\r\nb", 3},
      {"é\r\n", 2},
      {"न्", 1},
      {std::string(3, '\0'), 3},
      {"x" + family + decomposed + flag, 4},
  };
  for (const auto& [text, count] : cases) {
    EXPECT_EQ(characterCount(text), count) << text;
    EXPECT_EQ(characters(text).size(), count) << text;
  }
}

TEST(Characters, of_a_text_are_its_pieces_in_order) {
  EXPECT_THAT(characters("a" + family + decomposed + "\r\n"), ElementsAre("a", family, decomposed, "\r\n"));
  EXPECT_THAT(characters(""), IsEmpty());
}

TEST(Characters, are_cut_off_whole) {
  EXPECT_EQ(firstCharacters("abcdef", 3), "abc");
  EXPECT_EQ(firstCharacters(family + decomposed + "x", 2), family + decomposed);
  EXPECT_EQ(firstCharacters("a\r\nb", 2), "a\r\n");
  EXPECT_EQ(firstCharacters("abc", 0), "");
  EXPECT_EQ(firstCharacters("", 5), "");
}

TEST(Characters, are_all_returned_if_more_are_requested) {
  EXPECT_EQ(firstCharacters("abc", 4), "abc");
  EXPECT_EQ(firstCharacters(family, std::numeric_limits<std::size_t>::max()), family);
}

TEST(Characters, replace_invalid_bytes) {
  EXPECT_EQ(characterCount("a\xff"
                           "b"),
            3U);
  EXPECT_EQ(firstCharacters("a\xff"
                            "b",
                            2),
            "a\uFFFD");
  EXPECT_THAT(characters("\xC3"), ElementsAre("\uFFFD"));
  EXPECT_THAT(characters("\xED\xA0\x80"), ElementsAre("\uFFFD", "\uFFFD", "\uFFFD"));
}

TEST(Text, is_mapped_to_upper_case_in_full) {
  EXPECT_EQ(uppercased("straße"), "STRASSE");
  EXPECT_EQ(uppercased("éı ﬁ"), "ÉI FI");
  EXPECT_EQ(uppercased("i"), "I");
  EXPECT_EQ(uppercased(""), "");
  EXPECT_EQ(uppercased("a\xff"), "A\uFFFD");
}

TEST(Text, is_mapped_to_lower_case_in_full) {
  EXPECT_EQ(lowercased("ÀÉ STRASSE"), "àé strasse");
  EXPECT_EQ(lowercased("I"), "i");
  EXPECT_EQ(lowercased("İ"), "i\u0307");
  EXPECT_EQ(lowercased("ΑΣ"), "ας");
}

TEST(Text, is_capitalized_word_by_word) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"smart-tv", "Smart-Tv"},
      {"tvOS", "Tvos"},
      {"o'neil", "O'neil"},
      {"o’neil", "O’neil"},
      {"49ERS", "49Ers"},
      {"a1b", "A1B"},
      {"foo_bar.baz", "Foo_Bar.Baz"},
      {"two  words", "Two  Words"},
      {"élan", "Élan"},
      {"e\u0301lan vital", "E\u0301lan Vital"},
      {"ßeta", "Sseta"},
      {"ǆ", "ǅ"},
      {"'quoted'", "'Quoted'"},
      {"漢字abc", "漢字Abc"},
      {"blacklist", "Blacklist"},
      {"", ""},
      {"-", "-"},
  };
  for (const auto& [text, result] : cases) {
    EXPECT_EQ(capitalized(text), result) << text;
  }
}

TEST(CodePoints, belong_to_decimal_digits_of_any_script) {
  EXPECT_TRUE(isDecimalDigit(U'7'));
  EXPECT_TRUE(isDecimalDigit(U'٥'));
  EXPECT_FALSE(isDecimalDigit(U'²'));
  EXPECT_FALSE(isDecimalDigit(U'Ⅷ'));
  EXPECT_FALSE(isDecimalDigit(U'x'));
}

TEST(CodePoints, belong_to_symbols) {
  for (const char32_t c : U"$+<=>^`|~€©😀") {
    EXPECT_EQ(isSymbol(c), c != U'\0') << static_cast<std::uint32_t>(c);
  }
  EXPECT_FALSE(isSymbol(U'!'));
  EXPECT_FALSE(isSymbol(U'a'));
}

TEST(CodePoints, belong_to_punctuation) {
  for (const char32_t c : std::u32string(U"!\"#%&'()*,-./:;?@[\\]_{}¿—")) {
    EXPECT_TRUE(isPunctuation(c)) << static_cast<std::uint32_t>(c);
    EXPECT_FALSE(isSymbol(c)) << static_cast<std::uint32_t>(c);
  }
  EXPECT_FALSE(isPunctuation(U'$'));
}

TEST(CodePoints, belong_to_alphanumerics_with_marks_and_all_numbers) {
  for (const char32_t c : std::u32string(U"aZ9é漢Ⅷ²٥\u0301")) {
    EXPECT_TRUE(isAlphanumeric(c)) << static_cast<std::uint32_t>(c);
  }
  for (const char32_t c : std::u32string(U"_- #😀\u200B")) {
    EXPECT_FALSE(isAlphanumeric(c)) << static_cast<std::uint32_t>(c);
  }
}

TEST(CodePoints, have_a_case_or_none) {
  EXPECT_TRUE(isUppercase(U'É'));
  EXPECT_TRUE(isUppercase(U'ǅ'));
  EXPECT_FALSE(isUppercase(U'é'));
  EXPECT_TRUE(isLowercase(U'ß'));
  EXPECT_FALSE(isLowercase(U'ǅ'));
  EXPECT_FALSE(isLowercase(U'漢'));
  EXPECT_FALSE(isUppercase(U'1'));
}

TEST(CodePoints, are_blank_when_trimming_removes_them) {
  std::vector<char32_t> blanks = {0x09, 0x20, 0xA0, 0x1680, 0x202F, 0x205F, 0x3000};
  for (char32_t c = 0x2000; c <= 0x200B; ++c) {
    blanks.push_back(c);
  }
  const std::set<char32_t> expected(blanks.begin(), blanks.end());
  for (char32_t c = 0; c <= 0x10FFFF; ++c) {
    ASSERT_EQ(isBlank(c), expected.contains(c)) << static_cast<std::uint32_t>(c);
  }
}

TEST(CodePoints, convert_back_to_the_text) {
  EXPECT_THAT(codePoints(decomposed + "😀"), ElementsAre(U'e', U'\u0301', U'😀'));
  EXPECT_EQ(fromCodePoints({U'e', U'\u0301', U'😀'}), decomposed + "😀");
  EXPECT_THAT(codePoints(""), IsEmpty());
  EXPECT_EQ(fromCodePoints({}), "");
}

TEST(CodePoints, that_are_invalid_become_the_replacement_character) {
  EXPECT_EQ(fromCodePoints({0xD800, 0x110000}), "\uFFFD\uFFFD");
  EXPECT_THAT(codePoints("\xff"
                         "a"),
              ElementsAre(U'\uFFFD', U'a'));
}

TEST(Trimming, removes_blanks_at_both_ends_only) {
  EXPECT_EQ(trimmed(" \t\u00A0\u200B a  b \u3000"), "a  b");
  EXPECT_EQ(trimmed("abc"), "abc");
  EXPECT_EQ(trimmed(""), "");
  EXPECT_EQ(trimmed(" \t "), "");
}

TEST(Trimming, keeps_line_breaks) {
  EXPECT_EQ(trimmed(" a\n"), "a\n");
  EXPECT_EQ(trimmed("\n a \r\n "), "\n a \r\n");
}

TEST(Trimming, to_a_set_removes_all_else_at_both_ends) {
  EXPECT_EQ(trimmedTo("#!ab-c?", isAlphanumeric), "ab-c");
  EXPECT_EQ(trimmedTo("##", isAlphanumeric), "");
  EXPECT_EQ(trimmedTo("x", isAlphanumeric), "x");
  EXPECT_EQ(trimmedTo("12 apples", isDecimalDigit), "12");
}

TEST(Utf8, is_valid_only_when_well_formed) {
  EXPECT_TRUE(isValidUtf8(""));
  EXPECT_TRUE(isValidUtf8("é😀"));
  EXPECT_TRUE(isValidUtf8(std::string(1, '\0')));
  for (const auto* bytes : {"\xff", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "a\x80"}) {
    EXPECT_FALSE(isValidUtf8(bytes));
  }
}

TEST(WholeNumber, is_an_optional_sign_and_ascii_digits) {
  const std::vector<std::pair<std::string, std::int64_t>> cases = {
      {"0", 0},
      {"5", 5},
      {"+5", 5},
      {"-5", -5},
      {"007", 7},
      {"-0", 0},
      {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
      {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()}};
  for (const auto& [text, number] : cases) {
    EXPECT_EQ(wholeNumber(text), number) << text;
  }
}

TEST(WholeNumber, has_no_other_form) {
  for (const auto* text : {"", " 5", "5 ", "5.0", "0x10", "٥", "9223372036854775808", "-9223372036854775809",
                           "+", "-", "+-5", "-+5", "++5", "--5", "5a", "1e3", "5\n", "1,000"}) {
    EXPECT_EQ(wholeNumber(text), std::nullopt) << text;
  }
}

TEST(HexScan, reads_up_to_the_first_other_character) {
  const std::vector<std::pair<std::string, std::uint64_t>> cases = {
      {"ff", 0xFF},
      {"FF", 0xFF},
      {"0xFF", 0xFF},
      {"0XfF", 0xFF},
      {" \t\n\u30000xFF", 0xFF},
      {"12G4", 0x12},
      {"12 34", 0x12},
      {"ffffffffffffffff", 0xFFFFFFFFFFFFFFFF},
      {"0x0x5", 0},
  };
  for (const auto& [text, number] : cases) {
    EXPECT_EQ(scanHex(text), number) << text;
  }
}

TEST(HexScan, gives_the_largest_value_for_more_than_64_bits) {
  EXPECT_EQ(scanHex("10000000000000000"), 0xFFFFFFFFFFFFFFFF);
  EXPECT_EQ(scanHex("123456789abcdef0123"), 0xFFFFFFFFFFFFFFFF);
  EXPECT_EQ(scanHex("00000000000000000005"), 5U);
}

TEST(HexScan, gives_0_without_digits) {
  for (const auto* text : {"", "0x", "g", "-5", "+5", " ", "x5", "０"}) {
    EXPECT_EQ(scanHex(text), 0U) << text;
  }
}

TEST(Uuid, is_random_and_in_upper_case) {
  std::set<std::string> all;
  for (int i = 0; i < 200; ++i) {
    const auto uuid = newUUID();
    EXPECT_THAT(uuid, MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    all.insert(uuid);
  }
  EXPECT_EQ(all.size(), 200U);
}

}  // namespace
}  // namespace quillmar
