#pragma once

#include <optional>
#include <string>

#include "sandbox/store/database.h"

namespace quillmar::sandbox {

// Each of these adds one thing and returns its id.

struct NewAccount {
  std::string email;
  std::string password;
  std::string name;
  std::optional<std::string> phone{};
  std::optional<std::string> region{};
};
std::string addAccount(Database& database, const NewAccount& account, Time now);

// A family with this parent as its primary parent and only member.
std::string addFamily(Database& database, const std::string& parentId, Time now);

struct NewMember {
  std::string familyId;
  std::string parentId;
  std::string displayName;
  std::optional<std::string> invitedBy{};
  bool primary = false;
  bool canManageDevices = true;
  bool canManagePolicies = true;
};
std::string addMember(Database& database, const NewMember& member, Time now);

struct NewChild {
  std::string familyId;
  std::string name;
  std::optional<std::string> photoUrl{};
  std::optional<std::int64_t> birthYear{};
};
// Comes last in the family's list, with a policy that blocks nothing.
std::string addChild(Database& database, const NewChild& child, Time now);

struct NewDevice {
  std::string familyId;
  std::string parentId;
  std::optional<std::string> childId{};
  std::string name;
  std::string type;
  std::string id{};  // empty: a new one
  std::optional<std::string> ip{};
};
// With a policy that blocks nothing and an endpoint of its own.
std::string addDevice(Database& database, const NewDevice& device, Time now);

}  // namespace quillmar::sandbox
