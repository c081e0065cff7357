#include "foundation/url.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace quillmar {
namespace {

using namespace std::string_literals;

TEST(Url, is_refused_for_invalid_characters) {
  const std::vector<std::string> refused = {"",
                                            " ",
                                            "https://h/a b",
                                            " https://h",
                                            "https://h ",
                                            "https://h\n",
                                            "https://h\t",
                                            "https://ü/",
                                            "https://h/é",
                                            "https://h/{}",
                                            "https://h/a|b",
                                            "https://h/\"",
                                            "https://h/<a>",
                                            "https://h\\p",
                                            "https://h/^",
                                            "https://h/`",
                                            "https://h\0"s,
                                            "https://h/\x7f",
                                            "https://h/\xff"};
  for (const auto& text : refused) {
    EXPECT_FALSE(URL::parse(text)) << text;
  }
}

TEST(Url, is_refused_for_a_percent_sign_without_two_hex_digits) {
  for (const auto* text :
       {"https://h/%zz", "https://h/%", "https://h/%4", "https://h/%4g", "https://h/%%41"}) {
    EXPECT_FALSE(URL::parse(text)) << text;
  }
  EXPECT_TRUE(URL::parse("https://h/%aF%00"));
}

TEST(Url, is_refused_for_a_second_number_sign) {
  EXPECT_TRUE(URL::parse("https://h/#a"));
  EXPECT_FALSE(URL::parse("https://h/#a#b"));
}

TEST(Url, may_hold_every_character_of_a_url) {
  const std::string all =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!$&'()*+,-./:;=?@_~[]%20#";
  const auto url = URL::parse(all);
  ASSERT_TRUE(url);
  EXPECT_EQ(url->text(), all);
}

struct Parts {
  std::string text;
  std::optional<std::string> scheme;
  std::optional<std::string> host;
};

void PrintTo(const Parts& parts, std::ostream* out) { *out << parts.text; }

class UrlParts : public testing::TestWithParam<Parts> {};

TEST_P(UrlParts, are_found_as_they_are_written) {
  const auto url = URL::parse(GetParam().text);
  ASSERT_TRUE(url);
  EXPECT_EQ(url->text(), GetParam().text);
  EXPECT_EQ(url->scheme(), GetParam().scheme);
  EXPECT_EQ(url->host(), GetParam().host);
}

constexpr auto none = std::nullopt;

INSTANTIATE_TEST_SUITE_P(
    Vectors, UrlParts,
    testing::Values(Parts{"https://h/p", "https", "h"}, Parts{"HTTPS://h", "HTTPS", "h"},
                    Parts{"https://", "https", none}, Parts{"https:///x", "https", none},
                    Parts{"https:abc", "https", none}, Parts{"//h", none, "h"},
                    Parts{"https://u:p@h:8443/x", "https", "h"}, Parts{"https://[::1]:8443/", "https", "::1"},
                    Parts{"https://H.Example", "https", "H.Example"}, Parts{"https://h?q", "https", "h"},
                    Parts{"https://h#f", "https", "h"}, Parts{"https://h:/", "https", "h"},
                    Parts{"https://:80", "https", none}, Parts{"https://u@", "https", none},
                    Parts{"https://a@b@c/", "https", "c"}, Parts{"https://[]", "https", none},
                    Parts{"https://[::1", "https", none}, Parts{"https://u@[::1]", "https", "::1"},
                    Parts{"https://h%41", "https", "h%41"}, Parts{"abc", none, none},
                    Parts{"/a:b", none, none}, Parts{"?a:b", none, none}, Parts{"#a:b", none, none},
                    Parts{":abc", none, none}, Parts{"1a:b", none, none}, Parts{"a_b:c", none, none},
                    Parts{"a+b-c.1:d", "a+b-c.1", none}, Parts{"/a//h", none, none},
                    Parts{"https:/h", "https", none}, Parts{"http", none, none},
                    Parts{"http:", "http", none}));

TEST(Url, has_path_and_query_encoded_byte_by_byte_in_upper_case) {
  EXPECT_EQ(percentEncodedForPath("é"), "%C3%A9");
  EXPECT_EQ(percentEncodedForQuery("a b\n"), "a%20b%0A");
  EXPECT_EQ(percentEncodedForPath("\0\xff"s), "%00%FF");
}

TEST(Url, has_a_percent_sign_encoded_always) {
  EXPECT_EQ(percentEncodedForPath("%41%"), "%2541%25");
  EXPECT_EQ(percentEncodedForQuery("%41%"), "%2541%25");
}

TEST(Url, keeps_different_characters_in_a_path_and_in_a_query) {
  const std::string common =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!$&'()*+,-./:=@_~";
  EXPECT_EQ(percentEncodedForPath(common), common);
  EXPECT_EQ(percentEncodedForQuery(common + ";?"), common + ";?");
  EXPECT_EQ(percentEncodedForPath(";?"), "%3B%3F");
  EXPECT_EQ(percentEncodedForPath("\"#<>[\\]^`{|}"), "%22%23%3C%3E%5B%5C%5D%5E%60%7B%7C%7D");
  EXPECT_EQ(percentEncodedForQuery("\"#<>[\\]^`{|}"), "%22%23%3C%3E%5B%5C%5D%5E%60%7B%7C%7D");
}

}  // namespace
}  // namespace quillmar
