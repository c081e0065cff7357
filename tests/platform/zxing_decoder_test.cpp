#include "platform/common/zxing_decoder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/grey_canvas.h"

namespace quillmar {
namespace {

using Texts = std::vector<std::string>;

const std::string enrollment =
    R"({"enrollment_code":"ABC123","device_id":"5F0C","device_name":"Zoë’s 📱","device_type":"linux"})";

Texts textsIn(const GreyImage& image) {
  const auto objects = recogniseCodes(image);
  if (!objects.ok()) {
    return {"error: " + objects.error().localizedDescription()};
  }
  Texts texts;
  for (const auto& object : objects.value()) {
    texts.push_back((object.isQRCode ? "" : "no QR code: ") + object.text.value_or("unreadable"));
  }
  return texts;
}

Texts textsIn(const GreyCanvas& canvas) { return textsIn(canvas.view()); }

TEST(ZxingDecoder, a_picture_that_says_it_is_too_large_is_refused_unseen) {
  const std::vector<std::uint8_t> few(100);
  const Texts refused{"error: This picture is too large. Use one of less than 100 megapixels."};
  EXPECT_EQ(textsIn({.width = 10000, .height = 10000, .bytesPerLine = 10000, .bytes = few}), refused);
  EXPECT_EQ(textsIn({.width = 2'000'000'000, .height = 2'000'000'000, .bytesPerLine = 1, .bytes = few}),
            refused);
}

TEST(ZxingDecoder, a_picture_that_is_not_all_there_is_refused_unseen) {
  const std::vector<std::uint8_t> bytes(100);
  const Texts damaged{"error: This picture is damaged."};
  EXPECT_EQ(textsIn({.width = 10, .height = 11, .bytesPerLine = 10, .bytes = bytes}), damaged);
  EXPECT_EQ(textsIn({.width = 10, .height = 10, .bytesPerLine = 11, .bytes = bytes}), damaged);
  EXPECT_EQ(textsIn({.width = 10, .height = 10, .bytesPerLine = 9, .bytes = bytes}), damaged);
  EXPECT_EQ(textsIn({.width = 0, .height = 10, .bytesPerLine = 10, .bytes = bytes}), damaged);
  EXPECT_EQ(textsIn({.width = -1, .height = -1, .bytesPerLine = 10, .bytes = bytes}), damaged);
  EXPECT_EQ(textsIn({.width = 9999, .height = 10000, .bytesPerLine = 9999, .bytes = bytes}), damaged);
}

TEST(ZxingDecoder, the_smallest_pictures_hold_nothing) {
  for (const int side : {1, 2, 3, 5, 8, 20}) {
    EXPECT_EQ(textsIn(GreyCanvas(side, side, 0x80)), Texts()) << side;
    EXPECT_EQ(textsIn(GreyCanvas(side, 1, 0)), Texts()) << side;
    EXPECT_EQ(textsIn(GreyCanvas(1, side)), Texts()) << side;
  }
}

TEST(ZxingDecoder, no_code_is_a_success) {
  EXPECT_EQ(textsIn(GreyCanvas(200, 200)), Texts());
  EXPECT_EQ(textsIn(busyBackground(640, 480)), Texts());
}

TEST(ZxingDecoder, half_a_code_is_none) {
  GreyCanvas canvas = codeOf(enrollment);
  paste(canvas, GreyCanvas(canvas.width, canvas.height / 2), 0, canvas.height / 2);
  EXPECT_EQ(textsIn(canvas), Texts());
}

TEST(ZxingDecoder, reads_texts_as_they_are) {
  using namespace std::string_literals;
  for (const auto& text : {enrollment, "A"s, "0123456789"s, "https://example.com/?a=%20"s, "zwölf"s, "日本"s,
                           "a\0b"s, "a\nb\tc"s, "<script>"s, std::string(1000, 'x')}) {
    EXPECT_EQ(textsIn(codeOf(text)), Texts{text});
  }
}

TEST(ZxingDecoder, bytes_that_are_no_utf8_become_text_that_is) {
  EXPECT_EQ(textsIn(codeOf("Zo\xEB")), Texts{"Zoë"});
}

TEST(ZxingDecoder, lines_may_be_longer_than_the_picture) {
  const GreyCanvas code = codeOf(enrollment);
  GreyCanvas wider(code.width + 13, code.height, 0x33);
  paste(wider, code, 0, 0);
  auto view = wider.view();
  view.width = code.width;
  // The last line ends with the picture.
  view.bytes = view.bytes.first(view.bytes.size() - 13);
  EXPECT_EQ(textsIn(view), Texts{enrollment});
}

TEST(ZxingDecoder, reads_a_code_of_any_size) {
  for (const double factor : {0.5, 0.75, 1.0, 1.3, 2.9, 7.0}) {
    EXPECT_EQ(textsIn(scaled(codeOf(enrollment), factor)), Texts{enrollment}) << factor;
  }
}

TEST(ZxingDecoder, reads_a_code_that_is_held_askew) {
  for (const int degrees : {-15, 15, 45, 90, 180, 200, 270}) {
    EXPECT_EQ(textsIn(rotated(codeOf(enrollment), degrees)), Texts{enrollment}) << degrees;
  }
}

TEST(ZxingDecoder, reads_a_blurred_code) {
  EXPECT_EQ(textsIn(blurred(codeOf(enrollment), 2)), Texts{enrollment});
  EXPECT_EQ(textsIn(blurred(codeOf(enrollment, 12), 6)), Texts{enrollment});
}

TEST(ZxingDecoder, reads_a_code_in_the_dark) {
  EXPECT_EQ(textsIn(darkened(codeOf(enrollment), 0.2)), Texts{enrollment});
}

TEST(ZxingDecoder, reads_a_code_on_a_busy_background) {
  GreyCanvas room = busyBackground(1280, 720);
  paste(room, codeOf(enrollment), 700, 250);
  EXPECT_EQ(textsIn(room), Texts{enrollment});
}

TEST(ZxingDecoder, reads_a_code_that_is_askew_blurred_and_dark_in_a_busy_room) {
  GreyCanvas room = busyBackground(1280, 720);
  paste(room, rotated(scaled(codeOf(enrollment), 1.3), 15), 400, 60);
  EXPECT_EQ(textsIn(darkened(blurred(room, 2), 0.35)), Texts{enrollment});
}

TEST(ZxingDecoder, ten_codes_come_in_reading_order) {
  GreyCanvas sheet(1500, 700);
  Texts expected;
  for (int place = 0; place < 10; ++place) {
    expected.push_back("code " + std::to_string(place));
    // Not quite level, as on a photograph: the right ones stand higher.
    paste(sheet, codeOf(expected.back(), 5), 20 + (place % 5) * 290,
          60 + (place / 5) * 300 - (place % 5) * 10);
  }
  EXPECT_EQ(textsIn(sheet), expected);
}

TEST(ZxingDecoder, the_same_text_twice_is_there_twice) {
  GreyCanvas sheet(600, 300);
  paste(sheet, codeOf("same"), 20, 20);
  paste(sheet, codeOf("same"), 320, 20);
  EXPECT_EQ(textsIn(sheet), (Texts{"same", "same"}));
}

}  // namespace
}  // namespace quillmar
