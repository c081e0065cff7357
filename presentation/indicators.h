#pragma once

#include <optional>
#include <string>

#include "presentation/colors.h"
#include "presentation/measures.h"

namespace quillmar {

// A spinner, hidden while it does not spin.
struct ActivityIndicator {
  bool isAnimating = false;
  Color color;

  constexpr bool isVisible() const { return isAnimating; }
};

// A large spinner, with an optional text beneath it.
struct LargeActivityIndicator {
  bool isAnimating = false;
  std::optional<std::string> text;

  constexpr bool isVisible() const { return isAnimating; }
};

// A dot of `size` points. When online, a wider and fainter dot is behind it.
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
