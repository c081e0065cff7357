#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "foundation/result.h"
#include "platform/qr_reader.h"

namespace quillmar {

// A picture in shades of grey, one byte a pixel, 0 is black. Each line starts `bytesPerLine` after the one
// before, the first at the first byte.
struct GreyImage {
  int width = 0;
  int height = 0;
  int bytesPerLine = 0;
  std::span<const std::uint8_t> bytes{};
};

// A picture of this many pixels is too large to be looked at.
constexpr std::int64_t tooManyPixels = 100'000'000;

inline QRReaderError tooLargePicture() {
  return {"This picture is too large. Use one of less than 100 megapixels."};
}

// The QR codes in a picture, by ZXing-C++, in the order in which one reads: from the top, and from the left
// where they stand side by side. Codes of other kinds, and codes that cannot be read, are not looked for.
// None is a success; a picture that is too large, or is not what it says, is an error. Any thread.
Result<RecognisedObjects> recogniseCodes(const GreyImage& image);

}  // namespace quillmar
