#include <ZXing/BarcodeFormat.h>
#include <ZXing/DecodeHints.h>
#include <ZXing/ReadBarcode.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/linux/qrencode_encoder.h"

namespace quillmar {
namespace {

constexpr std::size_t moduleSize = 4;
constexpr std::size_t quietZone = 4;

// As a camera would see it: white paper around, each module a few pixels wide.
ZXing::Result readBack(const QRModules& modules) {
  const std::size_t side = (modules.side + 2 * quietZone) * moduleSize;
  std::vector<std::uint8_t> pixels(side * side, 0xFF);
  for (std::size_t y = 0; y < modules.side * moduleSize; ++y) {
    for (std::size_t x = 0; x < modules.side * moduleSize; ++x) {
      if (modules.isDark(y / moduleSize, x / moduleSize)) {
        pixels[(y + quietZone * moduleSize) * side + x + quietZone * moduleSize] = 0;
      }
    }
  }
  const ZXing::ImageView image(pixels.data(), static_cast<int>(side), static_cast<int>(side),
                               ZXing::ImageFormat::Lum);
  return ZXing::ReadBarcode(image, ZXing::DecodeHints().setFormats(ZXing::BarcodeFormat::QRCode));
}

std::string textOf(const ZXing::Result& result) {
  const auto& bytes = result.bytes();
  return {bytes.begin(), bytes.end()};
}

TEST(QrencodeEncoder, a_code_reads_back_byte_for_byte_at_level_m) {
  const QrencodeEncoder encoder;
  for (const std::string text : {R"({"enrollment_code":"ABC123","device_id":"5F0C","device_name":"Zoë’s 📱"})",
                                 "A", "0123456789", "https://example.com/?a=%20", "zwölf"}) {
    const auto modules = encoder.encode(text);
    ASSERT_TRUE(modules);
    const auto result = readBack(*modules);
    ASSERT_TRUE(result.isValid()) << text;
    EXPECT_EQ(textOf(result), text);
    EXPECT_EQ(result.ecLevel(), L"M");
  }
}

TEST(QrencodeEncoder, the_modules_are_a_square_with_its_three_finder_patterns) {
  const auto modules = QrencodeEncoder().encode("HELLO");
  ASSERT_TRUE(modules);
  EXPECT_EQ(modules->side, 21U);
  ASSERT_EQ(modules->dark.size(), 21U * 21U);
  for (const auto& [row, column] : {std::pair(0, 0), std::pair(0, 14), std::pair(14, 0)}) {
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
  EXPECT_EQ(textOf(readBack(*modules)), largest);
  EXPECT_FALSE(encoder.encode(largest + 'x'));
  EXPECT_FALSE(encoder.encode(std::string(100000, 'x')));
}

TEST(QrencodeEncoder, nothing_makes_no_code) { EXPECT_FALSE(QrencodeEncoder().encode("")); }

TEST(QrencodeEncoder, a_zero_byte_does_not_end_the_text) {
  using namespace std::string_literals;
  const auto modules = QrencodeEncoder().encode("a\0b"s);
  ASSERT_TRUE(modules);
  EXPECT_EQ(textOf(readBack(*modules)), "a\0b"s);
}

TEST(QrencodeEncoder, the_same_text_gives_the_same_code) {
  EXPECT_EQ(QrencodeEncoder().encode("text"), QrencodeEncoder().encode("text"));
  EXPECT_NE(QrencodeEncoder().encode("text"), QrencodeEncoder().encode("test"));
}

}  // namespace
}  // namespace quillmar
