#include "sandbox/dns/rules.h"

#include <algorithm>
#include <array>
#include <span>

namespace quillmar::sandbox {
namespace {

// Devices don't work without these sites; they resolve even while the internet is blocked.
const std::vector<std::string> defaultSites{
    "quillmar.live",      "microsoft.com",       "microsoftonline.com",
    "windows.com",        "windowsupdate.com",   "windows.net",
    "live.com",           "office.com",          "office365.com",
    "office.net",         "msftconnecttest.com", "msftncsi.com",
    "azureedge.net",      "apple.com",           "icloud.com",
    "icloud-content.com", "mzstatic.com",        "cdn-apple.com",
    "aaplimg.com",        "apple-dns.net",       "google.com",
    "googleapis.com",     "gstatic.com",         "googleusercontent.com",
    "gvt1.com",           "android.com",
};

bool covers(std::string_view entry, std::string_view name) {
  if (!name.ends_with(entry)) {
    return false;
  }
  return name.size() == entry.size() || name[name.size() - entry.size() - 1] == '.';
}

// The length of the longest entry that covers the name, or 0.
std::size_t longestCover(const std::vector<std::string>& entries, std::string_view name) {
  std::size_t longest = 0;
  for (const auto& entry : entries) {
    if (entry.size() > longest && covers(entry, name)) {
      longest = entry.size();
    }
  }
  return longest;
}

Rules rulesOf(Database& database, std::string_view policyId, bool isBlocked) {
  Rules rules{.isBlocked = isBlocked};
  database.each(
      "SELECT list = 'blocked', domain FROM policy_domains WHERE policy_id = ?",
      [&](Row row) { (row.boolean(0) ? rules.blocked : rules.allowed).push_back(row.text(1)); }, policyId);
  return rules;
}

}  // namespace

bool blocks(const Rules& rules, std::string_view name) {
  const auto blocked = longestCover(rules.blocked, name);
  const auto allowed = longestCover(rules.allowed, name);
  if (blocked > 0 || allowed > 0) {
    return blocked >= allowed;
  }
  return rules.isBlocked && longestCover(defaultSites, name) == 0;
}

bool isBlockedFor(Database& database, std::string_view deviceId, std::string_view name) {
  struct Policy {
    std::string id;
    bool isBlocked;
  };
  std::vector<Policy> policies;
  database.each(
      "SELECT id, is_blocked FROM policies WHERE device_id = ?1 OR child_id = (SELECT child_id FROM devices "
      "WHERE id = ?1)",
      [&](Row row) {
        policies.push_back({row.text(0), row.boolean(1)});
      },
      deviceId);
  return std::ranges::any_of(policies, [&](const Policy& policy) {
    return blocks(rulesOf(database, policy.id, policy.isBlocked), name);
  });
}

void logQuery(Database& database, std::string_view deviceId, std::string_view name, std::string_view type,
              bool blocked, Time now) {
  database.run(
      "INSERT INTO dns_logs(device_id, parent_id, domain, query_type, was_blocked, timestamp) "
      "SELECT id, parent_id, ?, ?, ?, ? FROM devices WHERE id = ?",
      name, type, blocked, now, deviceId);
  database.run("UPDATE devices SET last_seen_at = max(coalesce(last_seen_at, 0), ?) WHERE id = ?", now,
               deviceId);
}

}  // namespace quillmar::sandbox
