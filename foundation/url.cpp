#include "foundation/url.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "foundation/ascii.h"

namespace quillmar {
namespace {

// ASCII letters, digits and `marks`.
class Characters {
 public:
  explicit constexpr Characters(std::string_view marks) {
    for (int c = 0; c < 128; ++c) {
      const char character = static_cast<char>(c);
      allowed_.at(static_cast<std::size_t>(c)) = isAsciiLetter(character) || isAsciiDigit(character) ||
                                                 marks.find(character) != std::string_view::npos;
    }
  }

  bool contains(char c) const { return allowed_.at(static_cast<unsigned char>(c)); }

 private:
  std::array<bool, 256> allowed_{};
};

constexpr Characters urlCharacters("!$&'()*+,-./:;=?@_~[]#");
constexpr Characters schemeCharacters("+-.");
constexpr Characters pathCharacters("!$&'()*+,-./:=@_~");
constexpr Characters queryCharacters("!$&'()*+,-./:;=?@_~");

bool isEscape(std::string_view text) {
  return text.size() >= 3 && text[0] == '%' && isHexDigit(text[1]) && isHexDigit(text[2]);
}

bool isMadeOfUrlCharacters(std::string_view text) {
  while (!text.empty()) {
    if (urlCharacters.contains(text.front())) {
      text.remove_prefix(1);
    } else if (isEscape(text)) {
      text.remove_prefix(3);
    } else {
      return false;
    }
  }
  return true;
}

std::optional<std::string> nonEmpty(std::string_view text) {
  return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

std::string_view upTo(std::string_view ends, std::string_view text) {
  return text.substr(0, text.find_first_of(ends));
}

std::optional<std::string> schemeOf(std::string_view text) {
  const auto scheme = upTo(":/?#", text);
  const bool closed = scheme.size() < text.size() && text[scheme.size()] == ':';
  const bool wellFormed = !scheme.empty() && isAsciiLetter(scheme.front()) &&
                          std::ranges::all_of(scheme, [](char c) { return schemeCharacters.contains(c); });
  return closed && wellFormed ? nonEmpty(scheme) : std::nullopt;
}

std::optional<std::string> hostOf(std::string_view afterScheme) {
  if (!afterScheme.starts_with("//")) {
    return std::nullopt;
  }
  auto host = upTo("/?#", afterScheme.substr(2));
  if (const auto user = host.rfind('@'); user != std::string_view::npos) {
    host.remove_prefix(user + 1);
  }
  if (!host.starts_with('[')) {
    return nonEmpty(upTo(":", host));
  }
  const auto close = host.find(']');
  return close == std::string_view::npos ? std::nullopt : nonEmpty(host.substr(1, close - 1));
}

std::string percentEncoded(std::string_view text, const Characters& unchanged) {
  static constexpr std::string_view hex = "0123456789ABCDEF";
  std::string encoded;
  encoded.reserve(text.size());
  for (const char c : text) {
    if (unchanged.contains(c)) {
      encoded += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      encoded += '%';
      encoded += hex[byte >> 4U];
      encoded += hex[byte & 0xFU];
    }
  }
  return encoded;
}

}  // namespace

std::optional<URL> URL::parse(std::string_view text) {
  const bool accepted = !text.empty() && std::ranges::count(text, '#') <= 1 && isMadeOfUrlCharacters(text);
  return accepted ? std::optional(URL(text)) : std::nullopt;
}

std::optional<std::string> URL::scheme() const { return schemeOf(text_); }

std::optional<std::string> URL::host() const {
  const auto before = schemeOf(text_);
  return hostOf(std::string_view(text_).substr(before ? before->size() + 1 : 0));
}

std::string percentEncodedForPath(std::string_view text) { return percentEncoded(text, pathCharacters); }
std::string percentEncodedForQuery(std::string_view text) { return percentEncoded(text, queryCharacters); }

}  // namespace quillmar
