#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/date.h"

namespace quillmar {

// "2016-10-08T22:31:00.123Z" with a required fraction of 1 to 9 digits, or the same without one; the zone is
// required.
std::optional<Date> parseISO8601WithFraction(std::string_view text);
std::optional<Date> parseISO8601(std::string_view text);
// A time as the service writes it: either of the two forms.
std::optional<Date> parseTimestamp(std::string_view text);
// "Sat, 08 Oct 2016 22:31:00 GMT", the one form in which HTTP lets a server write. The day of the week is
// not looked up.
std::optional<Date> parseHTTPDate(std::string_view text);
// "2016-10-08T22:31:00Z".
std::string formatISO8601(Date date);

// The device's way to write dates: an ICU locale id and an Olson zone id. Any thread; copies share the
// prepared formats. A locale that ICU does not know gives its plainest form, an unknown zone UTC.
class DateStyles {
 public:
  DateStyles(const std::string& locale, const std::string& timeZone);

  // "yyyy-MM-dd'T'HH:mm:ss", read in the device's zone. A time that a change of clocks leaves out is read by
  // the clocks before the change; one that it repeats is the later of the two.
  std::optional<Date> parseLocal(std::string_view text) const;
  // "Oct 8, 2016".
  std::string mediumDate(Date date) const;
  // "Oct 8, 2016 at 2:04 PM".
  std::string mediumDateShortTime(Date date) const;
  // "2:04 PM".
  std::string shortTime(Date date) const;
  // "in 0 sec.", "59 sec. ago", "1 day ago": by the largest unit that is not zero, cut and not rounded.
  std::string abbreviatedRelative(Date date, Date now) const;

 private:
  struct Formats;
  std::shared_ptr<const Formats> formats_;
};

}  // namespace quillmar
