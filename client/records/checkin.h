#pragma once

#include <optional>
#include <string>

#include "foundation/record.h"

namespace quillmar {

// The whole report of a child's device.
struct CheckinRequest {
  std::string deviceId;
  std::string deviceType;
};

template <>
inline constexpr auto wire<CheckinRequest> = record(required("device_id", &CheckinRequest::deviceId),
                                                    required("device_type", &CheckinRequest::deviceType));

struct CheckinResponse {
  std::string status;  // "ok" means good
  std::optional<std::string> dohEndpoint;
  std::optional<std::string> dohBaseUrl;
  std::optional<std::string> serverTime;
};

template <>
inline constexpr auto wire<CheckinResponse> = record(required("status", &CheckinResponse::status),
                                                     optional("doh_endpoint", &CheckinResponse::dohEndpoint),
                                                     optional("doh_base_url", &CheckinResponse::dohBaseUrl),
                                                     optional("server_time", &CheckinResponse::serverTime));

}  // namespace quillmar
