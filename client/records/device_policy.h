#pragma once

#include <string>
#include <vector>

#include "foundation/record.h"

namespace quillmar {

// The filter settings of one device. Unlike in a child's policy, both lists are required.
struct DevicePolicy {
  std::string id;
  std::string deviceId;
  std::string parentId;
  bool isBlocked = false;  // the whole internet
  std::string blockMode;   // "blacklist" or "whitelist"
  std::vector<std::string> blockedDomains;
  std::vector<std::string> allowedDomains;
  std::string createdAt;
  std::string updatedAt;
};

template <>
inline constexpr auto wire<DevicePolicy> = record(required("id", &DevicePolicy::id),
                                                  required("device_id", &DevicePolicy::deviceId),
                                                  required("parent_id", &DevicePolicy::parentId),
                                                  required("is_blocked", &DevicePolicy::isBlocked),
                                                  required("block_mode", &DevicePolicy::blockMode),
                                                  required("blocked_domains", &DevicePolicy::blockedDomains),
                                                  required("allowed_domains", &DevicePolicy::allowedDomains),
                                                  required("created_at", &DevicePolicy::createdAt),
                                                  required("updated_at", &DevicePolicy::updatedAt));

struct UpdatePolicyRequest {
  bool isBlocked = false;
  std::string blockMode;
};

template <>
inline constexpr auto wire<UpdatePolicyRequest> =
    record(required("is_blocked", &UpdatePolicyRequest::isBlocked),
           required("block_mode", &UpdatePolicyRequest::blockMode));

// Adds a domain to a list of a device or of a child.
struct AddDomainRequest {
  std::string domain;
};

template <>
inline constexpr auto wire<AddDomainRequest> = record(required("domain", &AddDomainRequest::domain));

}  // namespace quillmar
