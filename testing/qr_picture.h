#pragma once

#include <ZXing/BarcodeFormat.h>
#include <ZXing/DecodeHints.h>
#include <ZXing/ReadBarcode.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/qr_encoder.h"

namespace quillmar {

// The code as a camera would see it: white paper around, each module a few pixels wide.
inline ZXing::Result readPictureOf(const QRModules& modules) {
  constexpr std::size_t moduleSize = 4;
  constexpr std::size_t quietZone = 4;
  const std::size_t side = (modules.side + 2 * quietZone) * moduleSize;
  std::vector<std::uint8_t> pixels(side * side, 0xFF);
  for (std::size_t y = 0; y < modules.side * moduleSize; ++y) {
    for (std::size_t x = 0; x < modules.side * moduleSize; ++x) {
      if (modules.isDark(y / moduleSize, x / moduleSize)) {
        pixels[(y + quietZone * moduleSize) * side + x + quietZone * moduleSize] = 0;
      }
    }
  }
  const ZXing::ImageView image(pixels.data(), static_cast<int>(side), static_cast<int>(side),
                               ZXing::ImageFormat::Lum);
  return ZXing::ReadBarcode(image, ZXing::DecodeHints().setFormats(ZXing::BarcodeFormat::QRCode));
}

// Byte for byte; empty where nothing was read.
inline std::string textOf(const ZXing::Result& result) {
  const auto& bytes = result.bytes();
  return {bytes.begin(), bytes.end()};
}

}  // namespace quillmar
