#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "client/records/device.h"
#include "client/records/device_policy.h"
#include "foundation/record.h"

namespace quillmar {

// The filter settings of a child, for all its devices. Unlike in a device's policy, the lists are optional.
struct ChildPolicy {
  std::string id;
  std::string childId;
  std::string familyId;
  bool isBlocked = false;  // the whole internet
  std::string blockMode;   // "blacklist" or "whitelist"
  std::vector<std::string> blockedDomains;
  std::vector<std::string> allowedDomains;
  std::string createdAt;
  std::string updatedAt;
};

template <>
inline constexpr auto wire<ChildPolicy> = record(
    required("id", &ChildPolicy::id), required("child_id", &ChildPolicy::childId),
    required("family_id", &ChildPolicy::familyId), required("is_blocked", &ChildPolicy::isBlocked),
    required("block_mode", &ChildPolicy::blockMode), orEmpty("blocked_domains", &ChildPolicy::blockedDomains),
    orEmpty("allowed_domains", &ChildPolicy::allowedDomains), required("created_at", &ChildPolicy::createdAt),
    required("updated_at", &ChildPolicy::updatedAt));

// A child with its devices and its policy. More keys are optional than in ChildProfile.
struct ChildProfileWithDevices {
  std::string id;
  std::string familyId;
  std::string name;
  std::optional<std::string> photoURL;
  std::optional<std::int64_t> birthYear;
  std::int64_t displayOrder = 0;  // place in the list
  bool isActive = false;
  std::string createdAt;
  std::string updatedAt;
  std::vector<Device> devices;
  std::optional<ChildPolicy> policy;  // nullopt: none yet
};

template <>
inline constexpr auto wire<ChildProfileWithDevices> = record(
    required("id", &ChildProfileWithDevices::id), required("family_id", &ChildProfileWithDevices::familyId),
    required("name", &ChildProfileWithDevices::name),
    optional("photo_url", &ChildProfileWithDevices::photoURL),
    optional("birth_year", &ChildProfileWithDevices::birthYear),
    orElse("display_order", &ChildProfileWithDevices::displayOrder, 0),
    required("is_active", &ChildProfileWithDevices::isActive),
    required("created_at", &ChildProfileWithDevices::createdAt),
    required("updated_at", &ChildProfileWithDevices::updatedAt),
    orEmpty("devices", &ChildProfileWithDevices::devices),
    optional("policy", &ChildProfileWithDevices::policy));

// A child alone, the answer of an update.
struct ChildProfile {
  std::string id;
  std::string familyId;
  std::string name;
  std::optional<std::string> photoURL;
  std::optional<std::int64_t> birthYear;
  std::int64_t displayOrder = 0;
  bool isActive = false;
  std::string createdAt;
  std::string updatedAt;
};

template <>
inline constexpr auto wire<ChildProfile> = record(
    required("id", &ChildProfile::id), required("family_id", &ChildProfile::familyId),
    required("name", &ChildProfile::name), optional("photo_url", &ChildProfile::photoURL),
    optional("birth_year", &ChildProfile::birthYear), required("display_order", &ChildProfile::displayOrder),
    required("is_active", &ChildProfile::isActive), required("created_at", &ChildProfile::createdAt),
    required("updated_at", &ChildProfile::updatedAt));

struct ChildrenResponse {
  std::vector<ChildProfileWithDevices> children;
  std::vector<Device> unassignedDevices;  // linked to no child
};

template <>
inline constexpr auto wire<ChildrenResponse> = record(orEmpty("children", &ChildrenResponse::children),
                                                      orEmpty("unassigned_devices",
                                                              &ChildrenResponse::unassignedDevices));

struct CreateChildRequest {
  std::string name;
  std::optional<std::string> photoURL;
  std::optional<std::int64_t> birthYear;
};

template <>
inline constexpr auto wire<CreateChildRequest> = record(required("name", &CreateChildRequest::name),
                                                        optional("photo_url", &CreateChildRequest::photoURL),
                                                        optional("birth_year",
                                                                 &CreateChildRequest::birthYear));

// Only fields that are set are sent, so one record serves any partial update.
struct UpdateChildRequest {
  std::optional<std::string> name;
  std::optional<std::string> photoURL;
  std::optional<std::int64_t> birthYear;
  std::optional<std::int64_t> displayOrder;
  std::optional<bool> isActive;
};

template <>
inline constexpr auto wire<UpdateChildRequest> =
    record(optional("name", &UpdateChildRequest::name), optional("photo_url", &UpdateChildRequest::photoURL),
           optional("birth_year", &UpdateChildRequest::birthYear),
           optional("display_order", &UpdateChildRequest::displayOrder),
           optional("is_active", &UpdateChildRequest::isActive));

struct LinkDeviceRequest {
  std::string deviceId;
};

template <>
inline constexpr auto wire<LinkDeviceRequest> = record(required("device_id", &LinkDeviceRequest::deviceId));

// A child's policy is updated with the same fields as a device's.
using UpdateChildPolicyRequest = UpdatePolicyRequest;

}  // namespace quillmar
