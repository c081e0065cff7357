#include "tunnel/dns/reply.h"

#include <algorithm>

namespace quillmar::tunnel {
namespace {

// Longer datagrams are fragmented in some networks (RFC 9715).
constexpr std::uint16_t largestUdpReply = 1232;
constexpr std::uint16_t largestPlainUdpReply = 512;

std::uint16_t flagsFor(const Query& query, std::uint16_t code) {
  return static_cast<std::uint16_t>(flag::response | flag::recursionAvailable |
                                    (query.recursionDesired ? flag::recursionDesired : 0) |
                                    (query.checkingDisabled ? flag::checkingDisabled : 0) | code);
}

void appendOptRecord(std::string& message, std::uint32_t ttl, std::string_view options) {
  message += '\0';
  append16(message, type::opt);
  append16(message, largestUdpReply);
  append32(message, ttl);
  append16(message, static_cast<std::uint16_t>(options.size()));
  message += options;
}

std::size_t limitOf(const Query& query, Channel channel) {
  if (channel == Channel::tcp) {
    return largestMessage;
  }
  return query.edns ? std::clamp(query.edns->payload, largestPlainUdpReply, largestUdpReply)
                    : largestPlainUdpReply;
}

}  // namespace

std::string extendedError(std::uint16_t code, std::string_view text) {
  std::string option;
  append16(option, extendedErrorOption);
  append16(option, static_cast<std::uint16_t>(2 + text.size()));
  append16(option, code);
  return option.append(text);
}

void appendOpt(std::string& message, const Query& query, std::string_view options) {
  if (!query.edns) {
    return;
  }
  appendOptRecord(message, query.edns->dnssecOk ? dnssecOk : 0, options);
  putAdditionals(message, static_cast<std::uint16_t>(readHeader(message)->additionals + 1));
}

std::string emptyReply(const Query& query, std::uint16_t code) {
  std::string message;
  append(message, Header{.id = query.id, .flags = flagsFor(query, code), .questions = 1});
  message += query.question.name;
  append16(message, query.question.type);
  append16(message, query.question.klass);
  return message;
}

std::string errorReply(const Query& query, std::uint16_t code, std::string_view options) {
  auto message = emptyReply(query, code);
  appendOpt(message, query, options);
  return message;
}

std::string refusalReply(const Refusal& refusal) {
  const auto flags =
      static_cast<std::uint16_t>(flag::response | (refusal.flags & (flag::opcode | flag::recursionDesired)) |
                                 (refusal.rcode & flag::rcode));
  const auto upperBits = static_cast<std::uint32_t>(refusal.rcode >> 4U);
  std::string message;
  append(message, Header{.id = refusal.id,
                         .flags = flags,
                         .additionals = static_cast<std::uint16_t>(upperBits == 0 ? 0 : 1)});
  if (upperBits != 0) {
    appendOptRecord(message, upperBits << 24U, {});
  }
  return message;
}

std::string fitted(std::string reply, const Query& query, Channel channel) {
  if (reply.size() <= limitOf(query, channel)) {
    return reply;
  }
  auto cut = errorReply(query, readHeader(reply)->rcode(), {});
  put16(cut, 2, static_cast<std::uint16_t>(get16(cut, 2) | flag::truncated));
  return cut;
}

}  // namespace quillmar::tunnel
