#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/record.h"

namespace quillmar {

// One DNS query as the service recorded it.
struct DNSLog {
  std::int64_t id = 0;  // a number, unlike every other id
  std::string deviceId;
  std::string parentId;
  std::string domain;
  std::string queryType;  // the DNS record type as text
  bool wasBlocked = false;
  std::string timestamp;  // ISO 8601; sorts as text
};

template <>
inline constexpr auto wire<DNSLog> = record(required("id", &DNSLog::id),
                                            required("device_id", &DNSLog::deviceId),
                                            required("parent_id", &DNSLog::parentId),
                                            required("domain", &DNSLog::domain),
                                            required("query_type", &DNSLog::queryType),
                                            required("was_blocked", &DNSLog::wasBlocked),
                                            required("timestamp", &DNSLog::timestamp));

struct DNSLogsResponse {
  std::vector<DNSLog> logs;
};

template <>
inline constexpr auto wire<DNSLogsResponse> = record(required("logs", &DNSLogsResponse::logs));

}  // namespace quillmar
