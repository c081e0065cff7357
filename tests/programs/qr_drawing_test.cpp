#include "programs/agent/qr_drawing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/common/qrencode_encoder.h"
#include "tests/programs/terminal_picture.h"

namespace quillmar::agent {
namespace {

using testing::Each;
using testing::HasSubstr;
using testing::Not;

const std::string enrollment =
    R"({"enrollment_code":"BEF2VGXA","device_id":"5c6fe067-f33e-4f8d-a82b-b64691dc0de0","device_name":"Emma's laptop","device_type":"ios"})";

std::optional<std::vector<std::string>> draw(const Terminal& terminal, const std::string& text = enrollment) {
  return drawQRCode(QrencodeEncoder(), text, terminal);
}

std::string joined(const std::vector<std::string>& lines) {
  std::string all;
  for (const std::string& line : lines) {
    all += line + '\n';
  }
  return all;
}

std::string readFrom(const Terminal& terminal, bool isDarkTerminal) {
  const auto lines = draw(terminal);
  const auto objects =
      recogniseCodes(pictureOf(joined(lines.value_or(std::vector<std::string>{})), isDarkTerminal).view());
  return objects.ok() && objects.value().size() == 1 ? objects.value().front().text.value_or("") : "";
}

TEST(QRDrawing, is_scanned_from_every_kind_of_terminal) {
  for (const Terminal& terminal : {
           Terminal{.isInteractive = true, .columns = 80, .hasUTF8 = true, .hasColour = true},
           Terminal{.isInteractive = true, .columns = 200, .hasUTF8 = false, .hasColour = true},
           Terminal{.isInteractive = true, .columns = 80, .hasUTF8 = false, .hasColour = true},
       }) {
    EXPECT_EQ(readFrom(terminal, true), enrollment) << terminal.columns << ' ' << terminal.hasUTF8;
    EXPECT_EQ(readFrom(terminal, false), enrollment) << terminal.columns << ' ' << terminal.hasUTF8;
  }
}

TEST(QRDrawing, without_colours_is_scanned_from_a_dark_terminal) {
  EXPECT_EQ(readFrom({.isInteractive = true, .columns = 80, .hasUTF8 = true, .hasColour = false}, true),
            enrollment);
}

TEST(QRDrawing, without_colours_contains_no_colour_codes) {
  const auto lines = draw({.isInteractive = false, .columns = 80, .hasUTF8 = true, .hasColour = false});
  ASSERT_TRUE(lines);
  EXPECT_THAT(*lines, Each(Not(HasSubstr("\x1b"))));
}

TEST(QRDrawing, resets_the_colours_at_the_end_of_each_line) {
  for (const bool hasUTF8 : {true, false}) {
    const auto lines = draw({.isInteractive = true, .columns = 80, .hasUTF8 = hasUTF8, .hasColour = true});
    ASSERT_TRUE(lines);
    EXPECT_THAT(*lines, Each(testing::EndsWith("\x1b[0m")));
  }
}

TEST(QRDrawing, gets_a_narrower_margin_if_there_is_no_room_for_the_full_one) {
  const auto modules = *QrencodeEncoder().encode(enrollment, QRCorrection::low);
  const Terminal exact{.isInteractive = true,
                       .columns = static_cast<int>(modules.side) + 2,
                       .hasUTF8 = true,
                       .hasColour = true};
  EXPECT_EQ(readFrom(exact, true), enrollment);
  Terminal narrow = exact;
  narrow.columns -= 1;
  EXPECT_FALSE(draw(narrow));
}

// The rows of most windows, minus one for the line below the code.
TEST(QRDrawing, fits_into_a_low_window_and_is_scanned_from_it) {
  const Terminal low{.isInteractive = true, .columns = 80, .rows = 23, .hasUTF8 = true, .hasColour = true};
  ASSERT_TRUE(draw(low));
  EXPECT_LE(draw(low)->size(), 23U);
  EXPECT_EQ(readFrom(low, true), enrollment);
  EXPECT_EQ(readFrom(low, false), enrollment);
  Terminal colourless = low;
  colourless.hasColour = false;
  EXPECT_EQ(readFrom(colourless, true), enrollment);
}

TEST(QRDrawing, tells_how_many_rows_it_needs_if_there_are_too_few) {
  Terminal lowest{.isInteractive = true, .columns = 80, .rows = 10, .hasUTF8 = true, .hasColour = true};
  EXPECT_FALSE(draw(lowest));
  const auto rows = rowsForQRCode(QrencodeEncoder(), enrollment, lowest);
  ASSERT_EQ(rows, 22U);
  lowest.rows = static_cast<int>(*rows);
  EXPECT_TRUE(draw(lowest));
  lowest.rows -= 1;
  EXPECT_FALSE(draw(lowest));
}

TEST(QRDrawing, tells_no_number_of_rows_for_a_narrow_terminal) {
  const Terminal narrow{.isInteractive = true, .columns = 20, .rows = 10, .hasUTF8 = true, .hasColour = true};
  EXPECT_EQ(rowsForQRCode(QrencodeEncoder(), enrollment, narrow), std::nullopt);
}

TEST(QRDrawing, is_absent_if_the_terminal_can_not_show_it) {
  EXPECT_FALSE(draw({.isInteractive = true, .columns = 80, .hasUTF8 = false, .hasColour = false}));
  EXPECT_FALSE(draw({.isInteractive = true, .columns = 20, .hasUTF8 = true, .hasColour = true}));
}

TEST(QRDrawing, fits_into_eighty_columns_with_the_longest_device_name) {
  // The pretty name of a host has at most 64 bytes.
  std::string text = enrollment;
  text.replace(text.find("Emma's laptop"), 13, std::string(64, 'n'));
  EXPECT_TRUE(draw({.isInteractive = true, .columns = 80, .hasUTF8 = true, .hasColour = true}, text));
}

}  // namespace
}  // namespace quillmar::agent
