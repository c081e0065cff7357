#include "client/recent_logs.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace quillmar {

void RecentLogs::add(Result<std::vector<DNSLog>> answer) {
  if (answer.ok()) {
    answers_.push_back(std::move(answer).value());
  } else if (!firstError_) {
    firstError_ = answer.error();
  }
}

Result<std::vector<DNSLog>> RecentLogs::takeNewest(std::size_t limit) {
  // An entry is large and most are not kept, so that only what is kept is moved.
  std::vector<DNSLog*> entries;
  for (auto& answer : answers_) {
    for (auto& entry : answer) {
      entries.push_back(&entry);
    }
  }
  if (firstError_ && entries.empty()) {
    return *firstError_;
  }
  const auto end = entries.begin() + static_cast<std::ptrdiff_t>(std::min(limit, entries.size()));
  std::ranges::partial_sort(entries, end, std::ranges::greater(), &DNSLog::timestamp);
  std::vector<DNSLog> newest;
  newest.reserve(static_cast<std::size_t>(end - entries.begin()));
  std::transform(entries.begin(), end, std::back_inserter(newest),
                 [](DNSLog* entry) { return std::move(*entry); });
  return newest;
}

}  // namespace quillmar
