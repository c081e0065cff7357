#include "client/records/dns_log.h"
#include "client/records/enrollment.h"
#include "foundation/json.h"
#include "tests/fuzz/fuzz.h"

using namespace quillmar;
using fuzz::require;

namespace {

template <Record T>
void check(std::string_view text) {
  const auto record = decodeJson<T>(text);
  if (!record) {
    const auto* error = record.error().template as<CodingError>();
    require(error != nullptr, "a refusal is a coding error");
    require(error->offset <= text.size(), "the refused place lies in the text");
    return;
  }
  const auto encoded = encodeJson(record.value());
  require(encoded.ok(), "what was read can be written");
  const auto again = decodeJson<T>(encoded.value());
  require(again.ok() && again.value() == record.value(), "a record is read as written");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  check<DNSLogsResponse>(text);
  check<EnrollmentStatusResponse>(text);
  check<QRCodeData>(text);
  return 0;
}
