#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/dtptngen.h>
#include <unicode/reldatefmt.h>
#include <unicode/simpleformatter.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <utility>

#include "foundation/date_format.h"
#include "foundation/icu_dates.h"
#include "foundation/icu_text.h"

// A source of its own, so that a program that shows no dates doesn't link ICU's formatting.
namespace quillmar {
namespace {

std::string written(Date date, const std::unique_ptr<icu::DateFormat>& format) {
  icu::UnicodeString text;
  return format ? utf8(format->format(icuDate(date), text)) : formatISO8601(date);
}

icu::UnicodeString patternOf(const icu::DateFormat* format) {
  const auto* simple = dynamic_cast<const icu::SimpleDateFormat*>(format);
  icu::UnicodeString pattern;
  return simple ? simple->toPattern(pattern) : pattern;
}

// Joined as the locale joins them in a sentence ("at" in English).
std::unique_ptr<icu::DateFormat> makeDateAndTime(const icu::Locale& locale, const icu::DateFormat* date,
                                                 const icu::DateFormat* time) {
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<const icu::DateTimePatternGenerator> generator(
      icu::DateTimePatternGenerator::createInstance(locale, status));
  if (!generator) {
    return nullptr;
  }
  const icu::SimpleFormatter joint(generator->getDateTimeFormat(UDAT_LONG, status), 2, 2, status);
  icu::UnicodeString pattern;
  joint.format(patternOf(time), patternOf(date), pattern, status);
  auto format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
  return U_SUCCESS(status) ? std::move(format) : nullptr;
}

// The largest first.
struct Unit {
  UCalendarDateFields field;
  URelativeDateTimeUnit unit;
};
constexpr std::array units = {
    Unit{UCAL_YEAR, UDAT_REL_UNIT_YEAR},         Unit{UCAL_MONTH, UDAT_REL_UNIT_MONTH},
    Unit{UCAL_WEEK_OF_YEAR, UDAT_REL_UNIT_WEEK}, Unit{UCAL_DATE, UDAT_REL_UNIT_DAY},
    Unit{UCAL_HOUR, UDAT_REL_UNIT_HOUR},         Unit{UCAL_MINUTE, UDAT_REL_UNIT_MINUTE},
    Unit{UCAL_SECOND, UDAT_REL_UNIT_SECOND}};

struct Span {
  std::int32_t amount = 0;
  URelativeDateTimeUnit unit = UDAT_REL_UNIT_SECOND;
};

// The difference in the largest unit that is not zero.
Span largestWhole(icu::Calendar& from, Date to, UErrorCode& status) {
  for (const auto& [field, unit] : units) {
    if (const auto amount = from.fieldDifference(icuDate(to), field, status); amount != 0) {
      return {amount, unit};
    }
  }
  return {};
}

}  // namespace

// Created once, because creating a format loads tables. Const use is thread-safe.
struct DateStyles::Formats {
  Formats(const std::string& localeName, const std::string& zoneName)
      : locale(localeNamed(localeName)),
        zone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zoneName))),
        date(icu::DateFormat::createDateInstance(icu::DateFormat::kMedium, locale)),
        time(icu::DateFormat::createTimeInstance(icu::DateFormat::kShort, locale)),
        dateAndTime(makeDateAndTime(locale, date.get(), time.get())) {
    for (auto* format : {date.get(), time.get(), dateAndTime.get()}) {
      if (format) {
        format->setTimeZone(*zone);
      }
    }
    calendar.reset(icu::Calendar::createInstance(*zone, locale, status));
    relative.emplace(locale, nullptr, UDAT_STYLE_SHORT, UDISPCTX_CAPITALIZATION_NONE, status);
  }

  icu::Locale locale;
  std::unique_ptr<icu::TimeZone> zone;
  std::unique_ptr<icu::DateFormat> date;
  std::unique_ptr<icu::DateFormat> time;
  std::unique_ptr<icu::DateFormat> dateAndTime;
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::Calendar> calendar;
  std::optional<icu::RelativeDateTimeFormatter> relative;
};

DateStyles::DateStyles(const std::string& locale, const std::string& timeZone)
    : formats_(std::make_shared<const Formats>(locale, timeZone)) {}

std::optional<Date> DateStyles::parseLocal(std::string_view text) const {
  // The local time, parsed as if its zone were UTC.
  const auto local = parseISO8601(std::string(text) + 'Z');
  if (!local) {
    return std::nullopt;
  }
  std::int32_t standard = 0;
  std::int32_t daylightSaving = 0;
  UErrorCode status = U_ZERO_ERROR;
  formats_->zone->getOffset(icuDate(*local), true, standard, daylightSaving, status);
  return *local - Duration(standard + daylightSaving);
}

std::string DateStyles::mediumDate(Date date) const { return written(date, formats_->date); }
std::string DateStyles::mediumDateShortTime(Date date) const { return written(date, formats_->dateAndTime); }
std::string DateStyles::shortTime(Date date) const { return written(date, formats_->time); }

std::string DateStyles::abbreviatedRelative(Date date, Date now) const {
  UErrorCode status = formats_->status;
  icu::UnicodeString text;
  if (U_SUCCESS(status)) {
    const std::unique_ptr<icu::Calendar> calendar(formats_->calendar->clone());
    calendar->setTime(icuDate(now), status);
    const auto span = largestWhole(*calendar, date, status);
    formats_->relative->formatNumeric(span.amount, span.unit, text, status);
  }
  return U_SUCCESS(status) ? utf8(text) : formatISO8601(date);
}

}  // namespace quillmar
