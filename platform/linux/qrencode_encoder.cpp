#include "platform/linux/qrencode_encoder.h"

#include <qrencode.h>

#include <memory>
#include <span>
#include <vector>

namespace quillmar {
namespace {

constexpr std::size_t largestCode = 2331;  // bytes in version 40 at level M
constexpr unsigned char darkBit = 1;

}  // namespace

std::optional<QRModules> QrencodeEncoder::encode(std::string_view bytes) const {
  if (bytes.empty() || bytes.size() > largestCode) {
    return std::nullopt;
  }
  const std::vector<unsigned char> data(bytes.begin(), bytes.end());
  const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
      QRcode_encodeData(static_cast<int>(data.size()), data.data(), 0, QR_ECLEVEL_M), &QRcode_free);
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
