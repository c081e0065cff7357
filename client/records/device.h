#pragma once

#include <optional>
#include <string>

#include "foundation/record.h"

namespace quillmar {

// A device registered with the service.
struct Device {
  std::string id;
  std::string parentId;
  std::optional<std::string> childId;  // nullopt: not linked to a child
  std::string deviceName;              // given at enrollment
  std::string deviceType;              // free text
  std::string dohEndpoint;
  bool isActive = false;
  std::string createdAt;
  std::string updatedAt;
  std::optional<std::string> friendlyName;  // given by the parent
  std::optional<bool> isOnline;             // nullopt: the service did not say
  std::optional<std::string> lastSeenAt;
};

template <>
inline constexpr auto wire<Device> =
    record(required("id", &Device::id), required("parent_id", &Device::parentId),
           optional("child_id", &Device::childId), required("device_name", &Device::deviceName),
           required("device_type", &Device::deviceType), required("doh_endpoint", &Device::dohEndpoint),
           required("is_active", &Device::isActive), required("created_at", &Device::createdAt),
           required("updated_at", &Device::updatedAt), optional("friendly_name", &Device::friendlyName),
           optional("is_online", &Device::isOnline), optional("last_seen_at", &Device::lastSeenAt));

struct UpdateDeviceRequest {
  std::optional<std::string> friendlyName;
  std::optional<std::string> deviceName;
};

template <>
inline constexpr auto wire<UpdateDeviceRequest> =
    record(optional("friendly_name", &UpdateDeviceRequest::friendlyName),
           optional("device_name", &UpdateDeviceRequest::deviceName));

}  // namespace quillmar
