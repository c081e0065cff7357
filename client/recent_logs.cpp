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
  if (limit < entries.size()) {
    const auto end = entries.begin() + static_cast<std::ptrdiff_t>(limit);
    std::ranges::nth_element(entries, end, std::ranges::greater(), &DNSLog::timestamp);
    entries.erase(end, entries.end());
  }
  std::ranges::sort(entries, std::ranges::greater(), &DNSLog::timestamp);
  std::vector<DNSLog> newest;
  newest.reserve(entries.size());
  std::ranges::transform(entries, std::back_inserter(newest),
                         [](DNSLog* entry) { return std::move(*entry); });
  return newest;
}

}  // namespace quillmar
