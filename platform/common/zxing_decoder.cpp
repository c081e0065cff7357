#include "platform/common/zxing_decoder.h"

#include <ZXing/ReadBarcode.h>

#include <algorithm>
#include <exception>
#include <ranges>
#include <vector>

namespace quillmar {
namespace {

// The upright box around a code.
struct Place {
  int top = 0;
  int bottom = 0;
  int left = 0;
};

struct Found {
  Place place{};
  RecognisedObject object{};
};
using FoundCodes = std::vector<Found>;

Place placeOf(const ZXing::Position& corners) {
  const auto [top, bottom] = std::ranges::minmax(corners, {}, &ZXing::PointI::y);
  return {.top = top.y, .bottom = bottom.y, .left = std::ranges::min(corners, {}, &ZXing::PointI::x).x};
}

Found foundFrom(const ZXing::Result& result) {
  return {.place = placeOf(result.position()), .object = {.isQRCode = true, .text = result.text()}};
}

// Codes stand in one row where each begins above the middle of the first.
void putInReadingOrder(FoundCodes& codes) {
  std::ranges::sort(codes, {}, [](const Found& code) { return code.place.top; });
  for (auto first = codes.begin(); first != codes.end();) {
    const int middle = first->place.top + (first->place.bottom - first->place.top) / 2;
    const auto next = std::find_if(first + 1, codes.end(),
                                   [middle](const Found& code) { return code.place.top >= middle; });
    std::ranges::sort(first, next, {}, [](const Found& code) { return code.place.left; });
    first = next;
  }
}

bool isComplete(const GreyImage& image) {
  if (image.width <= 0 || image.height <= 0 || image.bytesPerLine < image.width) {
    return false;
  }
  const std::int64_t needed =
      std::int64_t{image.bytesPerLine} * (image.height - 1) + std::int64_t{image.width};
  return std::int64_t(image.bytes.size()) >= needed;
}

FoundCodes findCodes(const GreyImage& image) {
  const ZXing::ImageView view(image.bytes.data(), image.width, image.height, ZXing::ImageFormat::Lum,
                              image.bytesPerLine);
  FoundCodes codes;
  for (const auto& result :
       ZXing::ReadBarcodes(view, ZXing::DecodeHints().setFormats(ZXing::BarcodeFormat::QRCode))) {
    if (result.isValid()) {
      codes.push_back(foundFrom(result));
    }
  }
  return codes;
}

}  // namespace

Result<RecognisedObjects> recogniseCodes(const GreyImage& image) {
  if (std::int64_t{image.width} * image.height >= tooManyPixels) {
    return Error(tooLargePicture());
  }
  if (!isComplete(image)) {
    return Error(QRReaderError{"This picture is damaged."});
  }
  try {
    auto codes = findCodes(image);
    putInReadingOrder(codes);
    RecognisedObjects objects;
    std::ranges::transform(codes, std::back_inserter(objects), &Found::object);
    return objects;
  } catch (const std::exception&) {
    return Error(QRReaderError{"This picture cannot be searched for codes."});
  }
}

}  // namespace quillmar
