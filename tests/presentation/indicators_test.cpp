#include "presentation/indicators.h"

#include <gtest/gtest.h>

namespace quillmar {
namespace {

TEST(Indicators, show_offline_as_a_plain_dot) {
  const OnlineStatusIndicator indicator{.isOnline = false, .size = 10};
  EXPECT_EQ(indicator.dotColor(), SemanticColor::statusOffline);
  EXPECT_EQ(indicator.haloDiameter(), std::nullopt);
}

TEST(Indicators, show_online_with_a_faint_halo_4_points_wider) {
  const OnlineStatusIndicator indicator{.isOnline = true, .size = 10};
  EXPECT_EQ(indicator.dotColor(), SemanticColor::statusOnline);
  EXPECT_EQ(indicator.haloDiameter(), 14);
  EXPECT_EQ(OnlineStatusIndicator::haloOpacity, 0.3);
}

TEST(Indicators, hide_while_not_animating) {
  const Color grey = color(SemanticColor::statusOffline);
  EXPECT_FALSE((ActivityIndicator{false, grey}.isVisible()));
  EXPECT_TRUE((ActivityIndicator{true, grey}.isVisible()));
  EXPECT_FALSE((LargeActivityIndicator{false, "Loading"}.isVisible()));
  EXPECT_TRUE((LargeActivityIndicator{true, std::nullopt}.isVisible()));
}

}  // namespace
}  // namespace quillmar
