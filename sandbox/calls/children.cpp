#include "sandbox/calls/calls.h"
#include "sandbox/calls/common.h"
#include "sandbox/input.h"
#include "sandbox/records.h"
#include "sandbox/store/families.h"

namespace quillmar::sandbox::calls {
namespace {

constexpr int earliestBirthYear = 1900;

Answer noSuchChild() { return notFound("child with this id"); }

void requireBirthYear(Input& input, const Call& call, const std::optional<std::int64_t>& year) {
  const std::chrono::year_month_day today{std::chrono::floor<std::chrono::days>(call.now)};
  const int thisYear{today.year()};
  input.require(!year || (*year >= earliestBirthYear && *year <= thisYear),
                "The birth year has to lie between 1900 and this year.");
}

void complete(Call& call, Json& child) {
  const auto id = child.at("id").get<std::string>();
  child["devices"] = devices(call, "child_id = ?3", id);
  child["policy"] = orNull(policyOf(call.database, Owner::child, id));
}

std::optional<Json> findChild(Call& call, std::string_view id) {
  return call.database.first(
      "SELECT " + columns(childFields) + " FROM children WHERE id = ? AND family_id = ?",
      [](Row row) { return record(row, childFields); }, id, call.caller.familyId);
}

Answer answerWithChild(Call& call, int status, std::string_view id) {
  auto child = findChild(call, id);
  if (!child) {
    return noSuchChild();
  }
  complete(call, *child);
  return json(status, *child);
}

}  // namespace

Answer listChildren(Call& call) {
  auto children = records(call.database, childFields,
                          "FROM children WHERE family_id = ? ORDER BY display_order, created_at, rowid",
                          call.caller.familyId);
  for (auto& child : children) {
    complete(call, child);
  }
  return json(200, {{"children", children},
                    {"unassigned_devices",
                     devices(call, "child_id IS NULL AND family_id = ?3", call.caller.familyId)}});
}

Answer createChild(Call& call) {
  Input input{call.body};
  const auto name = input.text("name");
  const auto photo = input.optionalText("photo_url");
  const auto birthYear = input.optionalInteger("birth_year");
  input.require(isFilled(name), "Please give the child a name.");
  requireBirthYear(input, call, birthYear);
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const auto id = addChild(
      call.database, {.familyId = ownFamily(call), .name = name, .photoUrl = photo, .birthYear = birthYear},
      call.now);
  return answerWithChild(call, 201, id);
}

Answer showChild(Call& call) { return answerWithChild(call, 200, call.path[0]); }

Answer updateChild(Call& call) {
  Input input{call.body};
  const auto name = input.optionalText("name");
  const auto photo = input.optionalText("photo_url");
  const auto birthYear = input.optionalInteger("birth_year");
  const auto order = input.optionalInteger("display_order");
  const auto active = input.optionalFlag("is_active");
  input.require(!name || isFilled(*name), "Please give the child a name.");
  requireBirthYear(input, call, birthYear);
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const auto& id = call.path[0];
  if (!childExists(call, id)) {
    return noSuchChild();
  }
  call.database.run(
      "UPDATE children SET name = coalesce(?, name), photo_url = coalesce(?, photo_url), "
      "birth_year = coalesce(?, birth_year), display_order = coalesce(?, display_order), "
      "is_active = coalesce(?, is_active), updated_at = ? WHERE id = ?",
      name, photo, birthYear, order, active, call.now, id);
  return json(200, orNull(findChild(call, id)));
}

// The child's devices stay and are unlinked.
Answer deleteChild(Call& call) {
  const auto& id = call.path[0];
  if (!childExists(call, id)) {
    return noSuchChild();
  }
  call.database.run("DELETE FROM children WHERE id = ?", id);
  return nothing();
}

Answer linkDevice(Call& call) {
  Input input{call.body};
  const auto deviceId = input.text("device_id");
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const auto& childId = call.path[0];
  if (!childExists(call, childId)) {
    return noSuchChild();
  }
  const auto device = findDevice(call, deviceId);
  if (!device) {
    return notFound("device with this id");
  }
  const auto& linked = device->at("child_id");
  if (!linked.is_null() && linked != childId) {
    return refusal(409, "This device belongs to another child. Unlink it there first.");
  }
  call.database.run("UPDATE devices SET child_id = ?, updated_at = ? WHERE id = ?", childId, call.now,
                    deviceId);
  return nothing();
}

Answer unlinkDevice(Call& call) {
  const auto& childId = call.path[0];
  if (!childExists(call, childId)) {
    return noSuchChild();
  }
  const int unlinked =
      call.database.run("UPDATE devices SET child_id = NULL, updated_at = ? WHERE id = ? AND child_id = ?",
                        call.now, call.path[1], childId);
  return unlinked > 0 ? nothing() : notFound("device of this child with this id");
}

}  // namespace quillmar::sandbox::calls
