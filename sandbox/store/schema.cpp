#include "sandbox/store/schema.h"

#include <array>
#include <string>

#include "sandbox/store/database.h"

namespace quillmar::sandbox {
namespace {

constexpr int version = 1;

// Times are milliseconds since 1970. Dependent rows are deleted with their owner.
constexpr std::array tables{
    R"(CREATE TABLE accounts(
         id TEXT PRIMARY KEY, email TEXT NOT NULL UNIQUE COLLATE NOCASE, password_hash TEXT NOT NULL,
         phone TEXT, name TEXT NOT NULL, region TEXT, created_at INTEGER NOT NULL))",
    R"(CREATE TABLE tokens(
         hash TEXT PRIMARY KEY, parent_id TEXT NOT NULL REFERENCES accounts ON DELETE CASCADE,
         expires_at INTEGER NOT NULL))",
    "CREATE INDEX tokens_of_parent ON tokens(parent_id)",
    R"(CREATE TABLE families(
         id TEXT PRIMARY KEY, name TEXT NOT NULL,
         primary_parent_id TEXT NOT NULL UNIQUE REFERENCES accounts ON DELETE CASCADE,
         created_at INTEGER NOT NULL, updated_at INTEGER NOT NULL))",
    R"(CREATE TABLE members(
         id TEXT PRIMARY KEY, family_id TEXT NOT NULL REFERENCES families ON DELETE CASCADE,
         parent_id TEXT NOT NULL UNIQUE REFERENCES accounts ON DELETE CASCADE,
         role TEXT NOT NULL, display_name TEXT NOT NULL,
         can_manage_devices INTEGER NOT NULL, can_manage_policies INTEGER NOT NULL, is_active INTEGER NOT NULL,
         invited_by TEXT, joined_at INTEGER, created_at INTEGER NOT NULL))",
    "CREATE INDEX members_of_family ON members(family_id)",
    R"(CREATE TABLE invitations(
         id TEXT PRIMARY KEY, family_id TEXT NOT NULL REFERENCES families ON DELETE CASCADE,
         invite_code TEXT NOT NULL UNIQUE, invited_by TEXT NOT NULL, invitee_name TEXT, status TEXT NOT NULL,
         created_at INTEGER NOT NULL, expires_at INTEGER NOT NULL))",
    "CREATE INDEX invitations_of_family ON invitations(family_id)",
    R"(CREATE TABLE children(
         id TEXT PRIMARY KEY, family_id TEXT NOT NULL REFERENCES families ON DELETE CASCADE,
         name TEXT NOT NULL, photo_url TEXT, birth_year INTEGER, display_order INTEGER NOT NULL,
         is_active INTEGER NOT NULL, created_at INTEGER NOT NULL, updated_at INTEGER NOT NULL))",
    "CREATE INDEX children_of_family ON children(family_id)",
    R"(CREATE TABLE devices(
         id TEXT PRIMARY KEY, family_id TEXT NOT NULL REFERENCES families ON DELETE CASCADE,
         parent_id TEXT NOT NULL, child_id TEXT REFERENCES children ON DELETE SET NULL,
         device_name TEXT NOT NULL, device_type TEXT NOT NULL, friendly_name TEXT, device_ip TEXT,
         is_active INTEGER NOT NULL, doh_token TEXT NOT NULL UNIQUE, doh_override TEXT, last_seen_at INTEGER,
         created_at INTEGER NOT NULL, updated_at INTEGER NOT NULL))",
    "CREATE INDEX devices_of_family ON devices(family_id)",
    "CREATE INDEX devices_of_child ON devices(child_id)",
    R"(CREATE TABLE enrollments(
         device_id TEXT PRIMARY KEY, enrollment_code TEXT NOT NULL UNIQUE, device_name TEXT NOT NULL,
         device_type TEXT NOT NULL, completed INTEGER NOT NULL, created_at INTEGER NOT NULL,
         expires_at INTEGER NOT NULL))",
    R"(CREATE TABLE home_networks(
         id TEXT PRIMARY KEY, family_id TEXT NOT NULL UNIQUE REFERENCES families ON DELETE CASCADE,
         parent_id TEXT NOT NULL, name TEXT NOT NULL, public_ip TEXT, is_active INTEGER NOT NULL,
         created_at INTEGER NOT NULL, updated_at INTEGER NOT NULL))",
    // Exactly one of the three owners is set.
    R"(CREATE TABLE policies(
         id TEXT PRIMARY KEY, device_id TEXT UNIQUE REFERENCES devices ON DELETE CASCADE,
         child_id TEXT UNIQUE REFERENCES children ON DELETE CASCADE,
         home_network_id TEXT UNIQUE REFERENCES home_networks ON DELETE CASCADE,
         is_blocked INTEGER NOT NULL, block_mode TEXT NOT NULL,
         created_at INTEGER NOT NULL, updated_at INTEGER NOT NULL,
         CHECK ((device_id IS NOT NULL) + (child_id IS NOT NULL) + (home_network_id IS NOT NULL) = 1)))",
    R"(CREATE TABLE policy_domains(
         policy_id TEXT NOT NULL REFERENCES policies ON DELETE CASCADE, list TEXT NOT NULL, domain TEXT NOT NULL,
         PRIMARY KEY (policy_id, list, domain)))",
    R"(CREATE TABLE dns_logs(
         id INTEGER PRIMARY KEY AUTOINCREMENT, device_id TEXT NOT NULL REFERENCES devices ON DELETE CASCADE,
         parent_id TEXT NOT NULL, domain TEXT NOT NULL, query_type TEXT NOT NULL, was_blocked INTEGER NOT NULL,
         timestamp INTEGER NOT NULL))",
    "CREATE INDEX dns_logs_of_device ON dns_logs(device_id, timestamp)",
};

}  // namespace

bool createTables(Database& database) {
  const auto found =
      database.first("PRAGMA user_version", [](Row row) { return row.integer(0); }).value_or(-1);
  if (found != 0) {
    return found == version;
  }
  if (database.any("SELECT 1 FROM sqlite_master")) {
    return false;
  }
  for (const auto* table : tables) {
    database.run(table);
  }
  database.run("PRAGMA user_version=" + std::to_string(version));
  return true;
}

}  // namespace quillmar::sandbox
