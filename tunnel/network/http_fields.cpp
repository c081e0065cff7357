#include "tunnel/network/http_fields.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "foundation/ascii.h"
#include "foundation/date_format.h"

namespace quillmar::tunnel {
namespace {

using std::chrono::seconds;

// Longer than any wait or lifetime here, and far from an overflow.
constexpr seconds longest{std::chrono::hours(24 * 365)};

std::optional<seconds> secondsIn(std::string_view value) {
  if (value.empty() || !std::ranges::all_of(value, isAsciiDigit)) {
    return std::nullopt;
  }
  std::int64_t count = 0;
  const bool fits = std::from_chars(value.data(), value.data() + value.size(), count).ec == std::errc();
  return fits ? std::min(seconds(count), longest) : longest;
}

bool isDnsMessage(std::string_view contentType) {
  constexpr std::string_view dnsMessage = "application/dns-message";
  auto name = contentType.substr(0, contentType.find(';'));
  while (name.ends_with(' ')) {
    name.remove_suffix(1);
  }
  return std::ranges::equal(name, dnsMessage, [](char one, char other) {
    return (isAsciiLetter(one) ? static_cast<char>(one | ' ') : one) == other;
  });
}

// A date is relative to the endpoint's own clock, since this machine's may be wrong.
std::optional<seconds> waitOf(const std::string& retryAfter, const std::string& date) {
  if (retryAfter.empty()) {
    return std::nullopt;
  }
  if (const auto wait = secondsIn(retryAfter)) {
    return wait;
  }
  const auto end = parseHTTPDate(retryAfter);
  const auto start = parseHTTPDate(date);
  if (!end || !start) {
    return std::nullopt;
  }
  return std::clamp(std::chrono::ceil<seconds>(*end - *start), seconds(0), longest);
}

}  // namespace

// A second status follows an informational response, whose fields don't belong to the answer.
void HttpFields::takeStatus(std::string_view value) {
  *this = {};
  std::from_chars(value.data(), value.data() + value.size(), answer_.status);
}

void HttpFields::take(std::string_view name, std::string_view value) {
  if (name == ":status") {
    takeStatus(value);
  } else if (name == "content-type") {
    answer_.isDns = isDnsMessage(value);
  } else if (name == "age") {
    answer_.age = secondsIn(value).value_or(seconds(0));
  } else if (answer_.status == HttpAnswer::ok) {
    return;  // only a refusal says when to ask again
  } else if (name == "date") {
    date_ = value;
  } else if (name == "retry-after") {
    retryAfter_ = value;
  }
}

HttpAnswer HttpFields::answer() const {
  auto answer = answer_;
  answer.retryAfter = waitOf(retryAfter_, date_);
  return answer;
}

}  // namespace quillmar::tunnel
