#include <charconv>

#include "sandbox/calls/calls.h"
#include "sandbox/calls/common.h"
#include "sandbox/input.h"
#include "sandbox/records.h"

namespace quillmar::sandbox::calls {
namespace {

constexpr std::int64_t usualLogLimit = 100;
constexpr std::int64_t largestLogLimit = 1000;

Answer noSuchDevice() { return notFound("device with this id"); }

// A number of the query, `otherwise` if it is absent, nullopt if it is not a number of at least 0.
std::optional<std::int64_t> count(const Call& call, std::string_view name, std::int64_t otherwise) {
  const auto text = queryParameter(call.query, name);
  if (!text) {
    return otherwise;
  }
  std::int64_t number = -1;
  const auto read = std::from_chars(text->data(), text->data() + text->size(), number);
  const bool whole = read.ec == std::errc{} && read.ptr == text->data() + text->size();
  return whole && number >= 0 ? std::optional{number} : std::nullopt;
}

std::optional<Time> since(const Call& call) {
  const auto text = queryParameter(call.query, "since");
  return text ? parseIso8601(*text) : Time{};
}

}  // namespace

Answer updateDevice(Call& call) {
  Input input{call.body};
  const auto friendlyName = input.optionalText("friendly_name");
  const auto name = input.optionalText("device_name");
  input.require(!name || isFilled(*name), "Please give the device a name.");
  if (auto refused = input.refusal()) {
    return *refused;
  }

  const auto& id = call.path[0];
  if (!findDevice(call, id)) {
    return noSuchDevice();
  }
  call.database.run(
      "UPDATE devices SET friendly_name = coalesce(?, friendly_name), device_name = coalesce(?, "
      "device_name), "
      "updated_at = ? WHERE id = ?",
      friendlyName, name, call.now, id);
  return json(200, orNull(findDevice(call, id)));
}

Answer deleteDevice(Call& call) {
  const int deleted = call.database.run("DELETE FROM devices WHERE id = ? AND family_id = ?", call.path[0],
                                        call.caller.familyId);
  return deleted > 0 ? nothing() : noSuchDevice();
}

Answer deviceLogs(Call& call) {
  const auto limit = count(call, "limit", usualLogLimit);
  const auto offset = count(call, "offset", 0);
  const auto earliest = since(call);
  if (!limit) {
    return refusal(400, "“limit” has to be a whole number from 0 on.");
  }
  if (!offset) {
    return refusal(400, "“offset” has to be a whole number from 0 on.");
  }
  if (!earliest) {
    return refusal(400, "“since” has to be a time such as 2016-10-08T22:31:00Z.");
  }
  if (!findDevice(call, call.path[0])) {
    return noSuchDevice();
  }

  auto logs = records(call.database, logFields,
                      "FROM dns_logs WHERE device_id = ? AND timestamp >= ? ORDER BY timestamp DESC, id DESC "
                      "LIMIT ? OFFSET ?",
                      call.path[0], *earliest, std::min(*limit, largestLogLimit), *offset);
  return json(200, {{"logs", logs}});
}

}  // namespace quillmar::sandbox::calls
