#pragma once

#include <optional>
#include <string_view>

#include "platform/qr_encoder.h"

namespace quillmar {

// By libqrencode: the bytes as they are, in the smallest code that holds them.
class QrencodeEncoder final : public QREncoder {
 public:
  std::optional<QRModules> encode(std::string_view bytes,
                                  QRCorrection correction = QRCorrection::medium) const override;
};

}  // namespace quillmar
