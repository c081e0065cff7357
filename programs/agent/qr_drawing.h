#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/qr_encoder.h"
#include "programs/agent/terminal.h"

namespace quillmar::agent {

// Draws a QR code, quiet zone included, that a phone can scan from this terminal: the most robust code that
// fits. With UTF-8 a character holds two modules; without, a module takes one or two characters in reversed
// video. With colours the code is black on white, without it assumes a dark terminal. nullopt if the
// terminal has neither UTF-8 nor colours, or too few columns or rows.
std::optional<std::vector<std::string>> drawQRCode(const QREncoder& encoder, std::string_view text,
                                                   const Terminal& terminal);

// The rows that the smallest of these codes needs; nullopt if no number of rows would do.
std::optional<std::size_t> rowsForQRCode(const QREncoder& encoder, std::string_view text, Terminal terminal);

}  // namespace quillmar::agent
