#pragma once

#include <string>
#include <utility>
#include <vector>

#include "client/records/child.h"
#include "client/records/device.h"
#include "foundation/json.h"
#include "testing/test_application.h"

// Shared by the tests of a signed-in parent's screens.
namespace quillmar {

// A session that needs no refresh for twelve hours.
inline StoredSettings asSignedInParent() {
  auto stored = asParent();
  stored[settings::authToken] = std::string("token");
  stored[settings::authTokenTimestamp] = VirtualDispatch::defaultStart;
  stored[settings::parentName] = std::string("Ann Lee");
  return stored;
}

inline Device makeDevice(const std::string& id, bool isActive = true) {
  Device device;
  device.id = id;
  device.parentId = "p1";
  device.deviceName = "Device " + id;
  device.deviceType = "ios";
  device.dohEndpoint = "https://dns.example/" + id;
  device.isActive = isActive;
  device.createdAt = device.updatedAt = "2016-10-08T22:31:00Z";
  return device;
}

inline ChildProfileWithDevices makeChild(const std::string& id, const std::string& name,
                                         std::vector<Device> devices = {}) {
  ChildProfileWithDevices child;
  child.id = id;
  child.familyId = "f1";
  child.name = name;
  child.isActive = true;
  child.createdAt = child.updatedAt = "2016-10-08T22:31:00Z";
  child.devices = std::move(devices);
  return child;
}

template <Record T>
std::string jsonOf(const T& record) {
  return encodeJson(record).value();
}

inline std::string childrenAnswer(std::vector<ChildProfileWithDevices> children) {
  return jsonOf(ChildrenResponse{.children = std::move(children), .unassignedDevices = {}});
}

}  // namespace quillmar
