#include "foundation/json_locate.h"

#include <simdjson.h>

#include <bit>
#include <charconv>
#include <optional>
#include <string>

#include "foundation/ascii.h"
#include "foundation/text.h"

namespace quillmar {
namespace {

constexpr int maximumDepth = 1024;

// Decodes a valid JSON string.
std::string unescaped(std::string_view quoted) {
  simdjson::dom::parser parser;
  std::string_view content;
  return parser.parse(simdjson::padded_string(quoted)).get(content) == simdjson::SUCCESS
             ? std::string(content)
             : std::string();
}

bool isHighSurrogate(int unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(int unit) { return unit >= 0xDC00 && unit < 0xE000; }

// Walks the grammar by recursive descent and builds nothing. Stops at the first invalid byte.
class Walker {
 public:
  explicit Walker(std::string_view text) : text_(text) {}

  std::size_t position() const { return position_; }
  bool atEnd() const { return position_ == text_.size(); }

  void skipBlanks() {
    while (!atEnd() && std::string_view(" \t\r\n").find(text_[position_]) != std::string_view::npos) {
      ++position_;
    }
  }

  bool skipValue(int depth = 0) {
    skipBlanks();
    if (atEnd() || depth > maximumDepth) {
      return false;
    }
    switch (text_[position_]) {
      case '{':
        return skipAll('}', [&] { return skipKey() && skipValue(depth + 1); });
      case '[':
        return skipAll(']', [&] { return skipValue(depth + 1); });
      case '"':
        return skipString();
      case 't':
        return skipWord("true");
      case 'f':
        return skipWord("false");
      case 'n':
        return skipWord("null");
      default:
        return skipNumber();
    }
  }

  // Moves to the value under a key or an index. If there is none, stays at the container's first byte.
  bool enter(const JsonStep& step) {
    const std::size_t container = position_;
    const bool found = std::holds_alternative<std::size_t>(step) ? enterIndex(std::get<std::size_t>(step))
                                                                 : enterKey(std::get<std::string_view>(step));
    if (!found) {
      position_ = container;
    }
    return found;
  }

 private:
  bool skipOne(char c) {
    skipBlanks();
    const bool here = !atEnd() && text_[position_] == c;
    position_ += here ? 1 : 0;
    return here;
  }

  template <class Element>
  bool skipAll(char close, Element element) {
    ++position_;
    if (skipOne(close)) {
      return true;
    }
    do {
      if (!element()) {
        return false;
      }
    } while (skipOne(','));
    return skipOne(close);
  }

  bool skipWord(std::string_view word) {
    for (const char c : word) {
      if (atEnd() || text_[position_] != c) {
        return false;
      }
      ++position_;
    }
    return true;
  }

  bool skipString() {
    ++position_;
    while (!atEnd() && text_[position_] != '"') {
      if (!skipCharacter()) {
        return false;
      }
    }
    return skipWord("\"");
  }

  bool skipCharacter() {
    const auto byte = static_cast<unsigned char>(text_[position_]);
    if (byte == '\\') {
      return skipEscape();
    }
    // The number of leading ones is the length of a UTF-8 sequence; an ASCII byte has none.
    const auto length = byte < 0x80 ? 1U : static_cast<unsigned>(std::countl_one(byte));
    const bool valid = byte >= 0x20 && isValidUtf8(text_.substr(position_, length));
    position_ += valid ? length : 0;
    return valid;
  }

  bool skipEscape() {
    const std::size_t start = position_;
    ++position_;
    if (skipAny("\"\\/bfnrt")) {
      return true;
    }
    const auto unit = skipUnit();
    if (!unit) {
      return false;
    }
    bool whole = !isLowSurrogate(*unit);
    if (isHighSurrogate(*unit)) {
      const auto next = skipAny("\\") ? skipUnit() : std::nullopt;
      whole = next && isLowSurrogate(*next);
    }
    position_ = whole ? position_ : start;
    return whole;
  }

  // Moves over the "uXXXX" of an escape and returns its code unit.
  std::optional<int> skipUnit() {
    if (!skipAny("u")) {
      return std::nullopt;
    }
    const char* const digits = text_.data() + position_;
    for (int i = 0; i < 4; ++i, ++position_) {
      if (atEnd() || !isHexDigit(text_[position_])) {
        return std::nullopt;
      }
    }
    int unit = 0;
    std::from_chars(digits, digits + 4, unit, 16);
    return unit;
  }

  bool skipDigits() {
    const std::size_t start = position_;
    while (!atEnd() && text_[position_] >= '0' && text_[position_] <= '9') {
      ++position_;
    }
    return position_ > start;
  }

  bool skipNumber() {
    skipAny("-");
    if (!skipAny("0") && !skipDigits()) {
      return false;
    }
    if (skipAny(".") && !skipDigits()) {
      return false;
    }
    if (skipAny("eE")) {
      skipAny("+-");
      return skipDigits();
    }
    return true;
  }

  bool skipAny(std::string_view set) {
    const bool here = !atEnd() && set.find(text_[position_]) != std::string_view::npos;
    position_ += here ? 1 : 0;
    return here;
  }

  bool skipKey() {
    skipBlanks();
    return !atEnd() && text_[position_] == '"' && skipString() && skipOne(':');
  }

  bool enterKey(std::string_view key) {
    if (!skipOne('{')) {
      return false;
    }
    do {
      skipBlanks();
      const std::size_t start = position_;
      if (atEnd() || text_[position_] != '"' || !skipString()) {
        return false;
      }
      const auto quoted = text_.substr(start, position_ - start);
      skipOne(':');
      if (unescaped(quoted) == key) {
        skipBlanks();
        return true;
      }
    } while (skipValue() && skipOne(','));
    return false;
  }

  bool enterIndex(std::size_t index) {
    if (!skipOne('[')) {
      return false;
    }
    for (; index > 0; --index) {
      if (!skipValue() || !skipOne(',')) {
        return false;
      }
    }
    skipBlanks();
    return true;
  }

  std::string_view text_;
  std::size_t position_ = 0;
};

}  // namespace

std::size_t locate(std::string_view text, const std::vector<JsonStep>& path) {
  Walker walker(text);
  walker.skipBlanks();
  for (const auto& step : path) {
    if (!walker.enter(step)) {
      break;
    }
  }
  return walker.position();
}

std::size_t firstBadByte(std::string_view text) {
  Walker walker(text);
  if (walker.skipValue()) {
    walker.skipBlanks();
  }
  return walker.position();
}

}  // namespace quillmar
