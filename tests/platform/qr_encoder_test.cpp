#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "platform/common/qrencode_encoder.h"
#include "testing/qr_picture.h"

namespace quillmar {
namespace {

TEST(QrencodeEncoder, a_code_reads_back_byte_for_byte_at_level_m) {
  const QrencodeEncoder encoder;
  for (const std::string text : {R"({"enrollment_code":"ABC123","device_id":"5F0C","device_name":"Zoë’s 📱"})",
                                 "A", "0123456789", "https://example.com/?a=%20", "zwölf"}) {
    const auto modules = encoder.encode(text);
    ASSERT_TRUE(modules);
    const auto result = readPictureOf(*modules);
    ASSERT_TRUE(result.isValid()) << text;
    EXPECT_EQ(textOf(result), text);
    EXPECT_EQ(result.ecLevel(), L"M");
  }
}

TEST(QrencodeEncoder, a_code_with_less_correction_is_smaller_and_reads_back_too) {
  const QrencodeEncoder encoder;
  const std::string text(130, 'x');
  const auto modules = encoder.encode(text, QRCorrection::low);
  ASSERT_TRUE(modules);
  EXPECT_LT(modules->side, encoder.encode(text)->side);
  const auto result = readPictureOf(*modules);
  EXPECT_EQ(textOf(result), text);
  EXPECT_EQ(result.ecLevel(), L"L");
  EXPECT_TRUE(encoder.encode(std::string(2953, 'x'), QRCorrection::low));
  EXPECT_FALSE(encoder.encode(std::string(2954, 'x'), QRCorrection::low));
}

TEST(QrencodeEncoder, the_modules_are_a_square_with_its_three_finder_patterns) {
  const auto modules = QrencodeEncoder().encode("HELLO");
  ASSERT_TRUE(modules);
  EXPECT_EQ(modules->side, 21U);
  ASSERT_EQ(modules->dark.size(), 21U * 21U);
  for (const auto& [row, column] : {std::pair(0U, 0U), std::pair(0U, 14U), std::pair(14U, 0U)}) {
    EXPECT_TRUE(modules->isDark(row, column));
    EXPECT_FALSE(modules->isDark(row + 1, column + 1));
    EXPECT_TRUE(modules->isDark(row + 3, column + 3));
  }
}

TEST(QrencodeEncoder, the_largest_text_fits_and_one_byte_more_does_not) {
  const QrencodeEncoder encoder;
  const std::string largest(2331, 'x');
  const auto modules = encoder.encode(largest);
  ASSERT_TRUE(modules);
  EXPECT_EQ(textOf(readPictureOf(*modules)), largest);
  EXPECT_FALSE(encoder.encode(largest + 'x'));
  EXPECT_FALSE(encoder.encode(std::string(100000, 'x')));
}

TEST(QrencodeEncoder, nothing_makes_no_code) { EXPECT_FALSE(QrencodeEncoder().encode("")); }

TEST(QrencodeEncoder, a_zero_byte_does_not_end_the_text) {
  using namespace std::string_literals;
  const auto modules = QrencodeEncoder().encode("a\0b"s);
  ASSERT_TRUE(modules);
  EXPECT_EQ(textOf(readPictureOf(*modules)), "a\0b"s);
}

TEST(QrencodeEncoder, the_same_text_gives_the_same_code) {
  EXPECT_EQ(QrencodeEncoder().encode("text"), QrencodeEncoder().encode("text"));
  EXPECT_NE(QrencodeEncoder().encode("text"), QrencodeEncoder().encode("test"));
}

}  // namespace
}  // namespace quillmar
