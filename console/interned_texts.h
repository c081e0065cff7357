#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillmar {

// Finds the index of a key in a list that is stored elsewhere. A hash table with open addressing and four
// bytes a slot; it contains no key.
class IndexTable {
 public:
  // The index of the key that `isKey` accepts. If there is none, the next index is added for it and returned.
  // `hashOf` returns the hash of the key at an index.
  template <class IsKey, class HashOf>
  std::uint32_t findOrAdd(std::size_t hash, IsKey isKey, HashOf hashOf) {
    if ((size_ + 1) * std::size_t{4} > slots_.size() * 3) {
      grow(hashOf);
    }
    const std::size_t slot = find(hash, isKey);
    if (slots_[slot] == unused) {
      slots_[slot] = size_++;
    }
    return slots_[slot];
  }

  std::uint32_t size() const { return size_; }

 private:
  static constexpr std::uint32_t unused = std::numeric_limits<std::uint32_t>::max();

  // Consecutive hashes must not fill consecutive slots.
  std::size_t firstSlot(std::size_t hash) const {
    constexpr std::uint64_t oddNumber = 0x9E3779B97F4A7C15;
    return static_cast<std::size_t>((hash * oddNumber) >> 32) & (slots_.size() - 1);
  }

  template <class IsKey>
  std::size_t find(std::size_t hash, IsKey isKey) const {
    std::size_t slot = firstSlot(hash);
    while (slots_[slot] != unused && !isKey(slots_[slot])) {
      slot = (slot + 1) & (slots_.size() - 1);
    }
    return slot;
  }

  template <class HashOf>
  void grow(HashOf hashOf) {
    slots_.assign(slots_.empty() ? 64 : 2 * slots_.size(), unused);
    for (std::uint32_t index = 0; index < size_; ++index) {
      slots_[find(hashOf(index), [](std::uint32_t /*other*/) { return false; })] = index;
    }
  }

  std::uint32_t size_ = 0;
  std::vector<std::uint32_t> slots_;
};

// Each text once, in one piece of memory.
class InternedTexts {
 public:
  // Equal texts have the same index; the indices count from 0.
  std::uint32_t add(std::string_view text);
  // Valid until the next `add`.
  std::string_view operator[](std::uint32_t index) const;
  std::uint32_t size() const { return table_.size(); }

 private:
  std::string characters_;
  std::vector<std::size_t> ends_;
  IndexTable table_;
};

}  // namespace quillmar
