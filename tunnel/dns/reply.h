#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tunnel/dns/query.h"

namespace quillmar::tunnel {

// How a query came, which decides how long its answer may be.
enum class Channel { udp, tcp };

// An extended error (RFC 8914) as an option of an OPT record.
std::string extendedError(std::uint16_t code, std::string_view text);
inline constexpr std::uint16_t extendedErrorOption = 15;
inline constexpr std::uint16_t otherError = 0;  // the text says which

// An answer without records.
std::string emptyReply(const Query& query, std::uint16_t code);
// The error that these options explain, to clients that take any.
std::string errorReply(const Query& query, std::uint16_t code, std::string_view options);
std::string refusalReply(const Refusal& refusal);

// Ends a message with an OPT record if the query had one.
void appendOpt(std::string& message, const Query& query, std::string_view options = {});

// The reply as it can be sent: one that is too long says so and has no records.
std::string fitted(std::string reply, const Query& query, Channel channel);

}  // namespace quillmar::tunnel
