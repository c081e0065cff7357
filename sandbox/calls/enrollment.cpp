#include <arpa/inet.h>

#include <algorithm>

#include "sandbox/calls/calls.h"
#include "sandbox/calls/common.h"
#include "sandbox/calls/setup_steps.h"
#include "sandbox/input.h"
#include "sandbox/secrets.h"
#include "sandbox/store/families.h"

namespace quillmar::sandbox::calls {
namespace {

struct Pending {
  std::string deviceId;
  std::string deviceName;
  std::string deviceType;
  bool completed;
  Time expiresAt;
};

template <class Column>
std::optional<Pending> findPending(Call& call, const Column& column, std::string_view value) {
  return call.database.first(
      "SELECT device_id, device_name, device_type, completed, expires_at FROM enrollments WHERE " +
          std::string{column} + " = ?",
      [](Row row) {
        return Pending{row.text(0), row.text(1), row.text(2), row.boolean(3), row.time(4)};
      },
      value);
}

Json endpointUnlessWithheld(Call& call, const std::string& endpoint) {
  return call.world.faultInjector.present().withoutEndpoint ? Json{} : Json(endpoint);
}

bool isAddress(const std::string& text) {
  unsigned char parsed[sizeof(in6_addr)];
  return inet_pton(AF_INET, text.c_str(), parsed) == 1 || inet_pton(AF_INET6, text.c_str(), parsed) == 1;
}

}  // namespace

Answer initEnrollment(Call& call) {
  Input input{call.body};
  const auto ownId = input.text("device_id");
  const auto name = input.text("device_name");
  const auto type = input.text("device_type");
  input.require(!ownId.empty(), "The device has to name itself by an id.");
  input.require(isFilled(type), "The device has to say of what type it is.");
  if (auto refused = input.refusal()) {
    return *refused;
  }

  // The id that the device sent is not used: it could be another family's device.
  const auto deviceId = newId();
  const auto code = unusedCode(call, 8, "SELECT 1 FROM enrollments WHERE enrollment_code = ?");
  const auto expiresAt = call.now + enrollmentLifetime;
  call.database.run(
      "INSERT INTO enrollments(device_id, enrollment_code, device_name, device_type, completed, created_at, "
      "expires_at) VALUES (?, ?, ?, ?, 0, ?, ?)",
      deviceId, code, name, type, call.now, expiresAt);
  return json(200, {{"enrollment_code", code}, {"device_id", deviceId}, {"expires_at", iso8601(expiresAt)}});
}

Answer enrollmentStatus(Call& call) {
  const auto& deviceId = call.path[0];
  const auto pending = findPending(call, "device_id", deviceId);
  if (!pending) {
    return notFound("enrollment of this device");
  }

  const auto endpoint = dohEndpoint(call, deviceId);
  const bool completed = pending->completed && !endpoint.empty();
  const bool expired = !completed && (pending->completed || pending->expiresAt <= call.now);
  Json body{{"status", completed ? "completed"
                       : expired ? "expired"
                                 : "pending"},
            {"device_id", deviceId},
            {"doh_endpoint", nullptr},
            {"doh_base_url", nullptr},
            {"api_base_url", nullptr}};
  if (completed) {
    body["doh_endpoint"] = endpointUnlessWithheld(call, endpoint);
    body["doh_base_url"] = endpointUnlessWithheld(call, call.world.addresses.dohBase());
    body["api_base_url"] = call.world.addresses.rootOf(call.request);
  }
  return json(200, body);
}

Answer completeEnrollment(Call& call) {
  Input input{call.body};
  const auto code = upperCase(input.text("enrollment_code"));
  const auto name = input.text("device_name");
  const auto childId = input.optionalText("child_id");
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const auto pending = findPending(call, "enrollment_code", code);
  if (!pending) {
    return notFound("device waiting with this enrollment code");
  }
  if (pending->completed) {
    return refusal(409, "This enrollment code was used already. Start again on the child's device.");
  }
  if (pending->expiresAt <= call.now) {
    return refusal(422, "This enrollment code has expired. Start again on the child's device.");
  }
  if (childId && !childExists(call, *childId)) {
    return notFound("child with this id");
  }

  addDevice(call.database,
            {.familyId = ownFamily(call),
             .parentId = call.caller.parentId,
             .childId = childId,
             .name = isFilled(name) ? name : pending->deviceName,
             .type = pending->deviceType,
             .id = pending->deviceId},
            call.now);
  call.database.run("UPDATE enrollments SET completed = 1 WHERE device_id = ?", pending->deviceId);
  const auto device = findDevice(call, pending->deviceId);
  if (!device) {
    return refusal(500, "The device could not be saved. Please try again.");
  }
  return json(201, {{"message", "The device was added to your family."},
                    {"device", *device},
                    {"doh_endpoint", device->at("doh_endpoint")}});
}

Answer manualEnrollment(Call& call) {
  Input input{call.body};
  const auto name = input.text("device_name");
  const auto type = input.text("device_type");
  const auto ip = input.optionalText("device_ip");
  const auto childId = input.optionalText("child_id");
  const auto* const guide = setupGuide(type);
  input.require(isFilled(name), "Please give the device a name.");
  input.require(guide != nullptr, "This type of device can't be set up by hand.");
  input.require(!ip || isAddress(*ip), "This is not an IP address. It should look like 192.168.1.50.");
  if (auto refused = input.refusal()) {
    return *refused;
  }
  if (childId && !childExists(call, *childId)) {
    return notFound("child with this id");
  }

  const auto id = addDevice(call.database,
                            {.familyId = ownFamily(call),
                             .parentId = call.caller.parentId,
                             .childId = childId,
                             .name = name,
                             .type = type,
                             .ip = ip},
                            call.now);
  const auto device = findDevice(call, id);
  if (!device) {
    return refusal(500, "The device could not be saved. Please try again.");
  }
  return json(
      201, {{"message", "The device was added to your family."},
            {"device", *device},
            {"dns_server", dnsServer},
            {"setup_instructions",
             {{"platform", guide->platform}, {"dns_server_ip", dnsServer}, {"steps", guide->steps}}},
            {"note", ip ? "The device is recognised by its address as soon as it uses this DNS server."
                        : "The device is recognised when it uses this DNS server for the first time. Set up "
                          "your home network as well, so that its requests can be told apart."}});
}

Answer checkin(Call& call) {
  Input input{call.body};
  const auto deviceId = input.text("device_id");
  input.text("device_type");
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const int found = call.database.run("UPDATE devices SET last_seen_at = ? WHERE id = ?", call.now, deviceId);
  if (found == 0) {
    return refusal(404, "This device is not enrolled any more. Ask your parent to add it again.");
  }
  return json(200, {{"status", call.world.faultInjector.present().checkinStatus},
                    {"doh_endpoint", endpointUnlessWithheld(call, dohEndpoint(call, deviceId))},
                    {"doh_base_url", endpointUnlessWithheld(call, call.world.addresses.dohBase())},
                    {"server_time", iso8601(call.now)}});
}

}  // namespace quillmar::sandbox::calls
