#include "sandbox/calls/common.h"

#include <algorithm>

#include "sandbox/records.h"
#include "sandbox/secrets.h"
#include "sandbox/store/families.h"

namespace quillmar::sandbox::calls {
namespace {

constexpr std::size_t shortestPassword = 6;

// In code points.
std::size_t lengthOf(std::string_view text) {
  return std::size_t(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

// A device of any family, or only of the caller's; `condition` refers to `arguments` from ?3 on.
template <class... Arguments>
Json select(Call& call, std::string_view condition, const Arguments&... arguments) {
  return records(call.database, deviceFields,
                 "FROM devices WHERE " + std::string{condition} + " ORDER BY created_at, rowid",
                 call.world.addresses.dohBase(), call.now - onlineFor, arguments...);
}

}  // namespace

std::string ownFamily(Call& call) {
  if (call.caller.familyId.empty()) {
    call.caller.familyId = addFamily(call.database, call.caller.parentId, call.now);
    call.caller.primary = true;
  }
  return call.caller.familyId;
}

Json devices(Call& call, std::string_view condition, std::string_view argument) {
  return select(call, condition, argument);
}

std::optional<Json> findDevice(Call& call, std::string_view id) {
  auto found = select(call, "id = ?3 AND family_id = ?4", id, call.caller.familyId);
  if (found.empty()) {
    return std::nullopt;
  }
  return std::move(found[0]);
}

bool childExists(Call& call, std::string_view id) {
  return call.database.any("SELECT 1 FROM children WHERE id = ? AND family_id = ?", id, call.caller.familyId);
}

std::string dohEndpoint(Call& call, std::string_view deviceId) {
  const auto found = select(call, "id = ?3", deviceId);
  return found.empty() ? std::string{} : found[0].at("doh_endpoint").get<std::string>();
}

void requireAccountFields(Input& input, std::string_view email, std::string_view password,
                          std::string_view name) {
  const auto at = email.find('@');
  const bool plausible = at != std::string_view::npos && at > 0 && at + 1 < email.size() &&
                         email.size() <= 254 && email.find_first_of(" \t\r\n") == std::string_view::npos;
  input.require(isFilled(name), "Please enter your name.");
  input.require(plausible, "This is not an e-mail address.");
  input.require(lengthOf(password) >= shortestPassword, "The password has to have at least 6 characters.");
}

bool emailIsTaken(Call& call, std::string_view email) {
  return call.database.any("SELECT 1 FROM accounts WHERE email = ?", email);
}

std::string unusedCode(Call& call, std::size_t length, std::string_view taken) {
  auto code = newCode(length);
  while (call.database.any(taken, code)) {
    code = newCode(length);
  }
  return code;
}

std::string issueToken(Call& call, std::string_view parentId) {
  call.database.run("DELETE FROM tokens WHERE parent_id = ? AND expires_at <= ?", parentId,
                    call.now - tokenGrace);
  auto token = newToken();
  call.database.run("INSERT INTO tokens(hash, parent_id, expires_at) VALUES (?, ?, ?)", fingerprint(token),
                    parentId, call.now + tokenLifetime);
  return token;
}

void handOver(Call& call, std::string_view parentId) {
  for (const std::string table : {"devices", "home_networks"}) {
    call.database.run("UPDATE " + table +
                          " SET parent_id = (SELECT primary_parent_id FROM families WHERE id = ?1) "
                          "WHERE family_id = ?1 AND parent_id = ?2",
                      call.caller.familyId, parentId);
  }
}

}  // namespace quillmar::sandbox::calls
