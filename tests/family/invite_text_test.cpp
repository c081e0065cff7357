#include "family/invite_text.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace quillmar {
namespace {

constexpr std::size_t megabyte = 1'000'000;

std::string repeated(const std::string& text, std::size_t times) {
  std::string all;
  for (; times > 0; --times) {
    all += text;
  }
  return all;
}

TEST(InviteText, finds_the_code_in_a_query_or_a_bare_code) {
  struct Row {
    std::string text;
    std::optional<std::string> code;
  };
  for (const auto& row :
       std::vector<Row>{{"https://quillmar.example/join?code=abc123&x=1", "ABC123"},
                        {"https://quillmar.example/join?x=1&code=abc123", "ABC123"},
                        {"code=abc123", "ABC123"},
                        {"anything at all code=abc123", "ABC123"},
                        {"code=", ""},
                        {"code=&code=abc123", ""},
                        {"code=code=abc123", ""},
                        {"code=abccode=def", "ABC"},
                        {"postcode=2000", "2000"},
                        {"code=ab cd#x", "AB CD#X"},
                        {"code=a-very-long-code-of-any-length", "A-VERY-LONG-CODE-OF-ANY-LENGTH"},
                        {"code=%41bc", "%41BC"},
                        {"code=straße", "STRASSE"},
                        {"CODE=abc123", std::nullopt},
                        {"code =abc", std::nullopt},
                        {"abc123", "ABC123"},
                        {"ABC123", "ABC123"},
                        {"abc12", std::nullopt},
                        {"abc1234", std::nullopt},
                        {"", std::nullopt},
                        {"      ", "      "},
                        {" abc12", " ABC12"},
                        {"abc123\n", std::nullopt},
                        {"code=1", "1"},
                        {"👨‍👩‍👧👨‍👩‍👧👨‍👩‍👧abc",
                         "👨‍👩‍👧👨‍👩‍👧👨‍👩‍👧ABC"},
                        {"👨‍👩‍👧👨‍👩‍👧👨‍👩‍👧", std::nullopt}}) {
    EXPECT_EQ(parseInviteText(row.text), row.code) << row.text;
  }
}

TEST(InviteText, handles_a_text_of_any_size) {
  EXPECT_EQ(parseInviteText(std::string(megabyte, 'a')), std::nullopt);
  EXPECT_EQ(parseInviteText(repeated("👨‍👩‍👧", megabyte / 18)), std::nullopt);
  EXPECT_EQ(parseInviteText(std::string(megabyte, 'x') + "code=abc123"), "ABC123");
  EXPECT_EQ(parseInviteText("code=" + std::string(megabyte, 'a')), std::string(megabyte, 'A'));
  EXPECT_EQ(parseInviteText(repeated("code=", megabyte / 5)), "");
  EXPECT_EQ(parseInviteText(repeated("&", megabyte)), std::nullopt);
}

TEST(InviteText, handles_bytes_that_are_not_text) {
  EXPECT_EQ(parseInviteText(std::string("code=a\0b&c", 10)), std::string("A\0B", 3));
  EXPECT_EQ(parseInviteText("\xff\xfe\xfd"), std::nullopt);
  EXPECT_EQ(parseInviteText("code=a\xff"), "A\xEF\xBF\xBD");
  EXPECT_EQ(parseInviteText(std::string(megabyte, '\xff')), std::nullopt);
}

}  // namespace
}  // namespace quillmar
