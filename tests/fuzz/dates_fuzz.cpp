#include <string>

#include "foundation/date_format.h"
#include "presentation/relative_timestamp.h"
#include "tests/fuzz/fuzz.h"

using namespace quillmar;
using fuzz::require;

namespace {

const Date now = *parseISO8601("2024-03-15T12:00:00Z");
const Date firstOfFourDigits = *parseISO8601("0000-01-01T00:00:00Z");
const Date lastOfFourDigits = *parseISO8601("9999-12-31T23:59:59Z");

void checkWritten(Date date) {
  const auto text = formatISO8601(date);
  if (date >= firstOfFourDigits && date <= lastOfFourDigits) {
    require(parseISO8601(text) == std::chrono::floor<std::chrono::seconds>(date),
            "a date is read as written");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const DateStyles styles("en_US", "Australia/Sydney");
  const auto text = fuzz::textOf(data, size);
  const auto plain = parseISO8601(text);
  const auto fractional = parseISO8601WithFraction(text);
  const auto local = styles.parseLocal(text);
  const auto http = parseHTTPDate(text);
  require(
      int{plain.has_value()} + int{fractional.has_value()} + int{local.has_value()} + int{http.has_value()} <=
          1,
      "a text has one form at most");
  for (const auto& date : {plain, fractional, local, http}) {
    if (date) {
      checkWritten(*date);
      require(!styles.mediumDateShortTime(*date).empty(), "a date has a text");
      require(!styles.abbreviatedRelative(*date, now).empty(), "a date has an age");
    }
  }
  require(relativeTimestamp(text, now, styles).empty() == text.empty(), "a text gives a text");
  return 0;
}
