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
  brandTealDark,
  brandGold,
  brandGreen,
  brandOrange,
  brandRed,
  statusOnline,
  statusOffline,
  systemPurple,  // the platform's own
  systemOrange,
  onBrand,  // letters and marks on a colour of the brand, or on a camera's picture
  shadow,
  cameraGround,
  qrPlate,
  qrPlateMark  // in place of a code that can't be made
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

// Colours that differ between the dark and the light scheme.
enum class SchemeColor {
  page,
  card,  // and fields
  cardPressed,
  raised,
  text,
  secondaryText,
  cardSecondaryText,  // the same on a card, where the dark one would fall short of 4.5 to 1
  separator,
  edge,  // of what is written in, switched or marked: to be seen on the page and on a card
  outOfUse,
  outOfUseText,  // what a button out of use says is still to be read
  chosenTab,
  dim,  // over what lies under a sheet
  // The brand's colours where they are letters: deep enough, or light enough, to be read.
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
