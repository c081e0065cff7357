#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "platform/common/qrencode_encoder.h"
#include "platform/common/zxing_decoder.h"

namespace quillmar {

// A picture in shades of grey, and what a photograph does to one.
struct GreyCanvas {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> pixels{};

  GreyCanvas(int givenWidth, int givenHeight, std::uint8_t shade = 0xFF)
      : width(givenWidth),
        height(givenHeight),
        pixels(static_cast<std::size_t>(givenWidth) * static_cast<std::size_t>(givenHeight), shade) {}

  std::uint8_t& at(int x, int y) { return pixels[index(x, y)]; }
  std::uint8_t at(int x, int y) const { return pixels[index(x, y)]; }
  bool contains(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }
  GreyImage view() const {
    return {.width = width, .height = height, .bytesPerLine = width, .bytes = pixels};
  }

 private:
  std::size_t index(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
  }
};

// Each pixel of the new canvas from its place.
template <class Shade>
GreyCanvas painted(int width, int height, const Shade& shade) {
  GreyCanvas canvas(width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      canvas.at(x, y) = static_cast<std::uint8_t>(shade(x, y));
    }
  }
  return canvas;
}

// The code of a text, as this program makes it, on white paper.
inline GreyCanvas codeOf(std::string_view text, int moduleSize = 4) {
  constexpr int quietZone = 4;
  const auto modules = QrencodeEncoder().encode(text);
  if (!modules) {
    throw std::logic_error("no code holds this text");
  }
  const int inside = static_cast<int>(modules->side);
  const int side = (inside + 2 * quietZone) * moduleSize;
  return painted(side, side, [&](int x, int y) {
    const int column = x / moduleSize - quietZone;
    const int row = y / moduleSize - quietZone;
    const bool isInside = column >= 0 && row >= 0 && column < inside && row < inside;
    const bool isDark =
        isInside && modules->isDark(static_cast<std::size_t>(row), static_cast<std::size_t>(column));
    return isDark ? 0x00 : 0xFF;
  });
}

inline GreyCanvas scaled(const GreyCanvas& canvas, double factor) {
  const auto to = [factor](int length) { return static_cast<int>(length * factor); };
  return painted(to(canvas.width), to(canvas.height), [&](int x, int y) {
    return canvas.at(static_cast<int>(x / factor), static_cast<int>(y / factor));
  });
}

// About the middle, on paper as large as it takes.
inline GreyCanvas rotated(const GreyCanvas& canvas, double degrees) {
  const double angle = degrees * std::numbers::pi / 180;
  const double sine = std::sin(angle);
  const double cosine = std::cos(angle);
  const double reach = std::hypot(canvas.width, canvas.height);
  return painted(static_cast<int>(reach), static_cast<int>(reach), [&](int x, int y) {
    const double right = x - reach / 2;
    const double down = y - reach / 2;
    const int fromX = static_cast<int>(std::floor(right * cosine + down * sine + canvas.width / 2.0));
    const int fromY = static_cast<int>(std::floor(down * cosine - right * sine + canvas.height / 2.0));
    return canvas.contains(fromX, fromY) ? canvas.at(fromX, fromY) : std::uint8_t{0xFF};
  });
}

// Each pixel becomes the mean of those that are at most `radius` away in each direction.
inline GreyCanvas blurred(const GreyCanvas& canvas, int radius) {
  return painted(canvas.width, canvas.height, [&](int x, int y) {
    int sum = 0;
    int count = 0;
    for (int fromY = std::max(0, y - radius); fromY <= std::min(canvas.height - 1, y + radius); ++fromY) {
      for (int fromX = std::max(0, x - radius); fromX <= std::min(canvas.width - 1, x + radius); ++fromX) {
        sum += canvas.at(fromX, fromY);
        ++count;
      }
    }
    return sum / count;
  });
}

inline GreyCanvas darkened(const GreyCanvas& canvas, double light) {
  return painted(canvas.width, canvas.height,
                 [&](int x, int y) { return static_cast<int>(canvas.at(x, y) * light); });
}

// Stripes, blotches and noise; the same each time.
inline GreyCanvas busyBackground(int width, int height) {
  std::uint32_t noise = 1;
  return painted(width, height, [&](int x, int y) {
    noise = noise * 1664525u + 1013904223u;
    const int stripes = (x / 7 + y / 11) % 2 == 0 ? 60 : 0;
    const int blotches = static_cast<int>(60 * (1 + std::sin(x / 23.0) * std::cos(y / 31.0)));
    return stripes + blotches + static_cast<int>(noise >> 26);
  });
}

inline void paste(GreyCanvas& onto, const GreyCanvas& canvas, int left, int top) {
  for (int y = 0; y < canvas.height; ++y) {
    for (int x = 0; x < canvas.width; ++x) {
      if (onto.contains(left + x, top + y)) {
        onto.at(left + x, top + y) = canvas.at(x, y);
      }
    }
  }
}

}  // namespace quillmar
