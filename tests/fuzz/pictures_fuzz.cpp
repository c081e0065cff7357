// The input is a picture for the reader of codes: two bytes of width, two of what a line has more than that,
// and the pixels. Or, if it begins with a Q, the text of a code that is drawn, after two bytes of where it
// has a spot.

#include <array>
#include <span>
#include <string>
#include <vector>

#include "foundation/text.h"
#include "platform/common/qrencode_encoder.h"
#include "platform/common/zxing_decoder.h"
#include "tests/fuzz/fuzz.h"

using namespace quillmar;
using fuzz::require;

namespace {

constexpr std::size_t head = 4;
constexpr int widest = 512;
constexpr std::size_t longestText = 300;

int number(const std::uint8_t* data) { return data[0] * 256 + data[1]; }

Result<RecognisedObjects> read(const GreyImage& image) {
  auto codes = recogniseCodes(image);
  if (codes.ok()) {
    for (const auto& code : codes.value()) {
      require(code.isQRCode && (!code.text || isValidUtf8(*code.text)), "a code is text");
    }
  }
  return codes;
}

void checkPixels(const std::uint8_t* data, std::size_t size) {
  const int width = number(data) % widest;
  const int bytesPerLine = width + number(data + 2) % 16;
  const std::span<const std::uint8_t> bytes(data + head, size - head);
  const int height = bytesPerLine > 0 ? static_cast<int>(bytes.size()) / bytesPerLine : 0;
  static_cast<void>(read({.width = width, .height = height, .bytesPerLine = bytesPerLine, .bytes = bytes}));
  const int beyond = height + 2 + number(data + 2);
  require(!read({.width = width, .height = beyond, .bytesPerLine = bytesPerLine, .bytes = bytes}).ok() ||
              width == 0,
          "a picture that is not there is refused");
}

void checkDrawn(std::string_view text, std::size_t spot) {
  const auto modules = QrencodeEncoder().encode(text.substr(0, longestText));
  if (!modules) {
    return;
  }
  constexpr std::size_t moduleSize = 3;
  constexpr std::size_t quietZone = 4;
  const std::size_t side = (modules->side + 2 * quietZone) * moduleSize;
  std::vector<std::uint8_t> pixels(side * side, 0xFF);
  for (std::size_t y = 0; y < modules->side * moduleSize; ++y) {
    for (std::size_t x = 0; x < modules->side * moduleSize; ++x) {
      if (modules->isDark(y / moduleSize, x / moduleSize)) {
        pixels[(y + quietZone * moduleSize) * side + x + quietZone * moduleSize] = 0;
      }
    }
  }
  pixels[spot % pixels.size()] ^= 0xFFU;
  const int length = static_cast<int>(side);
  static_cast<void>(read({.width = length, .height = length, .bytesPerLine = length, .bytes = pixels}));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < head) {
    return 0;
  }
  if (data[0] == 'Q') {
    checkDrawn(fuzz::textOf(data + 3, size - 3), static_cast<std::size_t>(number(data + 1)));
  } else {
    checkPixels(data, size);
  }
  return 0;
}
