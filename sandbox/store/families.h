#pragma once

#include <optional>
#include <string>

#include "sandbox/store/database.h"

namespace quillmar::sandbox {

// Each adds a row and returns its id.

struct NewAccount {
  std::string email;
  std::string password;
  std::string name;
  std::optional<std::string> phone{};
  std::optional<std::string> region{};
};
std::string addAccount(Database& database, const NewAccount& account, Time now);

// The parent becomes the primary and only member.
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
// Last in the family's order, with a policy that blocks nothing.
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
// With a policy that blocks nothing and a new endpoint.
std::string addDevice(Database& database, const NewDevice& device, Time now);

}  // namespace quillmar::sandbox
