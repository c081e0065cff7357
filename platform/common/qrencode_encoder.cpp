#include "platform/common/qrencode_encoder.h"

#include <qrencode.h>

#include <memory>
#include <span>
#include <vector>

namespace quillmar {
namespace {

// What a code of the largest version holds.
struct Level {
  QRecLevel name;
  std::size_t bytes;
};
constexpr Level levelOf(QRCorrection correction) {
  return correction == QRCorrection::low ? Level{QR_ECLEVEL_L, 2953} : Level{QR_ECLEVEL_M, 2331};
}

constexpr unsigned char darkBit = 1;

}  // namespace

std::optional<QRModules> QrencodeEncoder::encode(std::string_view bytes, QRCorrection correction) const {
  const Level level = levelOf(correction);
  if (bytes.empty() || bytes.size() > level.bytes) {
    return std::nullopt;
  }
  const std::vector<unsigned char> data(bytes.begin(), bytes.end());
  const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
      QRcode_encodeData(static_cast<int>(data.size()), data.data(), 0, level.name), &QRcode_free);
  if (!code) {
    return std::nullopt;
  }
  const auto side = static_cast<std::size_t>(code->width);
  QRModules modules{side, {}};
  modules.dark.reserve(side * side);
  for (const unsigned char module : std::span(code->data, side * side)) {
    modules.dark.push_back((module & darkBit) != 0);
  }
  return modules;
}

}  // namespace quillmar
