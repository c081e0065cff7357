#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

// The parts of a DNS message (RFC 1035). Messages are checked and passed on, not decoded into objects. Names
// are in wire format: each label after its length, and the empty label of the root at the end.
namespace quillmar::tunnel {

namespace type {
inline constexpr std::uint16_t a = 1;
inline constexpr std::uint16_t soa = 6;
inline constexpr std::uint16_t aaaa = 28;
inline constexpr std::uint16_t opt = 41;
inline constexpr std::uint16_t ds = 43;
inline constexpr std::uint16_t ixfr = 251;
inline constexpr std::uint16_t axfr = 252;
inline constexpr std::uint16_t any = 255;
}  // namespace type

inline constexpr std::uint16_t internetClass = 1;

namespace rcode {
inline constexpr std::uint16_t noError = 0;
inline constexpr std::uint16_t formErr = 1;
inline constexpr std::uint16_t servFail = 2;
inline constexpr std::uint16_t nxDomain = 3;
inline constexpr std::uint16_t notImp = 4;
inline constexpr std::uint16_t badVers = 16;  // the upper bits are in the OPT record
}  // namespace rcode

// Bits of the header's second word.
namespace flag {
inline constexpr std::uint16_t response = 0x8000;
inline constexpr std::uint16_t opcode = 0x7800;
inline constexpr std::uint16_t truncated = 0x0200;
inline constexpr std::uint16_t recursionDesired = 0x0100;
inline constexpr std::uint16_t recursionAvailable = 0x0080;
inline constexpr std::uint16_t authenticData = 0x0020;
inline constexpr std::uint16_t checkingDisabled = 0x0010;
inline constexpr std::uint16_t rcode = 0x000f;
}  // namespace flag

// The DO bit in the TTL field of an OPT record.
inline constexpr std::uint32_t dnssecOk = 0x8000;

inline constexpr std::size_t headerSize = 12;
inline constexpr std::size_t largestMessage = 65'535;
inline constexpr std::size_t largestLabel = 63;

inline std::uint8_t byteAt(std::string_view message, std::size_t at) {
  return static_cast<std::uint8_t>(message[at]);
}
inline std::uint16_t get16(std::string_view message, std::size_t at) {
  return static_cast<std::uint16_t>(byteAt(message, at) * 256U + byteAt(message, at + 1));
}
inline std::uint32_t get32(std::string_view message, std::size_t at) {
  return get16(message, at) * 65536U + get16(message, at + 2);
}
inline void put16(std::string& message, std::size_t at, std::uint16_t number) {
  message[at] = static_cast<char>(number >> 8U);
  message[at + 1] = static_cast<char>(number & 0xffU);
}
inline void put32(std::string& message, std::size_t at, std::uint32_t number) {
  put16(message, at, static_cast<std::uint16_t>(number >> 16U));
  put16(message, at + 2, static_cast<std::uint16_t>(number & 0xffffU));
}
inline void append16(std::string& message, std::uint16_t number) {
  message.append({static_cast<char>(number >> 8U), static_cast<char>(number & 0xffU)});
}
inline void append32(std::string& message, std::uint32_t number) {
  append16(message, static_cast<std::uint16_t>(number >> 16U));
  append16(message, static_cast<std::uint16_t>(number & 0xffffU));
}

struct Header {
  std::uint16_t id = 0;
  std::uint16_t flags = 0;
  std::uint16_t questions = 0;
  std::uint16_t answers = 0;
  std::uint16_t authorities = 0;
  std::uint16_t additionals = 0;

  std::uint16_t rcode() const { return flags & flag::rcode; }
};
std::optional<Header> readHeader(std::string_view message);
void append(std::string& message, const Header& header);
void putAdditionals(std::string& message, std::uint16_t count);

// A resource record and its position in the message.
struct Record {
  std::size_t start = 0;
  bool ofRoot = false;
  std::uint16_t type = 0;
  std::uint16_t klass = 0;
  std::uint32_t ttl = 0;
  std::size_t ttlAt = 0;
  std::string_view data{};
};

// Reads a message from front to back, and never outside of it. After the first malformed part `ok` is false,
// and everything that it returns is empty.
class Reader {
 public:
  Reader(std::string_view message, std::size_t at) : message_(message), at_(at) {}

  bool ok() const { return ok_; }
  std::size_t at() const { return at_; }
  bool atEnd() const { return at_ == message_.size(); }

  std::uint16_t number16() { return has(2) ? get16(message_, taken(2)) : std::uint16_t{0}; }
  std::uint32_t number32() { return has(4) ? get32(message_, taken(4)) : 0; }
  std::string_view bytes(std::size_t count) {
    return has(count) ? message_.substr(taken(count), count) : std::string_view();
  }
  // A name without a pointer. The first name of a message has to be one.
  std::string_view plainName();
  Record record();

 private:
  void skipName();
  bool has(std::size_t count) {
    ok_ = ok_ && at_ <= message_.size() && message_.size() - at_ >= count;
    return ok_;
  }
  // Moves on and returns the position before.
  std::size_t taken(std::size_t count) { return std::exchange(at_, at_ + count); }

  std::string_view message_;
  std::size_t at_;
  bool ok_ = true;
};

// Appends the name in lower case.
void appendLowerCased(std::string& text, std::string_view name);
// Whether they differ at most in case.
bool areSameNames(std::string_view one, std::string_view other);

// "www.example.org" in wire format. The name has to be valid.
std::string wireName(std::string_view dotted);

}  // namespace quillmar::tunnel
