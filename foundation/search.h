#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Looking for a part of a text as a person does: case, accents and the forms of a letter don't count, in any
// script. Invalid UTF-8 is read as U+FFFD. Thread-safe.
namespace quillmar {

// A text prepared once for many searches.
class SearchKey {
 public:
  SearchKey() = default;
  explicit SearchKey(std::string_view text);

  // Also for a text of nothing but marks.
  bool isEmpty() const { return letters_.empty(); }
  // Every text contains an empty one.
  bool contains(const SearchKey& part) const { return letters_.find(part.letters_) != std::u16string::npos; }

  friend bool operator==(const SearchKey& one, const SearchKey& other) = default;

 private:
  friend class Occurrences;

  std::u16string letters_;
};

// A part of a text, in bytes.
struct TextPart {
  std::size_t start = 0;
  std::size_t size = 0;

  friend bool operator==(const TextPart& one, const TextPart& other) = default;
};

// The places of a key in a text, from its start, without overlaps. A letter belongs to them with its accents.
// An empty key has none.
std::vector<TextPart> occurrences(const SearchKey& key, std::string_view text);

}  // namespace quillmar
