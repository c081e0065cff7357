#include "presentation/adaptive_content.h"

#include <gtest/gtest.h>

namespace quillmar {
namespace {

TEST(AdaptiveContent, has_no_width_limit_on_a_compact_window) {
  const AdaptiveContentModifier modifier{HorizontalSizeClass::compact, wideContentWidth};
  EXPECT_EQ(modifier.widthLimit(), std::nullopt);
}

TEST(AdaptiveContent, is_limited_to_its_own_width_on_a_regular_window) {
  const AdaptiveContentModifier modifier{HorizontalSizeClass::regular, wideContentWidth};
  EXPECT_EQ(modifier.widthLimit(), 700);
}

TEST(AdaptiveContent, is_regular_from_600_points_on) {
  EXPECT_EQ(horizontalSizeClass(599.5), HorizontalSizeClass::compact);
  EXPECT_EQ(horizontalSizeClass(600), HorizontalSizeClass::regular);
}

TEST(AdaptiveContent, is_usually_600_points_wide) {
  const AdaptiveContentModifier modifier{.horizontalSizeClass = HorizontalSizeClass::regular};
  EXPECT_EQ(modifier.widthLimit(), 600);
}

}  // namespace
}  // namespace quillmar
