#include "foundation/search.h"

#include <unicode/coleitr.h>
#include <unicode/locid.h>
#include <unicode/tblcoll.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <memory>

namespace quillmar {
namespace {

// Unicode's collation of letters, in its form for searches: Korean syllables consist of their letters, and a
// Thai vowel stays where it is written.
std::unique_ptr<icu::RuleBasedCollator> makeCollator() {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::Collator> collator(
      icu::Collator::createInstance(icu::Locale("und@collation=search"), status));
  collator->setAttribute(UCOL_NORMALIZATION_MODE, UCOL_ON, status);
  return std::unique_ptr<icu::RuleBasedCollator>(dynamic_cast<icu::RuleBasedCollator*>(collator.release()));
}

// A letter of a text: its primary weight, and where it is written, in UTF-16 units. A letter may have several
// weights, and a ligature consists of several letters.
struct Letter {
  char16_t weight;
  std::int32_t start;
  std::int32_t end;
};

class LetterWalk {
 public:
  // Accents have no primary weight. They extend the letter before them.
  template <class Take>
  void over(std::string_view utf8, Take take) {
    auto text = icu::UnicodeString::fromUTF8({utf8.data(), static_cast<std::int32_t>(utf8.size())});
    // A Turkish i without its dot is a letter of its own, but its capital is that of every other i.
    text.findAndReplace(icu::UnicodeString(u'\u0131'), icu::UnicodeString(u'i'));
    UErrorCode status = U_ZERO_ERROR;
    elements_->setText(text, status);
    std::int32_t start = 0;
    std::int32_t end = 0;
    for (std::int32_t element = elements_->next(status); element != icu::CollationElementIterator::NULLORDER;
         element = elements_->next(status)) {
      if (const auto offset = elements_->getOffset(); offset != end) {
        start = end;
        end = offset;
      }
      take(Letter{static_cast<char16_t>(icu::CollationElementIterator::primaryOrder(element)), start, end});
    }
  }

 private:
  std::unique_ptr<icu::RuleBasedCollator> collator_ = makeCollator();
  std::unique_ptr<icu::CollationElementIterator> elements_{
      collator_->createCollationElementIterator(icu::UnicodeString())};
};

// One per thread: loading the collation takes about two milliseconds, and walks never overlap.
LetterWalk& letterWalk() {
  thread_local LetterWalk walk;
  return walk;
}

}  // namespace

SearchKey::SearchKey(std::string_view text) {
  letters_.reserve(text.size());
  letterWalk().over(text, [this](const Letter& letter) {
    if (letter.weight != 0) {
      letters_.push_back(letter.weight);
    }
  });
}

class Occurrences {
 public:
  explicit Occurrences(std::string_view text) : text_(text) {
    letterWalk().over(text, [this](const Letter& letter) {
      if (letter.weight != 0) {
        key_.letters_.push_back(letter.weight);
        letters_.push_back(letter);
      } else if (!letters_.empty()) {
        letters_.back().end = letter.end;
      }
    });
  }

  std::vector<TextPart> of(const SearchKey& key) {
    std::vector<TextPart> found;
    const std::size_t length = key.letters_.size();
    for (std::size_t at = length == 0 ? std::u16string::npos : key_.letters_.find(key.letters_);
         at != std::u16string::npos; at = key_.letters_.find(key.letters_, at + length)) {
      const std::size_t start = byteAt(letters_[at].start);
      const std::size_t end = byteAt(letters_[at + length - 1].end);
      const bool sharesALigature = !found.empty() && start < found.back().start + found.back().size;
      if (sharesALigature) {
        found.back().size = end - found.back().start;
      } else {
        found.push_back({start, end - start});
      }
    }
    return found;
  }

 private:
  // The offsets grow, except from one letter of a ligature to the next.
  std::size_t byteAt(std::int32_t offset) {
    if (offset < units_) {
      units_ = bytes_ = 0;
    }
    const auto* const utf8 = reinterpret_cast<const std::uint8_t*>(text_.data());
    const auto size = static_cast<std::int32_t>(text_.size());
    while (units_ < offset && bytes_ < size) {
      UChar32 character = 0;
      U8_NEXT_OR_FFFD(utf8, bytes_, size, character);
      units_ += U16_LENGTH(character);
    }
    return static_cast<std::size_t>(bytes_);
  }

  std::string_view text_;
  SearchKey key_;
  std::vector<Letter> letters_;
  std::int32_t units_ = 0;
  std::int32_t bytes_ = 0;
};

std::vector<TextPart> occurrences(const SearchKey& key, std::string_view text) {
  return Occurrences(text).of(key);
}

}  // namespace quillmar
