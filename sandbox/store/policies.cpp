#include "sandbox/store/policies.h"

#include <array>

#include "sandbox/records.h"
#include "sandbox/secrets.h"

namespace quillmar::sandbox {
namespace {

struct Kindred {
  std::string column;  // of the policies table
  std::string table;   // of the owners
  Fields fields;
};

const Kindred& kindred(Owner owner) {
  static const std::array kinds{Kindred{"device_id", "devices", devicePolicyFields},
                                Kindred{"child_id", "children", childPolicyFields},
                                Kindred{"home_network_id", "home_networks", homeNetworkPolicyFields}};
  return kinds[std::size_t(owner)];
}

std::string_view nameOf(List list) { return list == List::blocked ? "blocked" : "allowed"; }

std::string policyId(Database& database, Owner owner, std::string_view ownerId) {
  return database
      .first(
          "SELECT id FROM policies WHERE " + kindred(owner).column + " = ?",
          [](Row row) { return row.text(0); }, ownerId)
      .value_or("");
}

void touch(Database& database, std::string_view policy, Time now) {
  database.run("UPDATE policies SET updated_at = ? WHERE id = ?", now, policy);
}

Json domains(Database& database, std::string_view policy, List list) {
  auto entries = Json::array();
  database.each(
      "SELECT domain FROM policy_domains WHERE policy_id = ? AND list = ? ORDER BY rowid",
      [&](Row row) { entries.push_back(row.text(0)); }, policy, nameOf(list));
  return entries;
}

}  // namespace

void addPolicy(Database& database, Owner owner, std::string_view ownerId, Time now) {
  database.run("INSERT INTO policies(id, " + kindred(owner).column +
                   ", is_blocked, block_mode, created_at, updated_at) VALUES (?, ?, 0, 'blacklist', ?, ?)",
               newId(), ownerId, now, now);
}

std::optional<Json> policyOf(Database& database, Owner owner, std::string_view ownerId) {
  const auto& [column, table, fields] = kindred(owner);
  auto policy = database.first(
      "SELECT " + columns(fields) + " FROM policies JOIN " + table + " ON " + table + ".id = policies." +
          column + " WHERE policies." + column + " = ?",
      [&fields = fields](Row row) { return record(row, fields); }, ownerId);
  if (!policy) {
    return std::nullopt;
  }
  const auto id = policy->at("id").get<std::string>();
  (*policy)["blocked_domains"] = domains(database, id, List::blocked);
  (*policy)["allowed_domains"] = domains(database, id, List::allowed);
  return policy;
}

void setPolicy(Database& database, Owner owner, std::string_view ownerId, bool isBlocked,
               std::string_view blockMode, Time now) {
  database.run("UPDATE policies SET is_blocked = ?, block_mode = ?, updated_at = ? WHERE " +
                   kindred(owner).column + " = ?",
               isBlocked, blockMode, now, ownerId);
}

void addDomain(Database& database, Owner owner, std::string_view ownerId, List list, std::string_view domain,
               Time now) {
  const auto policy = policyId(database, owner, ownerId);
  database.run("INSERT OR IGNORE INTO policy_domains(policy_id, list, domain) VALUES (?, ?, ?)", policy,
               nameOf(list), domain);
  touch(database, policy, now);
}

bool removeDomain(Database& database, Owner owner, std::string_view ownerId, List list,
                  std::string_view domain, Time now) {
  const auto policy = policyId(database, owner, ownerId);
  const int removed =
      database.run("DELETE FROM policy_domains WHERE policy_id = ? AND list = ? AND domain = ?", policy,
                   nameOf(list), domain);
  if (removed > 0) {
    touch(database, policy, now);
  }
  return removed > 0;
}

}  // namespace quillmar::sandbox
