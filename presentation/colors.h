#pragma once

#include <array>
#include <string_view>

#include "foundation/raw_enum.h"

namespace quillmar {

// sRGB, each component from 0 to 1.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;
  friend bool operator==(const Color&, const Color&) = default;
};

// "#AARRGGBB", "RRGGBB" or "RGB". Leading and trailing characters that are neither letters nor digits are
// ignored. Any other length is black. Digits are read up to the first one that is not hexadecimal.
Color colorFromHex(std::string_view text);

// Colours by meaning, the same in the light and the dark scheme.
enum class SemanticColor {
  brandBlue,
  brandBlueDark,
  brandTeal,
  brandTealDark,
  brandGold,
  brandGreen,
  brandOrange,
  brandRed,
  statusOnline,
  statusOffline,
  systemPurple,  // the platform's own
  systemOrange,
  onBrand,  // text and icons on a brand colour or on a camera's picture
  shadow,
  cameraGround,
  qrPlate,
  qrPlateMark  // shown instead of a code that can't be made
};

template <>
inline constexpr std::array rawNames<SemanticColor> =
    rawCases<SemanticColor>({{SemanticColor::brandBlue, "brandBlue"},
                             {SemanticColor::brandBlueDark, "brandBlueDark"},
                             {SemanticColor::brandTeal, "brandTeal"},
                             {SemanticColor::brandTealDark, "brandTealDark"},
                             {SemanticColor::brandGold, "brandGold"},
                             {SemanticColor::brandGreen, "brandGreen"},
                             {SemanticColor::brandOrange, "brandOrange"},
                             {SemanticColor::brandRed, "brandRed"},
                             {SemanticColor::statusOnline, "statusOnline"},
                             {SemanticColor::statusOffline, "statusOffline"},
                             {SemanticColor::systemPurple, "systemPurple"},
                             {SemanticColor::systemOrange, "systemOrange"},
                             {SemanticColor::onBrand, "onBrand"},
                             {SemanticColor::shadow, "shadow"},
                             {SemanticColor::cameraGround, "cameraGround"},
                             {SemanticColor::qrPlate, "qrPlate"},
                             {SemanticColor::qrPlateMark, "qrPlateMark"}});

const Color& color(SemanticColor name);

// Colours that differ between the light and the dark scheme.
enum class SchemeColor {
  page,
  card,  // fields too
  cardPressed,
  raised,
  text,
  secondaryText,
  cardSecondaryText,  // secondary text on a card, with 4.5:1 contrast in the dark scheme too
  separator,
  edge,  // outline of fields, switches and marks; visible on the page and on a card
  outOfUse,
  outOfUseText,  // text of a disabled button; still readable
  chosenTab,
  dim,  // over the screen under a sheet
  // The brand's colours for text, with enough contrast to be read.
  linkText,
  positiveText,
  warningText,
  dangerText
};

template <>
inline constexpr std::array rawNames<SchemeColor> =
    rawCases<SchemeColor>({{SchemeColor::page, "page"},
                           {SchemeColor::card, "card"},
                           {SchemeColor::cardPressed, "cardPressed"},
                           {SchemeColor::raised, "raised"},
                           {SchemeColor::text, "text"},
                           {SchemeColor::secondaryText, "secondaryText"},
                           {SchemeColor::cardSecondaryText, "cardSecondaryText"},
                           {SchemeColor::separator, "separator"},
                           {SchemeColor::edge, "edge"},
                           {SchemeColor::outOfUse, "outOfUse"},
                           {SchemeColor::outOfUseText, "outOfUseText"},
                           {SchemeColor::chosenTab, "chosenTab"},
                           {SchemeColor::dim, "dim"},
                           {SchemeColor::linkText, "linkText"},
                           {SchemeColor::positiveText, "positiveText"},
                           {SchemeColor::warningText, "warningText"},
                           {SchemeColor::dangerText, "dangerText"}});

struct SchemePair {
  Color dark;
  Color light;
};

const SchemePair& colors(SchemeColor name);

}  // namespace quillmar
