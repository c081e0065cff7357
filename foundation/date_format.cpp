#include "foundation/date_format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
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

// Parses from the front. After the first mismatch everything fails.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  bool complete() const { return fits_ && text_.empty(); }
  bool fits() const { return fits_; }

  // Exactly `width` digits; the value is at most `most`.
  int number(std::size_t width, int most) {
    const auto digits = this->digits(width);
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    require(digits.size() == width && value <= most);
    return value;
  }

  // At most `width` digits.
  std::string_view digits(std::size_t width) {
    std::size_t count = 0;
    while (count < width && count < text_.size() && isAsciiDigit(text_[count])) {
      ++count;
    }
    return take(count);
  }

  void expect(char c) { require(accept(c)); }

  // Consumes one of the words and returns its index.
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

// The zone's offset from UTC: Z, +hh, +hhmm or +hh:mm.
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

}  // namespace quillmar
