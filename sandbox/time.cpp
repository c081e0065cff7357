#include "sandbox/time.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace quillmar::sandbox {
namespace {

// Parses a date from the front. After the first mismatch everything fails.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_{text} {}

  int digits(std::size_t count) {
    int value = 0;
    const auto* const end = rest_.data() + std::min(count, rest_.size());
    const auto read = std::from_chars(rest_.data(), end, value);
    good_ = good_ && rest_.size() >= count && read.ptr == end && rest_.front() != '-';
    if (good_) {
      rest_.remove_prefix(count);
    }
    return good_ ? value : 0;
  }

  void literal(char wanted) { good_ = good_ && take(wanted); }

  bool take(char wanted) {
    if (rest_.empty() || rest_.front() != wanted) {
      return false;
    }
    rest_.remove_prefix(1);
    return true;
  }

  // The digits after the decimal point, truncated to milliseconds.
  int fraction() {
    int value = 0;
    std::size_t count = 0;
    for (; !rest_.empty() && rest_.front() >= '0' && rest_.front() <= '9'; rest_.remove_prefix(1), ++count) {
      if (count < 3) {
        value = value * 10 + (rest_.front() - '0');
      }
    }
    good_ = good_ && count > 0;
    for (; count < 3; ++count) {
      value *= 10;
    }
    return value;
  }

  std::chrono::minutes zone() {
    if (take('Z')) {
      return {};
    }
    const bool behind = take('-');
    if (!behind) {
      literal('+');
    }
    const int hours = digits(2);
    take(':');
    const int minutes = rest_.empty() ? 0 : digits(2);
    good_ = good_ && hours < 24 && minutes < 60;
    const std::chrono::minutes offset{hours * 60 + minutes};
    return behind ? -offset : offset;
  }

  bool finished() const { return good_ && rest_.empty(); }

 private:
  std::string_view rest_;
  bool good_ = true;
};

}  // namespace

Clock systemClock() { return &std::chrono::system_clock::now; }

std::string iso8601(Time time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date{day};
  const std::chrono::hh_mm_ss clock{time - day};
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", int{date.year()},
                unsigned{date.month()}, unsigned{date.day()}, int(clock.hours().count()),
                int(clock.minutes().count()), int(clock.seconds().count()), int(clock.subseconds().count()));
  return text.data();
}

std::string httpDate(Time time) {
  static constexpr std::array weekdays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date{day};
  const std::chrono::hh_mm_ss clock{time - day};
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%s, %02u %s %04d %02d:%02d:%02d GMT",
                weekdays.at(std::chrono::weekday{day}.c_encoding()), unsigned{date.day()},
                months.at(unsigned{date.month()} - 1), int{date.year()}, int(clock.hours().count()),
                int(clock.minutes().count()), int(clock.seconds().count()));
  return text.data();
}

std::optional<Time> parseIso8601(std::string_view text) {
  Reader reader{text};
  const int year = reader.digits(4);
  reader.literal('-');
  const int month = reader.digits(2);
  reader.literal('-');
  const int day = reader.digits(2);
  reader.literal('T');
  const int hour = reader.digits(2);
  reader.literal(':');
  const int minute = reader.digits(2);
  reader.literal(':');
  const int second = reader.digits(2);
  const int fraction = reader.take('.') ? reader.fraction() : 0;
  const auto offset = reader.zone();

  const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month(unsigned(month)),
                                         std::chrono::day(unsigned(day))};
  if (!reader.finished() || !date.ok() || hour > 23 || minute > 59 || second > 59) {
    return std::nullopt;
  }
  return Time{std::chrono::sys_days{date} + std::chrono::hours{hour} + std::chrono::minutes{minute} +
              std::chrono::seconds{second} + std::chrono::milliseconds{fraction} - offset};
}

}  // namespace quillmar::sandbox
