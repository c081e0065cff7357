#include "presentation/colors.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "foundation/text.h"

namespace quillmar {
namespace {

struct SemanticHex {
  SemanticColor name;
  std::string_view hex;
};
constexpr auto semanticHex = std::to_array<SemanticHex>({
    {SemanticColor::brandBlue, "007AFF"},
    {SemanticColor::brandBlueDark, "0055D4"},
    {SemanticColor::brandTeal, "00C9A7"},
    {SemanticColor::brandTealDark, "0A7D6A"},
    {SemanticColor::brandGold, "FFD700"},
    {SemanticColor::brandGreen, "34C759"},
    {SemanticColor::brandOrange, "FF9500"},
    {SemanticColor::brandRed, "FF3B30"},
    {SemanticColor::statusOnline, "34C759"},
    {SemanticColor::statusOffline, "8E8E93"},
    {SemanticColor::systemPurple, "AF52DE"},
    {SemanticColor::systemOrange, "FF9F0A"},
    {SemanticColor::onBrand, "FFFFFF"},
    {SemanticColor::shadow, "000000"},
    {SemanticColor::cameraGround, "000000"},
    {SemanticColor::qrPlate, "FFFFFF"},
    {SemanticColor::qrPlateMark, "C7C7CC"},
});

struct Shade {
  std::string_view hex;
  double alpha = 1;
};
struct SchemeShades {
  SchemeColor name;
  Shade dark;
  Shade light;
};
constexpr auto schemeShades = std::to_array<SchemeShades>({
    {SchemeColor::page, {"1C1C1E"}, {"FFFFFF"}},
    {SchemeColor::card, {"2C2C2E"}, {"F2F2F7"}},
    {SchemeColor::cardPressed, {"3A3A3C"}, {"E5E5EA"}},
    {SchemeColor::raised, {"2C2C2E"}, {"FFFFFF"}},
    {SchemeColor::text, {"FFFFFF"}, {"1C1C1E"}},
    {SchemeColor::secondaryText, {"8E8E93"}, {"6C6C70"}},
    {SchemeColor::cardSecondaryText, {"A1A1A6"}, {"6C6C70"}},
    {SchemeColor::separator, {"FFFFFF", 0.12}, {"1C1C1E", 0.12}},
    {SchemeColor::edge, {"7F7F84"}, {"86868B"}},
    {SchemeColor::outOfUse, {"48484A"}, {"D1D1D6"}},
    {SchemeColor::outOfUseText, {"B9B9BE"}, {"58585D"}},
    {SchemeColor::chosenTab, {"757578"}, {"FFFFFF"}},
    {SchemeColor::dim, {"000000", 0.55}, {"000000", 0.4}},
    {SchemeColor::linkText, {"4DA3FF"}, {"0055D4"}},
    {SchemeColor::positiveText, {"34C759"}, {"1B7A34"}},
    {SchemeColor::warningText, {"FFA826"}, {"9A4B00"}},
    {SchemeColor::dangerText, {"FF7A71"}, {"C9190B"}},
});

// The rows are indexed by the enum's value.
template <RawEnum E, class Rows>
constexpr bool hasAllInOrder(const Rows& rows) {
  const auto isInPlace = [&](const auto& row) { return &rows[static_cast<std::size_t>(row.name)] == &row; };
  return rows.size() == rawNames<E>.size() && std::ranges::all_of(rows, isInPlace);
}
static_assert(hasAllInOrder<SemanticColor>(semanticHex) && hasAllInOrder<SchemeColor>(schemeShades));

Color fromBytes(std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::uint64_t alpha = 255) {
  const auto part = [](std::uint64_t byte) { return static_cast<double>(byte) / 255.0; };
  return {part(red), part(green), part(blue), part(alpha)};
}

Color shaded(const Shade& shade) {
  Color color = colorFromHex(shade.hex);
  color.alpha = shade.alpha;
  return color;
}

}  // namespace

Color colorFromHex(std::string_view text) {
  const auto hex = trimmedTo(text, isAlphanumeric);
  const auto number = scanHex(hex);
  const auto byte = [number](unsigned position) { return number >> (8 * position) & 0xFFU; };
  const auto digit = [number](unsigned position) { return number >> (4 * position) & 0xFU; };
  switch (characterCount(hex)) {
    case 8:
      return fromBytes(byte(2), byte(1), byte(0), byte(3));
    case 6:
      return fromBytes(byte(2), byte(1), byte(0));
    case 3:
      return fromBytes(digit(2) * 17, digit(1) * 17, digit(0) * 17);
    default:
      return {};
  }
}

const Color& color(SemanticColor name) {
  static const auto table = [] {
    std::array<Color, semanticHex.size()> colors;
    std::ranges::transform(semanticHex, colors.begin(), colorFromHex, &SemanticHex::hex);
    return colors;
  }();
  return table[static_cast<std::size_t>(name)];
}

const SchemePair& colors(SchemeColor name) {
  static const auto table = [] {
    std::array<SchemePair, schemeShades.size()> pairs;
    std::ranges::transform(schemeShades, pairs.begin(), [](const SchemeShades& shades) {
      return SchemePair{shaded(shades.dark), shaded(shades.light)};
    });
    return pairs;
  }();
  return table[static_cast<std::size_t>(name)];
}

}  // namespace quillmar
