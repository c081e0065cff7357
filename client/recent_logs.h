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
  explicit RecentLogs(std::size_t devices) : answers_(devices) {}

  // `device` counts the devices in the order in which they are asked; they may answer in any.
  void add(std::size_t device, Result<std::vector<DNSLog>> answer);
  // The newest entries of all, newest first; those of one time by device, then in the service's order. Fails,
  // with the first error to come, only where no device gave anything. To be called once.
  Result<std::vector<DNSLog>> takeNewest(std::size_t limit);

 private:
  std::vector<std::vector<DNSLog>> answers_;
  std::optional<Error> firstError_;
};

}  // namespace quillmar
