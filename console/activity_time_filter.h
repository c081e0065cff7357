#pragma once

#include <array>
#include <chrono>

#include "foundation/raw_enum.h"

namespace quillmar {

// The time span of a list of sites.
enum class ActivityTimeFilter { realTime, last5Minutes, lastHour, today };

template <>
inline constexpr std::array rawNames<ActivityTimeFilter> =
    rawCases<ActivityTimeFilter>({{ActivityTimeFilter::realTime, "Real-Time"},
                                  {ActivityTimeFilter::last5Minutes, "Last 5 min"},
                                  {ActivityTimeFilter::lastHour, "Last Hour"},
                                  {ActivityTimeFilter::today, "Today"}});

// "Today" is the last 24 hours, not the calendar day.
constexpr std::chrono::seconds span(ActivityTimeFilter filter) {
  switch (filter) {
    case ActivityTimeFilter::realTime:
      return std::chrono::seconds(60);
    case ActivityTimeFilter::last5Minutes:
      return std::chrono::seconds(300);
    case ActivityTimeFilter::lastHour:
      return std::chrono::seconds(3600);
    case ActivityTimeFilter::today:
      break;
  }
  return std::chrono::seconds(86400);
}

}  // namespace quillmar
