#include "tunnel/dns/wire.h"

#include <algorithm>
#include <span>

namespace quillmar::tunnel {
namespace {

constexpr std::size_t largestName = 255;
constexpr unsigned pointerBits = 0xc0;
constexpr std::size_t additionalsAt = 10;

// Names are compared as ASCII, independent of the locale.
constexpr char lowerCased(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

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

// A label's length is at most 63 and therefore never an upper-case letter.
void appendLowerCased(std::string& text, std::string_view name) {
  text += name;
  for (char& c : std::span(text).last(name.size())) {
    c = lowerCased(c);
  }
}

bool areSameNames(std::string_view one, std::string_view other) {
  return one == other || std::ranges::equal(one, other, {}, lowerCased, lowerCased);
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
