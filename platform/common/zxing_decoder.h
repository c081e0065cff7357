#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "foundation/result.h"
#include "platform/qr_reader.h"

namespace quillmar {

// One byte a pixel, 0 is black. A line starts `bytesPerLine` after the one before.
struct GreyImage {
  int width = 0;
  int height = 0;
  int bytesPerLine = 0;
  std::span<const std::uint8_t> bytes{};
};

// In pixels: a picture of this size is refused.
constexpr std::int64_t tooManyPixels = 100'000'000;

inline QRReaderError tooLargePicture() {
  return {"This picture is too large. Use one of less than 100 megapixels."};
}

// The QR codes in a picture, by ZXing-C++, in reading order: from the top, and from the left within a row.
// Other kinds of codes and unreadable ones are skipped. No code is a success; a picture that is too large or
// inconsistent is an error. Thread-safe.
Result<RecognisedObjects> recogniseCodes(const GreyImage& image);

}  // namespace quillmar
