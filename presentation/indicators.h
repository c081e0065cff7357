#pragma once

#include <optional>
#include <string>

#include "presentation/colors.h"
#include "presentation/measures.h"

namespace quillmar {

// A spinner, which hides while it stands still.
struct ActivityIndicator {
  bool isAnimating = false;
  Color color;

  constexpr bool isVisible() const { return isAnimating; }
};

// The same at large size, with a text beneath it when there is one.
struct LargeActivityIndicator {
  bool isAnimating = false;
  std::optional<std::string> text;

  constexpr bool isVisible() const { return isAnimating; }
};

// A dot of `size` points, and behind it, when online, a wider and fainter one.
struct OnlineStatusIndicator {
  static constexpr double haloOpacity = measures.haloOpacity;

  bool isOnline = false;
  double size = 0;

  constexpr SemanticColor dotColor() const {
    return isOnline ? SemanticColor::statusOnline : SemanticColor::statusOffline;
  }
  constexpr std::optional<double> haloDiameter() const {
    return isOnline ? std::optional(size + 4) : std::nullopt;
  }
};

}  // namespace quillmar
