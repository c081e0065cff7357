#include "foundation/text.h"

#include <simdjson.h>
#include <unicode/brkiter.h>
#include <unicode/casemap.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <memory>
#include <random>
#include <system_error>
#include <utility>

#include "foundation/ascii.h"
#include "foundation/icu_text.h"

namespace quillmar {
namespace {

icu::StringPiece piece(std::string_view text) {
  return {text.data(), static_cast<std::int32_t>(text.size())};
}

// Returns the text itself if it is valid UTF-8, else a repaired copy in `storage`.
std::string_view validated(std::string_view text, std::string& storage) {
  if (isValidUtf8(text)) {
    return text;
  }
  storage = utf8(icu::UnicodeString::fromUTF8(piece(text)));
  return storage;
}

bool isAscii(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::unique_ptr<icu::BreakIterator> makeCharacterIterator() {
  UErrorCode status = U_ZERO_ERROR;
  return std::unique_ptr<icu::BreakIterator>(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
}

// One per thread: creating an iterator loads its rules, and walks never overlap.
thread_local const std::unique_ptr<icu::BreakIterator> characterIterator = makeCharacterIterator();

// Iterates over grapheme clusters. ASCII needs no tables: its only cluster of two bytes is CR LF.
class CharacterWalk {
 public:
  explicit CharacterWalk(std::string_view text) : text_(text), plain_(isAscii(text)) {
    if (!plain_) {
      begin();
    }
  }
  CharacterWalk(const CharacterWalk&) = delete;
  CharacterWalk& operator=(const CharacterWalk&) = delete;
  ~CharacterWalk() { utext_close(&utext_); }

  bool atEnd() const { return position_ == text_.size(); }

  std::string_view next() {
    const std::size_t start = position_;
    position_ = plain_ ? start + (startsLineEnd(start) ? 2 : 1) : nextBoundary();
    return text_.substr(start, position_ - start);
  }

  std::size_t position() const { return position_; }

 private:
  void begin() {
    UErrorCode status = U_ZERO_ERROR;
    utext_openUTF8(&utext_, text_.data(), static_cast<std::int64_t>(text_.size()), &status);
    characterIterator->setText(&utext_, status);
    characterIterator->first();
  }

  bool startsLineEnd(std::size_t start) const {
    return text_[start] == '\r' && start + 1 < text_.size() && text_[start + 1] == '\n';
  }

  std::size_t nextBoundary() const {
    const auto boundary = characterIterator->next();
    return boundary == icu::BreakIterator::DONE ? text_.size() : static_cast<std::size_t>(boundary);
  }

  std::string_view text_;
  bool plain_;
  std::size_t position_ = 0;
  UText utext_ = UTEXT_INITIALIZER;
};

template <class Mapping>
std::string mapped(Mapping mapping) {
  std::string result;
  icu::StringByteSink<std::string> sink(&result);
  UErrorCode status = U_ZERO_ERROR;
  mapping(sink, status);
  return result;
}

bool isInCategory(char32_t c, std::uint32_t mask) {
  return (U_GET_GC_MASK(static_cast<UChar32>(c)) & mask) != 0;
}

bool isApostrophe(char32_t c) { return c == U'\'' || c == U'\u2019'; }

// Letters, their marks and apostrophes continue a word.
bool continuesWord(char32_t c) { return isInCategory(c, U_GC_L_MASK | U_GC_M_MASK) || isApostrophe(c); }

bool isSpace(char32_t c) {
  const bool isLineBreak = (c >= U'\n' && c <= U'\r') || c == U'\u0085' || c == U'\u2028' || c == U'\u2029';
  return isLineBreak || isBlank(c);
}

template <class Refuses>
std::string withoutEnds(std::string_view text, Refuses refuses) {
  const auto points = codePoints(text);
  const auto kept = [&](char32_t c) { return !refuses(c); };
  const auto first = std::ranges::find_if(points, kept);
  const auto last = std::find_if(points.rbegin(), std::make_reverse_iterator(first), kept).base();
  return fromCodePoints({first, last});
}

}  // namespace

std::size_t characterCount(std::string_view text) {
  std::string storage;
  std::size_t count = 0;
  for (CharacterWalk walk(validated(text, storage)); !walk.atEnd(); walk.next()) {
    ++count;
  }
  return count;
}

std::string firstCharacters(std::string_view text, std::size_t count) {
  std::string storage;
  const auto valid = validated(text, storage);
  CharacterWalk walk(valid);
  for (; count > 0 && !walk.atEnd(); --count) {
    walk.next();
  }
  return std::string(valid.substr(0, walk.position()));
}

std::vector<std::string> characters(std::string_view text) {
  std::string storage;
  std::vector<std::string> all;
  for (CharacterWalk walk(validated(text, storage)); !walk.atEnd();) {
    all.emplace_back(walk.next());
  }
  return all;
}

std::string uppercased(std::string_view text) {
  std::string storage;
  const auto valid = piece(validated(text, storage));
  return mapped([&](icu::ByteSink& sink, UErrorCode& status) {
    icu::CaseMap::utf8ToUpper("", 0, valid, sink, nullptr, status);
  });
}

std::string lowercased(std::string_view text) {
  std::string storage;
  const auto valid = piece(validated(text, storage));
  return mapped([&](icu::ByteSink& sink, UErrorCode& status) {
    icu::CaseMap::utf8ToLower("", 0, valid, sink, nullptr, status);
  });
}

std::string capitalized(std::string_view text) {
  const auto points = codePoints(text);
  return mapped([&](icu::ByteSink& sink, UErrorCode& status) {
    for (auto start = points.begin(); start != points.end();) {
      auto end = std::find_if_not(start, points.end(), continuesWord);
      end += end == points.end() ? 0 : 1;
      const auto word = fromCodePoints({start, end});
      icu::CaseMap::utf8ToTitle("", U_TITLECASE_WHOLE_STRING | U_TITLECASE_ADJUST_TO_CASED, nullptr,
                                piece(word), sink, nullptr, status);
      start = end;
    }
  });
}

bool isDecimalDigit(char32_t c) { return isInCategory(c, U_GC_ND_MASK); }
bool isSymbol(char32_t c) { return isInCategory(c, U_GC_S_MASK); }
bool isPunctuation(char32_t c) { return isInCategory(c, U_GC_P_MASK); }
bool isAlphanumeric(char32_t c) { return isInCategory(c, U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK); }
bool isUppercase(char32_t c) { return isInCategory(c, U_GC_LU_MASK | U_GC_LT_MASK); }
bool isLowercase(char32_t c) { return isInCategory(c, U_GC_LL_MASK); }

bool isBlank(char32_t c) {
  constexpr std::u32string_view singles = U"\t \u00A0\u1680\u202F\u205F\u3000";
  return (c >= U'\u2000' && c <= U'\u200B') || singles.find(c) != std::u32string_view::npos;
}

std::vector<char32_t> codePoints(std::string_view text) {
  const auto unicode = icu::UnicodeString::fromUTF8(piece(text));
  std::vector<char32_t> points;
  points.reserve(text.size());
  for (std::int32_t i = 0; i < unicode.length(); i = unicode.moveIndex32(i, 1)) {
    points.push_back(static_cast<char32_t>(unicode.char32At(i)));
  }
  return points;
}

bool anyCodePoint(std::string_view text, bool (*accepts)(char32_t)) {
  const auto acceptsByte = [accepts](char c) { return accepts(static_cast<unsigned char>(c)); };
  return isAscii(text) ? std::ranges::any_of(text, acceptsByte)
                       : std::ranges::any_of(codePoints(text), accepts);
}

std::string fromCodePoints(const std::vector<char32_t>& points) {
  const std::vector<UChar32> units(points.begin(), points.end());
  return utf8(icu::UnicodeString::fromUTF32(units.data(), static_cast<std::int32_t>(units.size())));
}

std::string trimmed(std::string_view text) { return withoutEnds(text, isBlank); }

std::string trimmedTo(std::string_view text, bool (*keep)(char32_t)) {
  return withoutEnds(text, [keep](char32_t c) { return !keep(c); });
}

bool isValidUtf8(std::string_view bytes) { return simdjson::validate_utf8(bytes.data(), bytes.size()); }

std::optional<std::int64_t> wholeNumber(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) {
      return std::nullopt;
    }
  }
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::uint64_t scanHex(std::string_view text) {
  const auto points = codePoints(text);
  const auto readable = fromCodePoints({std::ranges::find_if_not(points, isSpace), points.end()});
  std::string_view digits = readable;
  if (digits.starts_with("0x") || digits.starts_with("0X")) {
    digits.remove_prefix(2);
  }
  std::uint64_t number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
  return result.ec == std::errc::result_out_of_range ? std::numeric_limits<std::uint64_t>::max() : number;
}

std::string newUUID() {
  static constexpr std::string_view hex = "0123456789ABCDEF";
  static constexpr std::string_view form = "XXXXXXXX-XXXX-4XXX-VXXX-XXXXXXXXXXXX";
  std::random_device source;
  std::uniform_int_distribution<std::size_t> digit(0, 15);
  std::string uuid(form);
  for (char& c : uuid) {
    if (c == 'X') {
      c = hex[digit(source)];
    } else if (c == 'V') {
      c = hex[8 + digit(source) % 4];
    }
  }
  return uuid;
}

}  // namespace quillmar
