#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/qr_encoder.h"
#include "programs/agent/terminal.h"

namespace quillmar::agent {

// The lines of a QR code that a phone can scan from this terminal, its quiet zone included. With UTF-8 two
// modules share a character; without, each has one or two of its own, in reversed video. Black on white where
// there is colour, or else as on a dark terminal. Nothing where the terminal has neither UTF-8 nor colour, or
// too few columns.
std::optional<std::vector<std::string>> drawQRCode(const QRModules& modules, const Terminal& terminal);

}  // namespace quillmar::agent
