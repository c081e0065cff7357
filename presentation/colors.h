#pragma once

#include <array>
#include <string_view>

#include "foundation/raw_enum.h"

namespace quillmar {

// In the sRGB space, each part from 0 to 1.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;
  friend bool operator==(const Color&, const Color&) = default;
};

// "#AARRGGBB", "RRGGBB" or "RGB"; what is neither letter nor digit around it does not count. Any other length
// is black. The digits are read as one number, up to the first character that is none.
Color colorFromHex(std::string_view text);

// Colours by what they mean, the same by day and by night.
enum class SemanticColor {
  brandBlue,
  brandBlueDark,
  brandTeal,
  brandGold,
  brandGreen,
  brandOrange,
  brandRed,
  statusOnline,
  statusOffline,
  systemPurple,  // the platform's own
  systemOrange
};

template <>
inline constexpr std::array rawNames<SemanticColor> =
    rawCases<SemanticColor>({{SemanticColor::brandBlue, "brandBlue"},
                             {SemanticColor::brandBlueDark, "brandBlueDark"},
                             {SemanticColor::brandTeal, "brandTeal"},
                             {SemanticColor::brandGold, "brandGold"},
                             {SemanticColor::brandGreen, "brandGreen"},
                             {SemanticColor::brandOrange, "brandOrange"},
                             {SemanticColor::brandRed, "brandRed"},
                             {SemanticColor::statusOnline, "statusOnline"},
                             {SemanticColor::statusOffline, "statusOffline"},
                             {SemanticColor::systemPurple, "systemPurple"},
                             {SemanticColor::systemOrange, "systemOrange"}});

const Color& color(SemanticColor name);

// Colours that differ between the dark and the light scheme.
enum class SchemeColor { primaryText, secondaryText, cardBackground };

template <>
inline constexpr std::array rawNames<SchemeColor> =
    rawCases<SchemeColor>({{SchemeColor::primaryText, "primaryText"},
                           {SchemeColor::secondaryText, "secondaryText"},
                           {SchemeColor::cardBackground, "cardBackground"}});  // of fields too

struct SchemePair {
  Color dark;
  Color light;
};

const SchemePair& colors(SchemeColor name);

}  // namespace quillmar
