#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tunnel/dns/query.h"

namespace quillmar::tunnel {

// The transport of a query. It decides how long the reply may be.
enum class Channel { udp, tcp };

// An extended error (RFC 8914) as an option of an OPT record.
std::string extendedError(std::uint16_t code, std::string_view text);
inline constexpr std::uint16_t extendedErrorOption = 15;
inline constexpr std::uint16_t otherError = 0;  // explained by its text

// A reply without records.
std::string emptyReply(const Query& query, std::uint16_t code);
// An error reply. If the query had an OPT record, the reply has one with these options.
std::string errorReply(const Query& query, std::uint16_t code, std::string_view options);
std::string refusalReply(const Refusal& refusal);

// Appends an OPT record if the query had one.
void appendOpt(std::string& message, const Query& query, std::string_view options = {});

// The reply as it can be sent. One that is too long loses its records and gets the TC flag.
std::string fitted(std::string reply, const Query& query, Channel channel);

}  // namespace quillmar::tunnel
