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

// What was answered lately, each for as long as it may be given again; when there is no more room, what was
// not asked for the longest goes.
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

  // Valid until the next change of the cache.
  const Entry* find(Time now, std::string_view key);
  void put(Time now, std::string_view key, const Outcome& outcome, std::chrono::seconds life);

  void clear();

  std::size_t answers() const { return entries_.size(); }
  std::size_t bytes() const { return bytes_; }

 private:
  using Entries = std::list<Entry>;

  static std::size_t sizeOf(const Entry& entry);
  void remove(Entries::iterator entry);

  Entries entries_;                                                // what was asked for last stands first
  std::unordered_map<std::string_view, Entries::iterator> byKey_;  // the keys are those of the entries
  std::size_t bytes_ = 0;
};

}  // namespace quillmar::tunnel
