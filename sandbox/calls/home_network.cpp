#include "sandbox/calls/calls.h"
#include "sandbox/calls/common.h"
#include "sandbox/input.h"
#include "sandbox/records.h"
#include "sandbox/secrets.h"

namespace quillmar::sandbox::calls {
namespace {

std::string callersAddress(Call& call) {
  return call.world.faultInjector.present().publicAddress.value_or(std::string{publicAddress});
}

std::optional<Json> findHomeNetwork(Call& call) {
  return call.database.first(
      "SELECT " + columns(homeNetworkFields) + " FROM home_networks WHERE family_id = ?",
      [](Row row) { return record(row, homeNetworkFields); }, call.caller.familyId);
}

Json policyOfHome(Call& call, const std::optional<Json>& network) {
  if (!network) {
    return nullptr;
  }
  return orNull(policyOf(call.database, Owner::homeNetwork, network->at("id").get<std::string>()));
}

void requireConfirmation(Input& input) {
  input.require(input.flag("confirm"), "Please confirm that you are connected to your home Wi-Fi.");
}

}  // namespace

Answer showHomeNetwork(Call& call) {
  const auto address = callersAddress(call);
  const auto network = findHomeNetwork(call);
  return json(200, {{"home_network", orNull(network)},
                    {"policy", policyOfHome(call, network)},
                    {"current_ip", address},
                    {"ip_matches", network && network->at("public_ip") == address}});
}

Answer createHomeNetwork(Call& call) {
  Input input{call.body};
  const auto name = input.optionalText("name");
  requireConfirmation(input);
  if (auto refused = input.refusal()) {
    return *refused;
  }
  if (findHomeNetwork(call)) {
    return refusal(409, "Your home network is set up already. Update its address instead.");
  }

  const auto id = newId();
  call.database.run(
      "INSERT INTO home_networks(id, family_id, parent_id, name, public_ip, is_active, created_at, "
      "updated_at) "
      "VALUES (?, ?, ?, ?, ?, 1, ?, ?)",
      id, ownFamily(call), call.caller.parentId, name && isFilled(*name) ? *name : "Home Network",
      callersAddress(call), call.now, call.now);
  addPolicy(call.database, Owner::homeNetwork, id, call.now);
  const auto network = findHomeNetwork(call);
  return json(201, {{"message", "Your home network was set up."},
                    {"home_network", orNull(network)},
                    {"policy", policyOfHome(call, network)}});
}

Answer updateHomeNetworkAddress(Call& call) {
  Input input{call.body};
  requireConfirmation(input);
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const auto address = callersAddress(call);
  const int updated =
      call.database.run("UPDATE home_networks SET public_ip = ?, updated_at = ? WHERE family_id = ?", address,
                        call.now, call.caller.familyId);
  if (updated == 0) {
    return notFound("home network yet");
  }
  return json(200, {{"message", "The address of your home network was updated."},
                    {"public_ip", address},
                    {"updated_at", iso8601(call.now)}});
}

}  // namespace quillmar::sandbox::calls
