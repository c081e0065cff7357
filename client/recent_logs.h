#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "client/records/dns_log.h"
#include "foundation/result.h"

namespace quillmar {

// What the answers of several devices add up to. Any thread, but one at a time.
class RecentLogs {
 public:
  void add(Result<std::vector<DNSLog>> answer);
  // The newest entries of all, newest first; equal times in no promised order. Fails, with the first error,
  // only where no device gave anything. To be called once.
  Result<std::vector<DNSLog>> takeNewest(std::size_t limit);

 private:
  std::vector<std::vector<DNSLog>> answers_;
  std::optional<Error> firstError_;
};

}  // namespace quillmar
