#include <sodium.h>

#include <memory>

#include "sandbox/calls/calls.h"
#include "sandbox/calls/common.h"
#include "sandbox/dns/message.h"
#include "sandbox/dns/rules.h"

namespace quillmar::sandbox::calls {
namespace {

constexpr std::string_view mediaType = "application/dns-message";

std::optional<std::string> fromBase64Url(std::string_view text) {
  std::string bytes(text.size(), '\0');
  std::size_t size = 0;
  const int code =
      sodium_base642bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), text.data(),
                        text.size(), nullptr, &size, nullptr, sodium_base64_VARIANT_URLSAFE_NO_PADDING);
  if (code != 0) {
    return std::nullopt;
  }
  bytes.resize(size);
  return bytes;
}

Answer message(std::string wire) {
  return {.contentType = std::string{mediaType},
          .body = std::move(wire),
          .headers = {{"Cache-Control", "max-age=" + std::to_string(secondsToLive)}}};
}

Answer resolve(Call& call, std::string_view wire) {
  if (!call.request.secure) {
    return refusal(404, "DNS is answered over HTTPS only.");
  }
  const auto deviceId = call.database.first(
      "SELECT id FROM devices WHERE doh_token = ?", [](Row row) { return row.text(0); }, call.path[0]);
  if (!deviceId) {
    return notFound("device with this endpoint");
  }
  auto query = DnsQuery::parse(wire);
  if (!query) {
    return refusal(400, "This is not a DNS query.");
  }
  if (!query->isOrdinary()) {
    return message(query->notImplemented());
  }

  const bool blocked = isBlockedFor(call.database, *deviceId, query->name());
  logQuery(call.database, *deviceId, query->name(), query->type(), blocked, call.now);
  if (blocked) {
    return message(query->noSuchName());
  }
  if (!call.world.upstream) {
    return message(query->exampleAnswer());
  }
  const auto shared = std::make_shared<DnsQuery>(std::move(*query));
  call.afterwards = [shared, server = *call.world.upstream] { return message(shared->answerOf(server)); };
  return {};
}

}  // namespace

Answer dnsByGet(Call& call) {
  const auto parameter = queryParameter(call.query, "dns");
  const auto wire = parameter ? fromBase64Url(*parameter) : std::nullopt;
  if (!wire) {
    return refusal(400, "The parameter “dns” has to hold a DNS query.");
  }
  return resolve(call, *wire);
}

Answer dnsByPost(Call& call) {
  if (lowerCase(std::string{header(call.request.headers, "content-type")}) != mediaType) {
    return refusal(415, "A DNS query has to be of the type application/dns-message.");
  }
  return resolve(call, call.request.body);
}

}  // namespace quillmar::sandbox::calls
