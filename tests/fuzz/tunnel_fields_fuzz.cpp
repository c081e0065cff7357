// The input is the header fields of an answer, each on a line: its name, a colon, its value.

#include <chrono>

#include "tests/fuzz/fuzz.h"
#include "tunnel/network/http_fields.h"

using namespace quillmar::tunnel;
using quillmar::fuzz::require;

namespace {

constexpr std::chrono::seconds year{std::chrono::hours(24 * 365)};

bool isReasonable(std::chrono::seconds time) { return time >= std::chrono::seconds(0) && time <= year; }

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto rest = quillmar::fuzz::textOf(data, size);
  HttpFields fields;
  while (!rest.empty()) {
    const auto line = rest.substr(0, rest.find('\n'));
    const auto colon = std::min(line.find(':', 1), line.size());
    fields.take(line.substr(0, colon), line.substr(std::min(colon + 1, line.size())));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
  const auto answer = fields.answer();
  require(isReasonable(answer.age), "an age is between nothing and a year");
  require(!answer.retryAfter || isReasonable(*answer.retryAfter), "a wait is between nothing and a year");
  require(answer.body.empty(), "fields are no body");
  return 0;
}
