#include "presentation/colors.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "foundation/text.h"

namespace quillmar {
namespace {

// In the order of the enumerations.
constexpr std::array<std::string_view, rawNames<SemanticColor>.size()> semanticHex = {
    "007AFF", "0055D4", "00C9A7", "FFD700", "34C759", "FF9500",
    "FF3B30", "34C759", "8E8E93", "AF52DE", "FF9F0A"};

struct SchemeHex {
  std::string_view dark;
  std::string_view light;
};
constexpr std::array<SchemeHex, rawNames<SchemeColor>.size()> schemeHex = {
    {{"FFFFFF", "1C1C1E"}, {"8E8E93", "6C6C70"}, {"2C2C2E", "F2F2F7"}}};

Color fromBytes(std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::uint64_t alpha = 255) {
  const auto part = [](std::uint64_t byte) { return static_cast<double>(byte) / 255.0; };
  return {part(red), part(green), part(blue), part(alpha)};
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
    std::ranges::transform(semanticHex, colors.begin(), colorFromHex);
    return colors;
  }();
  return table[static_cast<std::size_t>(name)];
}

const SchemePair& colors(SchemeColor name) {
  static const auto table = [] {
    std::array<SchemePair, schemeHex.size()> pairs;
    std::ranges::transform(schemeHex, pairs.begin(), [](const SchemeHex& hex) {
      return SchemePair{colorFromHex(hex.dark), colorFromHex(hex.light)};
    });
    return pairs;
  }();
  return table[static_cast<std::size_t>(name)];
}

}  // namespace quillmar
