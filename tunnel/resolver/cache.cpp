#include "tunnel/resolver/cache.h"

#include <utility>

namespace quillmar::tunnel {
namespace {

// The memory of an entry beside its content: the list's node, the map's node and the map's bucket.
constexpr std::size_t bookkeeping = 10 * sizeof(void*);

}  // namespace

std::size_t Cache::sizeOf(const Entry& entry) {
  const auto* answer = std::get_if<Answer>(&entry.outcome);
  const auto held = answer != nullptr ? answer->size() : std::get<Failure>(entry.outcome).detail.capacity();
  return sizeof entry + bookkeeping + entry.key.capacity() + held;
}

void Cache::remove(Entries::iterator entry) {
  bytes_ -= sizeOf(*entry);
  byKey_.erase(entry->key);
  entries_.erase(entry);
}

const Cache::Entry* Cache::find(Time now, std::string_view key) {
  const auto known = byKey_.find(key);
  if (known == byKey_.end()) {
    return nullptr;
  }
  const auto entry = known->second;
  if (entry->ends <= now) {
    remove(entry);
    return nullptr;
  }
  entries_.splice(entries_.begin(), entries_, entry);
  return &*entry;
}

void Cache::put(Time now, std::string key, Outcome outcome, std::chrono::seconds life) {
  if (const auto known = byKey_.find(key); known != byKey_.end()) {
    remove(known->second);
  }
  if (life <= std::chrono::seconds::zero()) {
    return;
  }
  entries_.push_front({std::move(key), std::move(outcome), now, now + life});
  byKey_.emplace(entries_.front().key, entries_.begin());
  bytes_ += sizeOf(entries_.front());
  while (entries_.size() > mostAnswers || bytes_ > mostBytes) {
    remove(std::prev(entries_.end()));
  }
}

void Cache::clear() {
  byKey_.clear();
  entries_.clear();
  bytes_ = 0;
}

}  // namespace quillmar::tunnel
