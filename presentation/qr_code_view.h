#pragma once

#include <optional>
#include <string>

#include "foundation/record.h"
#include "platform/qr_encoder.h"

namespace quillmar {

// A text as a QR code, `size` points wide. The modules are drawn without smoothing. If the text can't be
// encoded, the fallback symbol is drawn.
struct QRCodeView {
  static constexpr const char* fallbackSymbol = "qrcode";

  std::string data;
  double size = 0;

  std::optional<QRModules> modules(const QREncoder& encoder) const { return encoder.encode(data); }
};

template <>
inline constexpr auto wire<QRCodeView> = record(required("data", &QRCodeView::data),
                                                required("size", &QRCodeView::size));

}  // namespace quillmar
