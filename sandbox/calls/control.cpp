#include <array>

#include "sandbox/calls/calls.h"
#include "sandbox/calls/common.h"
#include "sandbox/input.h"
#include "sandbox/misbehaviour_fields.h"
#include "sandbox/secrets.h"
#include "sandbox/seed.h"
#include "sandbox/store/families.h"

namespace quillmar::sandbox::calls {
namespace {

constexpr std::int64_t longestAdvance = 10LL * 365 * 24 * 60 * 60;  // seconds

// Acts as the primary parent of the oldest family. Creates one if there is none.
void actAsAnyParent(Call& call) {
  auto parent = call.database.first(
      "SELECT primary_parent_id, id FROM families ORDER BY created_at, rowid LIMIT 1", [](Row row) {
        return Caller{row.text(0), row.text(1), true};
      });
  if (!parent) {
    parent =
        Caller{.parentId = addAccount(
                   call.database, {.email = "parent@example.com", .password = newToken(), .name = "Sam Demo"},
                   call.now)};
  }
  call.caller = *parent;
}

std::string anyChild(Call& call) {
  const auto familyId = ownFamily(call);
  const auto found = call.database.first(
      "SELECT id FROM children WHERE family_id = ? ORDER BY display_order, rowid LIMIT 1",
      [](Row row) { return row.text(0); }, familyId);
  return found ? *found : addChild(call.database, {.familyId = familyId, .name = "Robin"}, call.now);
}

}  // namespace

// Completes a pending enrollment as a parent would, to test a child's device without a parent's.
Answer approve(Call& call) {
  actAsAnyParent(call);
  if (!call.body.contains("device_name")) {
    call.body["device_name"] = "";
  }
  if (!call.body.contains("child_id")) {
    call.body["child_id"] = anyChild(call);
  }
  return completeEnrollment(call);
}

Answer misbehave(Call& call) {
  auto misbehaviour = call.world.faultInjector.present();
  Input input{call.body};
  readMisbehaviour(input, call.body, misbehaviour);
  if (auto refused = input.refusal()) {
    return *refused;
  }
  call.world.faultInjector.set(misbehaviour);
  call.world.hold(misbehaviour.hold);
  return json(200, describe(misbehaviour));
}

Answer showMisbehaviour(Call& call) { return json(200, describe(call.world.faultInjector.present())); }

// The tokens' grace period begins now: a refresh still accepts them.
Answer expireTokens(Call& call) {
  const int expired = call.database.run("UPDATE tokens SET expires_at = ?1 WHERE expires_at > ?1", call.now);
  return json(200, {{"expired", expired}});
}

Answer moveEndpoint(Call& call) {
  Input input{call.body};
  const auto deviceId = input.text("device_id");
  const auto endpoint = input.optionalText("doh_endpoint");
  if (auto refused = input.refusal()) {
    return *refused;
  }
  const int moved =
      call.database.run("UPDATE devices SET doh_token = ?, doh_override = ?, updated_at = ? WHERE id = ?",
                        newToken(), endpoint, call.now, deviceId);
  if (moved == 0) {
    return notFound("device with this id");
  }
  return json(200, {{"doh_endpoint", dohEndpoint(call, deviceId)}});
}

Answer advanceClock(Call& call) {
  Input input{call.body};
  const auto seconds = input.optionalInteger("seconds").value_or(0);
  input.require(seconds >= 0 && seconds <= longestAdvance - call.world.ahead / 1000,
                "The clock goes forward only, and ten years in all.");
  if (auto refused = input.refusal()) {
    return *refused;
  }
  call.world.ahead += seconds * 1000;
  return json(200, {{"server_time", iso8601(call.world.now())}});
}

Answer showRequests(Call& call) {
  auto requests = Json::array();
  for (const auto& request : call.world.recorder.all()) {
    auto headers = Json::array();
    for (const auto& [name, value] : request.headers) {
      headers.push_back({name, value});
    }
    requests.push_back({{"method", request.method},
                        {"path", request.target},
                        {"secure", request.secure},
                        {"headers", headers},
                        {"body", request.body}});
  }
  return json(200, {{"requests", requests}});
}

Answer clearRequests(Call& call) {
  call.world.recorder.clear();
  return nothing();
}

Answer reset(Call& call) {
  static constexpr std::array tables{"accounts", "families", "devices", "enrollments", "dns_logs"};
  for (const auto* table : tables) {
    call.database.run(std::string{"DELETE FROM "} + table);
  }
  plant(call.world.seed, call.database, call.now);
  call.world.faultInjector.set({});
  call.world.hold(false);
  call.world.recorder.clear();
  call.world.guesses.clear();
  return nothing();
}

}  // namespace quillmar::sandbox::calls
