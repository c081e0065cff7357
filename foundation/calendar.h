#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "foundation/date.h"

namespace quillmar {

using LocalDay = std::chrono::local_days;

// The days and hours of an Olson time zone, and their names and numbers in an ICU locale. Thread-safe; copies
// share the prepared formats. A malformed locale gives the root locale, an unknown zone UTC.
class Calendar {
 public:
  Calendar(const std::string& locale, const std::string& timeZone);

  LocalDay dayOf(Date date) const;
  // The day's first moment. It is not midnight if the clocks skip midnight.
  Date startOf(LocalDay day) const;
  // The moments at which an hour of the day begins, and last the moment at which the day ends. A day on which
  // the clocks change has an hour more or an hour fewer.
  std::vector<Date> hoursOf(LocalDay day) const;

  // "9 PM".
  std::string hour(Date date) const;
  // "Mon".
  std::string weekday(LocalDay day) const;
  // "Monday, November 16".
  std::string weekdayAndDate(LocalDay day) const;
  // "12,431".
  std::string number(std::int64_t number) const;
  // "12%", of a share between 0 and 1.
  std::string percent(double share) const;

 private:
  struct Formats;
  std::shared_ptr<const Formats> formats_;
};

}  // namespace quillmar
