#pragma once

#include "client/call.h"
#include "client/records/device.h"
#include "client/records/device_policy.h"
#include "client/records/dns_log.h"

// Devices, their policies and their logs. Domains in a path are percent-encoded, unlike in a child's calls.
namespace quillmar::calls {

inline constexpr Call<NoBody, void, 1> deleteDevice{"DELETE", "/devices/{}"};
inline constexpr Call<UpdateDeviceRequest, Device, 1> updateDevice{"PUT", "/devices/{}"};
inline constexpr Call<NoBody, DevicePolicy, 1> getDevicePolicy{"GET", "/devices/{}/policy"};
inline constexpr Call<UpdatePolicyRequest, DevicePolicy, 1> updateDevicePolicy{"PUT", "/devices/{}/policy"};
inline constexpr Call<AddDomainRequest, void, 1> addBlockedDomain{"POST", "/devices/{}/policy/block"};
inline constexpr Call<NoBody, void, 2> removeBlockedDomain{"DELETE", "/devices/{}/policy/block/{%path}"};
inline constexpr Call<AddDomainRequest, void, 1> addAllowedDomain{"POST", "/devices/{}/policy/allow"};
inline constexpr Call<NoBody, void, 2> removeAllowedDomain{"DELETE", "/devices/{}/policy/allow/{%path}"};
inline constexpr Call<NoBody, DNSLogsResponse, 3> getDeviceLogs{"GET", "/devices/{}/logs?limit={}&offset={}"};
inline constexpr CallRow<NoBody, DNSLogsResponse, 3> getRecentDeviceLogs{
    "GET", "/devices/{}/logs?limit={}&since={%query}"};

}  // namespace quillmar::calls
