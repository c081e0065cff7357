#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/port.h"

namespace quillmar {

// The modules of a QR code without its quiet zone, row by row; true is dark.
struct QRModules {
  std::size_t side = 0;
  std::vector<bool> dark;

  bool isDark(std::size_t row, std::size_t column) const { return dark[row * side + column]; }
  friend bool operator==(const QRModules&, const QRModules&) = default;
};

// How much of a code may be lost: low is level L, medium is M.
enum class QRCorrection { low, medium };

// Makes QR codes. Any thread.
class QREncoder : public Port {
 public:
  // Nothing when the bytes do not fit into a code, or there are none.
  virtual std::optional<QRModules> encode(std::string_view bytes,
                                          QRCorrection correction = QRCorrection::medium) const = 0;
};

}  // namespace quillmar
