#pragma once

#include <array>
#include <optional>

#include "foundation/raw_enum.h"

namespace quillmar {

// How much room the window offers from side to side: compact on a phone, regular on a large screen.
enum class HorizontalSizeClass { compact, regular };

template <>
inline constexpr std::array rawNames<HorizontalSizeClass> = rawCases<HorizontalSizeClass>(
    {{HorizontalSizeClass::compact, "compact"}, {HorizontalSizeClass::regular, "regular"}});

inline constexpr double usualContentWidth = 600;
inline constexpr double wideContentWidth = 700;  // the dashboard's list and a few others

// Keeps a screen's content readable on a large screen, where it is centred within a maximum width in points.
struct AdaptiveContentModifier {
  HorizontalSizeClass horizontalSizeClass = HorizontalSizeClass::compact;
  double maxWidth = usualContentWidth;

  // None: as wide as the window.
  constexpr std::optional<double> widthLimit() const {
    return horizontalSizeClass == HorizontalSizeClass::regular ? std::optional(maxWidth) : std::nullopt;
  }
};

}  // namespace quillmar
