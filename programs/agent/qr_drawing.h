#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/qr_encoder.h"
#include "programs/agent/terminal.h"

namespace quillmar::agent {

// The lines of a QR code that a phone can scan from this terminal, its quiet zone included: the sturdiest
// code for which there is room. With UTF-8 two modules share a character; without, each has one or two of its
// own, in reversed video. Black on white where there is colour, or else as on a dark terminal. Nothing where
// the terminal has neither UTF-8 nor colour, or too few columns or rows.
std::optional<std::vector<std::string>> drawQRCode(const QREncoder& encoder, std::string_view text,
                                                   const Terminal& terminal);

// How many rows the smallest of these takes; nothing where no number would do.
std::optional<std::size_t> rowsForQRCode(const QREncoder& encoder, std::string_view text, Terminal terminal);

}  // namespace quillmar::agent
