#include "tunnel/dns/wire.h"

#include <algorithm>

namespace quillmar::tunnel {
namespace {

constexpr std::size_t largestName = 255;
constexpr unsigned pointerBits = 0xc0;
constexpr std::size_t additionalsAt = 10;

std::uint8_t byteAt(std::string_view message, std::size_t at) {
  return static_cast<std::uint8_t>(message[at]);
}

// Names are compared as ASCII, independent of the locale.
char lowerCased(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

void put16(std::string& message, std::size_t at, std::uint16_t number) {
  message[at] = static_cast<char>(number >> 8U);
  message[at + 1] = static_cast<char>(number & 0xffU);
}

void put32(std::string& message, std::size_t at, std::uint32_t number) {
  put16(message, at, static_cast<std::uint16_t>(number >> 16U));
  put16(message, at + 2, static_cast<std::uint16_t>(number & 0xffffU));
}

void append16(std::string& message, std::uint16_t number) {
  message.resize(message.size() + 2);
  put16(message, message.size() - 2, number);
}

void append32(std::string& message, std::uint32_t number) {
  message.resize(message.size() + 4);
  put32(message, message.size() - 4, number);
}

std::uint16_t get16(std::string_view message, std::size_t at) {
  return static_cast<std::uint16_t>(byteAt(message, at) * 256U + byteAt(message, at + 1));
}

std::uint32_t get32(std::string_view message, std::size_t at) {
  return get16(message, at) * 65536U + get16(message, at + 2);
}

std::optional<Header> readHeader(std::string_view message) {
  if (message.size() < headerSize) {
    return std::nullopt;
  }
  const auto word = [&](std::size_t index) { return get16(message, 2 * index); };
  return Header{word(0), word(1), word(2), word(3), word(4), word(5)};
}

void append(std::string& message, const Header& header) {
  for (const std::uint16_t word :
       {header.id, header.flags, header.questions, header.answers, header.authorities, header.additionals}) {
    append16(message, word);
  }
}

void putAdditionals(std::string& message, std::uint16_t count) { put16(message, additionalsAt, count); }

bool Reader::has(std::size_t count) {
  ok_ = ok_ && at_ <= message_.size() && message_.size() - at_ >= count;
  return ok_;
}

std::uint16_t Reader::number16() {
  if (!has(2)) {
    return 0;
  }
  at_ += 2;
  return get16(message_, at_ - 2);
}

std::uint32_t Reader::number32() {
  if (!has(4)) {
    return 0;
  }
  at_ += 4;
  return get32(message_, at_ - 4);
}

std::string_view Reader::bytes(std::size_t count) {
  if (!has(count)) {
    return {};
  }
  at_ += count;
  return message_.substr(at_ - count, count);
}

std::string_view Reader::plainName() {
  const std::size_t start = at_;
  while (has(1)) {
    const std::size_t label = byteAt(message_, at_);
    ok_ = label <= largestLabel && at_ + 1 + label - start <= largestName;
    bytes(ok_ ? 1 + label : 0);
    if (ok_ && label == 0) {
      return message_.substr(start, at_ - start);
    }
  }
  return {};
}

// A name may end in a pointer to an earlier name. The pointer is not followed, because names are only passed
// on.
void Reader::skipName() {
  const std::size_t start = at_;
  while (has(1)) {
    const unsigned label = byteAt(message_, at_);
    if ((label & pointerBits) == pointerBits) {
      const std::size_t target = number16() & 0x3fffU;
      ok_ = ok_ && target >= headerSize && target < start;
      return;
    }
    ok_ = label <= largestLabel && at_ + 1 + label - start <= largestName;
    bytes(ok_ ? 1 + label : 0);
    if (label == 0) {
      return;
    }
  }
}

Record Reader::record() {
  Record record{.start = at_};
  skipName();
  record.ofRoot = at_ == record.start + 1;
  record.type = number16();
  record.klass = number16();
  record.ttlAt = at_;
  record.ttl = number32();
  record.data = bytes(number16());
  return record;
}

std::string lowerCased(std::string_view name) {
  std::string lower(name);
  // A label's length is at most 63 and therefore never an upper-case letter.
  std::ranges::transform(lower, lower.begin(), [](char c) { return lowerCased(c); });
  return lower;
}

std::string wireName(std::string_view dotted) {
  std::string name;
  while (!dotted.empty()) {
    const auto label = dotted.substr(0, dotted.find('.'));
    name += static_cast<char>(label.size());
    name += label;
    dotted.remove_prefix(std::min(label.size() + 1, dotted.size()));
  }
  return name + '\0';
}

}  // namespace quillmar::tunnel
