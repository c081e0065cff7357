#include "client/recent_logs.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quillmar {
namespace {

struct Entry {
  DNSLog* log = nullptr;
  std::size_t place = 0;
};

// A strict total order: repeated fetches of the same entries must give the same list.
bool standsBefore(const Entry& one, const Entry& other) {
  const int order = one.log->timestamp.compare(other.log->timestamp);
  return order != 0 ? order > 0 : one.place < other.place;
}

}  // namespace

void RecentLogs::add(std::size_t device, Result<std::vector<DNSLog>> answer) {
  if (answer.ok()) {
    answers_.at(device) = std::move(answer).value();
  } else if (!firstError_) {
    firstError_ = answer.error();
  }
}

Result<std::vector<DNSLog>> RecentLogs::takeNewest(std::size_t limit) {
  // Entries are large and most are dropped, so only the kept ones are moved.
  std::vector<Entry> entries;
  for (auto& answer : answers_) {
    for (auto& log : answer) {
      entries.push_back({&log, entries.size()});
    }
  }
  if (firstError_ && entries.empty()) {
    return *firstError_;
  }
  if (limit < entries.size()) {
    const auto end = entries.begin() + static_cast<std::ptrdiff_t>(limit);
    std::ranges::nth_element(entries, end, standsBefore);
    entries.erase(end, entries.end());
  }
  std::ranges::sort(entries, standsBefore);
  std::vector<DNSLog> newest;
  newest.reserve(entries.size());
  std::ranges::transform(entries, std::back_inserter(newest),
                         [](const Entry& entry) { return std::move(*entry.log); });
  return newest;
}

}  // namespace quillmar
