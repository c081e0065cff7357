#pragma once

#include <array>
#include <optional>

#include "foundation/raw_enum.h"
#include "presentation/measures.h"

namespace quillmar {

// How wide the window is: compact on a phone, regular on a large screen.
enum class HorizontalSizeClass { compact, regular };

template <>
inline constexpr std::array rawNames<HorizontalSizeClass> = rawCases<HorizontalSizeClass>(
    {{HorizontalSizeClass::compact, "compact"}, {HorizontalSizeClass::regular, "regular"}});

constexpr HorizontalSizeClass horizontalSizeClass(double windowWidth) {
  return windowWidth < measures.regularWidth ? HorizontalSizeClass::compact : HorizontalSizeClass::regular;
}

inline constexpr double usualContentWidth = measures.contentWidth;
inline constexpr double wideContentWidth = measures.wideContentWidth;

// Limits the content's width on a large screen, where it is centred. Widths are in points.
struct AdaptiveContentModifier {
  HorizontalSizeClass horizontalSizeClass = HorizontalSizeClass::compact;
  double maxWidth = usualContentWidth;

  // nullopt: as wide as the window.
  constexpr std::optional<double> widthLimit() const {
    return horizontalSizeClass == HorizontalSizeClass::regular ? std::optional(maxWidth) : std::nullopt;
  }
};

}  // namespace quillmar
