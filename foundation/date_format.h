#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/date.h"

namespace quillmar {

// "2016-10-08T22:31:00.123Z". The zone is required. The first requires a fraction of 1 to 9 digits, the
// second allows none.
std::optional<Date> parseISO8601WithFraction(std::string_view text);
std::optional<Date> parseISO8601(std::string_view text);
// Accepts both forms.
std::optional<Date> parseTimestamp(std::string_view text);
// "Sat, 08 Oct 2016 22:31:00 GMT", the only form that HTTP servers may send. The weekday is not compared with
// the date.
std::optional<Date> parseHTTPDate(std::string_view text);
// "2016-10-08T22:31:00Z".
std::string formatISO8601(Date date);

// Writes dates for an ICU locale id and an Olson zone id. Thread-safe; copies share the prepared formats. A
// malformed locale gives the root locale, an unknown zone UTC.
class DateStyles {
 public:
  DateStyles(const std::string& locale, const std::string& timeZone);

  // "yyyy-MM-dd'T'HH:mm:ss" in the device's zone. When clocks change, a skipped time is read with the offset
  // before the change, and a repeated time is the later one.
  std::optional<Date> parseLocal(std::string_view text) const;
  // "Oct 8, 2016".
  std::string mediumDate(Date date) const;
  // "Oct 8, 2016 at 2:04 PM".
  std::string mediumDateShortTime(Date date) const;
  // "2:04 PM".
  std::string shortTime(Date date) const;
  // "in 0 sec.", "59 sec. ago", "1 day ago": in the largest unit that is not zero, truncated.
  std::string abbreviatedRelative(Date date, Date now) const;

 private:
  struct Formats;
  std::shared_ptr<const Formats> formats_;
};

}  // namespace quillmar
