#include "foundation/calendar.h"

#include <unicode/basictz.h>
#include <unicode/datefmt.h>
#include <unicode/numfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <memory>

#include "foundation/icu_dates.h"
#include "foundation/icu_text.h"

namespace quillmar {
namespace {

using std::chrono::hours;
using LocalTime = std::chrono::local_time<Duration>;

std::unique_ptr<icu::DateFormat> makeFormat(const char* skeleton, const icu::Locale& locale,
                                            const icu::TimeZone& zone) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::DateFormat> format(
      icu::DateFormat::createInstanceForSkeleton(icu::UnicodeString(skeleton), locale, status));
  if (format) {
    format->setTimeZone(zone);
  }
  return format;
}

std::string formatted(Date date, const std::unique_ptr<icu::DateFormat>& format) {
  icu::UnicodeString text;
  return format ? utf8(format->format(icuDate(date), text)) : std::string();
}

}  // namespace

struct Calendar::Formats {
  Formats(const std::string& localeName, const std::string& zoneName)
      : locale(localeNamed(localeName)),
        zone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zoneName))),
        hour(makeFormat("j", locale, *zone)),
        weekday(makeFormat("EEE", locale, *zone)),
        weekdayAndDate(makeFormat("EEEEMMMMd", locale, *zone)) {
    UErrorCode status = U_ZERO_ERROR;
    number.reset(icu::NumberFormat::createInstance(locale, status));
    percent.reset(icu::NumberFormat::createPercentInstance(locale, status));
  }

  // How far the clocks are ahead of UTC.
  Duration offset(Date date) const {
    std::int32_t standard = 0;
    std::int32_t daylightSaving = 0;
    UErrorCode status = U_ZERO_ERROR;
    zone->getOffset(icuDate(date), false, standard, daylightSaving, status);
    return Duration(standard + daylightSaving);
  }

  // The first moment at which the clocks show this time. A skipped time counts as if they had not changed
  // yet.
  Date momentOf(LocalTime local) const {
    const Date asIfUTC(local.time_since_epoch());
    std::int32_t standard = 0;
    std::int32_t daylightSaving = 0;
    UErrorCode status = U_ZERO_ERROR;
    if (const auto* const rules = dynamic_cast<const icu::BasicTimeZone*>(zone.get())) {
      rules->getOffsetFromLocal(icuDate(asIfUTC), UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_FORMER, standard,
                                daylightSaving, status);
    }
    return asIfUTC - Duration(standard + daylightSaving);
  }

  icu::Locale locale;
  std::unique_ptr<icu::TimeZone> zone;
  std::unique_ptr<icu::DateFormat> hour;
  std::unique_ptr<icu::DateFormat> weekday;
  std::unique_ptr<icu::DateFormat> weekdayAndDate;
  std::unique_ptr<icu::NumberFormat> number;
  std::unique_ptr<icu::NumberFormat> percent;
};

Calendar::Calendar(const std::string& locale, const std::string& timeZone)
    : formats_(std::make_shared<const Formats>(locale, timeZone)) {}

LocalDay Calendar::dayOf(Date date) const {
  return std::chrono::floor<std::chrono::days>(LocalTime(date.time_since_epoch() + formats_->offset(date)));
}

Date Calendar::startOf(LocalDay day) const { return formats_->momentOf(day); }

std::vector<Date> Calendar::hoursOf(LocalDay day) const {
  std::vector<Date> starts;
  const Date end = startOf(day + std::chrono::days(1));
  Date start = startOf(day);
  while (start < end) {
    starts.push_back(start);
    const LocalTime local(start.time_since_epoch() + formats_->offset(start));
    start += std::chrono::floor<hours>(local) + hours(1) - local;
  }
  starts.push_back(end);
  return starts;
}

std::string Calendar::hour(Date date) const { return formatted(date, formats_->hour); }

std::string Calendar::weekday(LocalDay day) const { return formatted(startOf(day), formats_->weekday); }

std::string Calendar::weekdayAndDate(LocalDay day) const {
  return formatted(startOf(day), formats_->weekdayAndDate);
}

std::string Calendar::number(std::int64_t number) const {
  icu::UnicodeString text;
  return formats_->number ? utf8(formats_->number->format(number, text)) : std::to_string(number);
}

std::string Calendar::percent(double share) const {
  icu::UnicodeString text;
  return formats_->percent ? utf8(formats_->percent->format(share, text)) : std::string();
}

}  // namespace quillmar
