#include "foundation/date_format.h"

#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/dtptngen.h>
#include <unicode/reldatefmt.h>
#include <unicode/simpleformatter.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <utility>

#include "foundation/ascii.h"

namespace quillmar {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

using LocalTime = std::chrono::local_time<milliseconds>;

constexpr std::array<std::string_view, 7> weekdays = {"Mon, ", "Tue, ", "Wed, ", "Thu, ",
                                                      "Fri, ", "Sat, ", "Sun, "};
constexpr std::array<std::string_view, 12> months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// Reads a text from its front; once something does not fit, nothing fits any more.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  bool complete() const { return fits_ && text_.empty(); }
  bool fits() const { return fits_; }

  // Exactly `width` digits with a value of at most `most`.
  int number(std::size_t width, int most) {
    const auto digits = this->digits(width);
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    require(digits.size() == width && value <= most);
    return value;
  }

  // As many digits as there are, at most `width`.
  std::string_view digits(std::size_t width) {
    std::size_t count = 0;
    while (count < width && count < text_.size() && isAsciiDigit(text_[count])) {
      ++count;
    }
    return take(count);
  }

  void expect(char c) { require(accept(c)); }

  // Which of the words comes.
  template <std::size_t count>
  unsigned word(const std::array<std::string_view, count>& words) {
    const auto found =
        std::ranges::find_if(words, [this](std::string_view word) { return text_.starts_with(word); });
    require(found != words.end());
    take(found == words.end() ? 0 : found->size());
    return static_cast<unsigned>(found - words.begin());
  }

  bool accept(char c) { return text_.starts_with(c) && !take(1).empty(); }

  void require(bool condition) { fits_ = fits_ && condition; }

 private:
  std::string_view take(std::size_t count) {
    const auto taken = text_.substr(0, count);
    text_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view text_;
  bool fits_ = true;
};

seconds readClock(Reader& reader) {
  const hours hour(reader.number(2, 23));
  reader.expect(':');
  const minutes minute(reader.number(2, 59));
  reader.expect(':');
  return hour + minute + seconds(reader.number(2, 59));
}

LocalTime readLocalTime(Reader& reader) {
  const std::chrono::year year(reader.number(4, 9999));
  reader.expect('-');
  const std::chrono::month month(static_cast<unsigned>(reader.number(2, 12)));
  reader.expect('-');
  const std::chrono::day day(static_cast<unsigned>(reader.number(2, 31)));
  reader.expect('T');
  const auto clock = readClock(reader);
  const auto date = year / month / day;
  reader.require(date.ok());
  return reader.fits() ? std::chrono::local_days(date) + clock : LocalTime();
}

milliseconds readFraction(Reader& reader) {
  reader.expect('.');
  std::string digits(reader.digits(9));
  reader.require(!digits.empty());
  digits.resize(3, '0');
  return milliseconds(Reader(digits).number(3, 999));
}

// How far the zone is ahead of UTC: Z, +hh, +hhmm or +hh:mm.
minutes readZone(Reader& reader) {
  if (reader.accept('Z')) {
    return minutes(0);
  }
  const bool behind = reader.accept('-');
  if (!behind) {
    reader.expect('+');
  }
  minutes ahead = hours(reader.number(2, 23));
  if (!reader.complete()) {
    reader.accept(':');
    ahead += minutes(reader.number(2, 59));
  }
  return behind ? -ahead : ahead;
}

enum class Fraction { none, required };

std::optional<Date> parse(std::string_view text, Fraction fraction) {
  Reader reader(text);
  const auto local = readLocalTime(reader);
  const auto part = fraction == Fraction::required ? readFraction(reader) : milliseconds(0);
  const auto ahead = readZone(reader);
  return reader.complete() ? std::optional(Date(local.time_since_epoch() + part - ahead)) : std::nullopt;
}

std::string padded(long number, std::size_t width) {
  auto digits = std::to_string(number);
  digits.insert(0, width - std::min(width, digits.size()), '0');
  return digits;
}

UDate icuDate(Date date) { return static_cast<UDate>(date.time_since_epoch().count()); }

std::string utf8(const icu::UnicodeString& text) {
  std::string result;
  return text.toUTF8String(result);
}

// ICU's factories do not bear a bogus locale.
icu::Locale localeNamed(const std::string& name) {
  const icu::Locale locale(name.c_str());
  return locale.isBogus() ? icu::Locale::getRoot() : locale;
}

std::string written(Date date, const std::unique_ptr<icu::DateFormat>& format) {
  icu::UnicodeString text;
  return format ? utf8(format->format(icuDate(date), text)) : formatISO8601(date);
}

icu::UnicodeString patternOf(const icu::DateFormat* format) {
  const auto* simple = dynamic_cast<const icu::SimpleDateFormat*>(format);
  icu::UnicodeString pattern;
  return simple ? simple->toPattern(pattern) : pattern;
}

// The medium date and the short time, joined as the locale joins them in a sentence ("at").
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

// The units of a relative time, the largest first.
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

// How far `to` is from the calendar's time, in the largest unit of which there is a whole one.
Span largestWhole(icu::Calendar& from, Date to, UErrorCode& status) {
  for (const auto& [field, unit] : units) {
    if (const auto amount = from.fieldDifference(icuDate(to), field, status); amount != 0) {
      return {amount, unit};
    }
  }
  return {};
}

}  // namespace

std::optional<Date> parseISO8601WithFraction(std::string_view text) {
  return parse(text, Fraction::required);
}

std::optional<Date> parseISO8601(std::string_view text) { return parse(text, Fraction::none); }

std::optional<Date> parseTimestamp(std::string_view text) {
  const auto date = parseISO8601WithFraction(text);
  return date ? date : parseISO8601(text);
}

std::optional<Date> parseHTTPDate(std::string_view text) {
  Reader reader(text);
  reader.word(weekdays);
  const std::chrono::day day(static_cast<unsigned>(reader.number(2, 31)));
  reader.expect(' ');
  const std::chrono::month month(reader.word(months) + 1);
  reader.expect(' ');
  const std::chrono::year year(reader.number(4, 9999));
  reader.expect(' ');
  const auto clock = readClock(reader);
  reader.word(std::array<std::string_view, 1>{" GMT"});
  const auto date = year / month / day;
  reader.require(date.ok());
  return reader.complete() ? std::optional(Date(std::chrono::sys_days(date) + clock)) : std::nullopt;
}

std::string formatISO8601(Date date) {
  const auto midnight = std::chrono::floor<std::chrono::days>(date);
  const std::chrono::year_month_day day(midnight);
  const std::chrono::hh_mm_ss time(std::chrono::floor<seconds>(date - midnight));
  return padded(static_cast<int>(day.year()), 4) + '-' + padded(static_cast<unsigned>(day.month()), 2) + '-' +
         padded(static_cast<unsigned>(day.day()), 2) + 'T' + padded(time.hours().count(), 2) + ':' +
         padded(time.minutes().count(), 2) + ':' + padded(time.seconds().count(), 2) + 'Z';
}

// Prepared once: making a format reads tables. Their const use is safe on any thread.
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
  Reader reader(text);
  const auto local = readLocalTime(reader);
  if (!reader.complete()) {
    return std::nullopt;
  }
  std::int32_t standard = 0;
  std::int32_t daylightSaving = 0;
  UErrorCode status = U_ZERO_ERROR;
  formats_->zone->getOffset(static_cast<UDate>(local.time_since_epoch().count()), true, standard,
                            daylightSaving, status);
  return Date(local.time_since_epoch() - milliseconds(standard + daylightSaving));
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
