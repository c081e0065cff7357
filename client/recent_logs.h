#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "client/records/dns_log.h"
#include "foundation/result.h"

namespace quillmar {

// Merges the answers of several devices.
class RecentLogs {
 public:
  explicit RecentLogs(std::size_t devices) : answers_(devices) {}

  // `device` is the index in the order of asking; the answers may arrive in any order.
  void add(std::size_t device, Result<std::vector<DNSLog>> answer);
  // The newest entries of all devices, newest first; equal times are ordered by device, then as the service
  // sent them. Fails with the first error added, only if no device returned an entry. Call it once.
  Result<std::vector<DNSLog>> takeNewest(std::size_t limit);

 private:
  std::vector<std::vector<DNSLog>> answers_;
  std::optional<Error> firstError_;
};

}  // namespace quillmar
