#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>

#include "tunnel/dns/answer.h"
#include "tunnel/resolver/failure.h"
#include "tunnel/resolver/time.h"

namespace quillmar::tunnel {

using Outcome = std::variant<Answer, Failure>;

// Keeps answers and failures until they expire. A full cache drops the entry that was not asked for the
// longest.
class Cache {
 public:
  static constexpr std::size_t mostAnswers = 4096;
  static constexpr std::size_t mostBytes = std::size_t{2} * 1024 * 1024;

  struct Entry {
    std::string key;
    Outcome outcome;
    Time came;
    Time ends;
  };

  // The entry is valid until the next call.
  const Entry* find(Time now, std::string_view key);
  void put(Time now, std::string key, Outcome outcome, std::chrono::seconds life);

  void clear();

  std::size_t answers() const { return entries_.size(); }
  std::size_t bytes() const { return bytes_; }

 private:
  using Entries = std::list<Entry>;

  static std::size_t sizeOf(const Entry& entry);
  void remove(Entries::iterator entry);

  Entries entries_;                                                // the one used last is first
  std::unordered_map<std::string_view, Entries::iterator> byKey_;  // keys belong to the entries
  std::size_t bytes_ = 0;
};

}  // namespace quillmar::tunnel
