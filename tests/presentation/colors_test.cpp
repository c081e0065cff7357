#include "presentation/colors.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace quillmar {

void PrintTo(const Color& color, std::ostream* out) {
  *out << color.red * 255 << '/' << color.green * 255 << '/' << color.blue * 255 << " at "
       << color.alpha * 255;
}

namespace {

Color bytes(double red, double green, double blue, double alpha = 255) {
  return {red / 255, green / 255, blue / 255, alpha / 255};
}

const Color black = bytes(0, 0, 0);
const Color white = bytes(255, 255, 255);

TEST(Colors, are_read_by_the_length_of_the_hex_text) {
  const std::vector<std::pair<std::string, Color>> cases = {
      {"FFF", white},
      {"#FFF", white},
      {"fff", white},
      {"#1aF", bytes(0x11, 0xAA, 0xFF)},
      {"007AFF", bytes(0x00, 0x7A, 0xFF)},
      {"  #007aff; ", bytes(0x00, 0x7A, 0xFF)},
      {"80FF0000", bytes(255, 0, 0, 128)},
      {"#00FFFFFF", bytes(255, 255, 255, 0)},
      {"FFFFFFFF", white},
  };
  for (const auto& [text, color] : cases) {
    EXPECT_EQ(colorFromHex(text), color) << text;
  }
}

TEST(Colors, of_any_other_length_are_opaque_black) {
  for (const std::string text :
       {"", "#", "F", "FF", "FFFF", "FFFFF", "#FFFFF", "FFFFFFF", "FFFFFFFFF", "💙"}) {
    EXPECT_EQ(colorFromHex(text), black) << text;
  }
}

TEST(Colors, keep_the_digits_before_the_first_non_hex_character) {
  EXPECT_EQ(colorFromHex("12G"), bytes(0, 0x11, 0x22));
  EXPECT_EQ(colorFromHex("12G456"), bytes(0, 0, 0x12));
  EXPECT_EQ(colorFromHex("zzz"), black);
  EXPECT_EQ(colorFromHex("zzzzzzzz"), bytes(0, 0, 0, 0));
}

TEST(Colors, count_a_0x_prefix_as_part_of_the_length) {
  EXPECT_EQ(colorFromHex("0x7"), bytes(0, 0, 0x77));
  EXPECT_EQ(colorFromHex("0x1234"), bytes(0, 0x12, 0x34));
  EXPECT_EQ(colorFromHex("0xF"), bytes(0, 0, 255));
}

TEST(Colors, trim_only_the_ends) { EXPECT_EQ(colorFromHex("#F F#"), bytes(0, 0, 255)); }

TEST(Colors, count_characters_and_not_bytes) {
  EXPECT_EQ(colorFromHex("FFé"), bytes(0, 255, 255));
  EXPECT_EQ(colorFromHex("FFe\u0301"), bytes(255, 255, 0xEE));
}

TEST(Colors, by_meaning_are_the_same_in_both_schemes) {
  const std::vector<std::pair<std::string, Color>> cases = {{"brandBlue", bytes(0x00, 0x7A, 0xFF)},
                                                            {"brandBlueDark", bytes(0x00, 0x55, 0xD4)},
                                                            {"brandTeal", bytes(0x00, 0xC9, 0xA7)},
                                                            {"brandTealDark", bytes(0x0A, 0x7D, 0x6A)},
                                                            {"brandGold", bytes(0xFF, 0xD7, 0x00)},
                                                            {"brandGreen", bytes(0x34, 0xC7, 0x59)},
                                                            {"brandOrange", bytes(0xFF, 0x95, 0x00)},
                                                            {"brandRed", bytes(0xFF, 0x3B, 0x30)},
                                                            {"statusOnline", bytes(0x34, 0xC7, 0x59)},
                                                            {"statusOffline", bytes(0x8E, 0x8E, 0x93)},
                                                            {"systemPurple", bytes(0xAF, 0x52, 0xDE)},
                                                            {"systemOrange", bytes(0xFF, 0x9F, 0x0A)},
                                                            {"onBrand", white},
                                                            {"shadow", black},
                                                            {"cameraGround", black},
                                                            {"qrPlate", white},
                                                            {"qrPlateMark", bytes(0xC7, 0xC7, 0xCC)}};
  ASSERT_EQ(cases.size(), rawNames<SemanticColor>.size());
  for (const auto& [name, expected] : cases) {
    const auto known = fromRawValue<SemanticColor>(name);
    ASSERT_TRUE(known) << name;
    EXPECT_EQ(color(*known), expected) << name;
  }
}

TEST(Colors, by_scheme_come_in_pairs) {
  EXPECT_EQ(colors(SchemeColor::text).dark, white);
  EXPECT_EQ(colors(SchemeColor::text).light, bytes(0x1C, 0x1C, 0x1E));
  EXPECT_EQ(colors(SchemeColor::secondaryText).dark, bytes(0x8E, 0x8E, 0x93));
  EXPECT_EQ(colors(SchemeColor::secondaryText).light, bytes(0x6C, 0x6C, 0x70));
  EXPECT_EQ(colors(SchemeColor::card).dark, bytes(0x2C, 0x2C, 0x2E));
  EXPECT_EQ(colors(SchemeColor::card).light, bytes(0xF2, 0xF2, 0xF7));
}

TEST(Colors, are_translucent_for_separators_and_dimming) {
  EXPECT_EQ(colors(SchemeColor::separator).dark, (Color{1, 1, 1, 0.12}));
  EXPECT_EQ(colors(SchemeColor::dim).dark, (Color{0, 0, 0, 0.55}));
  EXPECT_EQ(colors(SchemeColor::dim).light, (Color{0, 0, 0, 0.4}));
}

}  // namespace
}  // namespace quillmar
