#include "sandbox/calls/common.h"

#include "sandbox/records.h"
#include "sandbox/store/families.h"

namespace quillmar::sandbox::calls {
namespace {

// A device of whatever family, or of this one only; ?3 and ?4 are the arguments of the condition.
template <class... Arguments>
Json select(Call& call, std::string_view condition, const Arguments&... arguments) {
  auto found = Json::array();
  call.database.each(
      "SELECT " + columns(deviceFields) + " FROM devices WHERE " + std::string{condition} +
          " ORDER BY created_at, rowid",
      [&](Row row) { found.push_back(record(row, deviceFields)); }, call.world.addresses.dohBase(),
      call.now - onlineFor, arguments...);
  return found;
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
  if (found.empty()) return std::nullopt;
  return std::move(found[0]);
}

bool childExists(Call& call, std::string_view id) {
  return call.database.any("SELECT 1 FROM children WHERE id = ? AND family_id = ?", id, call.caller.familyId);
}

std::string dohEndpoint(Call& call, std::string_view deviceId) {
  const auto found = select(call, "id = ?3", deviceId);
  return found.empty() ? std::string{} : found[0].at("doh_endpoint").get<std::string>();
}

bool isFilled(std::string_view text) { return text.find_first_not_of(" \t\r\n") != std::string_view::npos; }

}  // namespace quillmar::sandbox::calls
