#include "console/interned_texts.h"

#include <functional>

namespace quillmar {

std::uint32_t InternedTexts::add(std::string_view text) {
  const std::hash<std::string_view> hash;
  const std::uint32_t index = table_.findOrAdd(
      hash(text), [&](std::uint32_t other) { return (*this)[other] == text; },
      [&](std::uint32_t other) { return hash((*this)[other]); });
  if (index == ends_.size()) {
    characters_ += text;
    ends_.push_back(characters_.size());
  }
  return index;
}

std::string_view InternedTexts::operator[](std::uint32_t index) const {
  const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
  return std::string_view(characters_).substr(begin, ends_[index] - begin);
}

}  // namespace quillmar
