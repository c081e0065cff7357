#include "sandbox/store/families.h"

#include "sandbox/secrets.h"
#include "sandbox/store/policies.h"

namespace quillmar::sandbox {
namespace {

std::string familyNameFor(const std::string& parentName) {
  const auto space = parentName.find_last_of(' ');
  const auto last = space == std::string::npos ? parentName : parentName.substr(space + 1);
  return last.empty() ? "My Family" : last + " Family";
}

}  // namespace

std::string addAccount(Database& database, const NewAccount& account, Time now) {
  auto id = newId();
  database.run(
      "INSERT INTO accounts(id, email, password_hash, phone, name, region, created_at) VALUES (?, ?, ?, ?, "
      "?, ?, ?)",
      id, account.email, hashPassword(account.password), account.phone, account.name, account.region, now);
  return id;
}

std::string addFamily(Database& database, const std::string& parentId, Time now) {
  auto id = newId();
  const auto parentName =
      database
          .first(
              "SELECT name FROM accounts WHERE id = ?", [](Row row) { return row.text(0); }, parentId)
          .value_or("");
  database.run(
      "INSERT INTO families(id, name, primary_parent_id, created_at, updated_at) VALUES (?, ?, ?, ?, ?)", id,
      familyNameFor(parentName), parentId, now, now);
  addMember(database, {.familyId = id, .parentId = parentId, .displayName = parentName, .primary = true},
            now);
  return id;
}

std::string addMember(Database& database, const NewMember& member, Time now) {
  auto id = newId();
  database.run(
      "INSERT INTO members(id, family_id, parent_id, role, display_name, can_manage_devices, "
      "can_manage_policies, "
      "is_active, invited_by, joined_at, created_at) VALUES (?, ?, ?, ?, ?, ?, ?, 1, ?, ?, ?)",
      id, member.familyId, member.parentId, member.primary ? "primary" : "member", member.displayName,
      member.canManageDevices, member.canManagePolicies, member.invitedBy, now, now);
  return id;
}

std::string addChild(Database& database, const NewChild& child, Time now) {
  auto id = newId();
  database.run(
      "INSERT INTO children(id, family_id, name, photo_url, birth_year, display_order, is_active, "
      "created_at, "
      "updated_at) VALUES (?1, ?2, ?3, ?4, ?5, "
      "(SELECT coalesce(max(display_order) + 1, 0) FROM children WHERE family_id = ?2), 1, ?6, ?6)",
      id, child.familyId, child.name, child.photoUrl, child.birthYear, now);
  addPolicy(database, Owner::child, id, now);
  return id;
}

std::string addDevice(Database& database, const NewDevice& device, Time now) {
  auto id = device.id.empty() ? newId() : device.id;
  database.run(
      "INSERT INTO devices(id, family_id, parent_id, child_id, device_name, device_type, device_ip, "
      "is_active, "
      "doh_token, created_at, updated_at) VALUES (?, ?, ?, ?, ?, ?, ?, 1, ?, ?, ?)",
      id, device.familyId, device.parentId, device.childId, device.name, device.type, device.ip, newToken(),
      now, now);
  addPolicy(database, Owner::device, id, now);
  return id;
}

}  // namespace quillmar::sandbox
