#include "foundation/date_format.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillmar {
namespace {

using namespace std::chrono_literals;

Date date(std::string_view text) {
  const auto parsed = parseTimestamp(text);
  EXPECT_TRUE(parsed) << text;
  return parsed.value_or(Date());
}

// The space before "PM" depends on ICU's version.
std::string loosely(std::string text) {
  for (std::size_t at = 0; (at = text.find("\u202F")) != std::string::npos;) {
    text.replace(at, std::string("\u202F").size(), " ");
  }
  return text;
}

TEST(Iso8601, is_read_with_every_form_of_zone) {
  const Date expected(1475965860000ms);
  for (const auto* text : {"2016-10-08T22:31:00Z", "2016-10-08T22:31:00+00:00", "2016-10-08T22:31:00+0000",
                           "2016-10-08T22:31:00-00", "2016-10-09T09:31:00+11:00", "2016-10-09T09:31:00+11",
                           "2016-10-08T17:01:00-0530"}) {
    EXPECT_EQ(parseISO8601(text), expected) << text;
  }
}

TEST(Iso8601, is_cut_to_milliseconds) {
  const std::vector<std::pair<std::string, Duration>> cases = {
      {"1970-01-01T00:00:01.5Z", 1500ms},      {"1970-01-01T00:00:01.05Z", 1050ms},
      {"1970-01-01T00:00:01.123Z", 1123ms},    {"1970-01-01T00:00:01.1239Z", 1123ms},
      {"1970-01-01T00:00:01.000000Z", 1000ms}, {"1970-01-01T00:00:01.999999999Z", 1999ms},
      {"1970-01-01T00:00:01.5+00:00", 1500ms}, {"1969-12-31T23:59:59.999Z", -1ms}};
  for (const auto& [text, sinceEpoch] : cases) {
    EXPECT_EQ(parseISO8601WithFraction(text), Date(sinceEpoch)) << text;
  }
}

TEST(Iso8601, has_a_form_with_and_a_form_without_a_fraction) {
  EXPECT_EQ(parseISO8601WithFraction("2016-10-08T22:31:00Z"), std::nullopt);
  EXPECT_EQ(parseISO8601("2016-10-08T22:31:00.5Z"), std::nullopt);
  EXPECT_EQ(parseTimestamp("2016-10-08T22:31:00.5Z"), Date(1475965860500ms));
  EXPECT_EQ(parseTimestamp("2016-10-08T22:31:00Z"), Date(1475965860000ms));
  EXPECT_EQ(parseTimestamp("2016-10-08T22:31:00"), std::nullopt);
}

TEST(Iso8601, knows_leap_days) {
  EXPECT_TRUE(parseISO8601("2024-02-29T00:00:00Z"));
  EXPECT_TRUE(parseISO8601("2000-02-29T00:00:00Z"));
  EXPECT_FALSE(parseISO8601("2023-02-29T00:00:00Z"));
  EXPECT_FALSE(parseISO8601("1900-02-29T00:00:00Z"));
}

TEST(Iso8601, is_refused_in_every_other_form) {
  for (const auto* text : {"",
                           "2016",
                           "2016-10-08",
                           "2016-10-08T22:31Z",
                           "2016-10-08T22:31:00",
                           "2016-10-08t22:31:00Z",
                           "2016-10-08T22:31:00z",
                           "2016-10-08 22:31:00Z",
                           "2016-10-08T22:31:60Z",
                           "2016-10-08T24:00:00Z",
                           "2016-10-08T23:60:00Z",
                           "2016-13-08T22:31:00Z",
                           "2016-00-08T22:31:00Z",
                           "2016-02-30T22:31:00Z",
                           "2016-10-00T22:31:00Z",
                           "2016-10-32T22:31:00Z",
                           "2016-10-08T22:31:00ZZ",
                           " 2016-10-08T22:31:00Z",
                           "2016-10-08T22:31:00Z ",
                           "16-10-08T22:31:00Z",
                           "12016-10-08T22:31:00Z",
                           "+2016-10-08T22:31:00Z",
                           "2016-1-08T22:31:00Z",
                           "20161008T223100Z",
                           "2016-10-08T22:31:00+1",
                           "2016-10-08T22:31:00+111",
                           "2016-10-08T22:31:00+11:0",
                           "2016-10-08T22:31:00+11:",
                           "2016-10-08T22:31:00+24:00",
                           "2016-10-08T22:31:00+11:60",
                           "2016-10-08T22:31:00 +11:00",
                           "2016-10-08T22:31:00Z+11",
                           "٢٠١٦-10-08T22:31:00Z",
                           "2016-10-08T22:31:00.Z",
                           "2016-10-08T-2:31:00Z"}) {
    EXPECT_EQ(parseTimestamp(text), std::nullopt) << text;
  }
}

TEST(Iso8601, requires_one_to_nine_digits_of_a_fraction) {
  for (const auto* text :
       {"2016-10-08T22:31:00.Z", "2016-10-08T22:31:00.1234567890Z", "2016-10-08T22:31:00,5Z",
        "2016-10-08T22:31:00.5", "2016-10-08T22:31:00.-5Z", "2016-10-08T22:31:00.5 Z"}) {
    EXPECT_EQ(parseISO8601WithFraction(text), std::nullopt) << text;
  }
}

TEST(Iso8601, is_written_in_utc_without_a_fraction) {
  EXPECT_EQ(formatISO8601(Date(1475965860000ms)), "2016-10-08T22:31:00Z");
  EXPECT_EQ(formatISO8601(Date(1475965860999ms)), "2016-10-08T22:31:00Z");
  EXPECT_EQ(formatISO8601(Date(0ms)), "1970-01-01T00:00:00Z");
  EXPECT_EQ(formatISO8601(Date(-1ms)), "1969-12-31T23:59:59Z");
  EXPECT_EQ(formatISO8601(date("0001-02-03T04:05:06Z")), "0001-02-03T04:05:06Z");
}

TEST(Iso8601, is_read_as_it_was_written) {
  for (const auto* text : {"0000-01-01T00:00:00Z", "9999-12-31T23:59:59Z", "2024-02-29T12:34:56Z"}) {
    EXPECT_EQ(formatISO8601(date(text)), text);
  }
}

const DateStyles american("en_US", "America/New_York");

TEST(HttpDate, is_read_in_the_form_that_servers_write) {
  EXPECT_EQ(parseHTTPDate("Sat, 08 Oct 2016 22:31:00 GMT"), Date(1475965860000ms));
  EXPECT_EQ(parseHTTPDate("Thu, 01 Jan 1970 00:00:00 GMT"), Date(0ms));
  EXPECT_EQ(parseHTTPDate("Thu, 29 Feb 2024 23:59:59 GMT"), Date(1709251199000ms));
}

TEST(HttpDate, is_refused_in_every_other_form) {
  for (const char* text :
       {"", "yesterday", "Sat, 08 Oct 2016 22:31:00", "Sat, 08 Oct 2016 22:31:00 GMT ",
        "Sat, 08 Oct 2016 22:31:00 UTC", "Sat, 8 Oct 2016 22:31:00 GMT", "Sat, 08 oct 2016 22:31:00 GMT",
        "Say, 08 Oct 2016 22:31:00 GMT", "08 Oct 2016 22:31:00 GMT", "Sat, 30 Feb 2016 22:31:00 GMT",
        "Sat, 08 Oct 2016 24:00:00 GMT", "Saturday, 08-Oct-16 22:31:00 GMT", "Sat Oct  8 22:31:00 2016"}) {
    EXPECT_EQ(parseHTTPDate(text), std::nullopt) << text;
  }
}

TEST(DateStyles, read_local_time_in_the_devices_zone) {
  EXPECT_EQ(american.parseLocal("2016-10-08T14:04:00"), date("2016-10-08T18:04:00Z"));
  EXPECT_EQ(american.parseLocal("2016-12-08T14:04:00"), date("2016-12-08T19:04:00Z"));
  EXPECT_EQ(DateStyles("en_US", "Asia/Kathmandu").parseLocal("2016-10-08T14:04:00"),
            date("2016-10-08T08:19:00Z"));
}

TEST(DateStyles, read_the_later_of_two_times_when_the_clocks_go_back) {
  EXPECT_EQ(american.parseLocal("2016-11-06T01:30:00"), date("2016-11-06T06:30:00Z"));
}

TEST(DateStyles, read_a_skipped_time_with_the_offset_before_the_change) {
  EXPECT_EQ(american.parseLocal("2016-03-13T02:30:00"), date("2016-03-13T07:30:00Z"));
}

TEST(DateStyles, refuse_invalid_local_times) {
  for (const auto* text :
       {"", "2016-10-08", "2016-10-08T14:04", "2016-10-08T14:04:00Z", "2016-10-08T14:04:00.5",
        "2016-10-08 14:04:00", "2016-02-30T14:04:00", "2016-10-08T24:00:00"}) {
    EXPECT_EQ(american.parseLocal(text), std::nullopt) << text;
  }
}

TEST(DateStyles, write_dates_as_the_locale_does) {
  const auto afternoon = date("2016-10-08T18:04:05Z");
  EXPECT_EQ(american.mediumDate(afternoon), "Oct 8, 2016");
  EXPECT_EQ(loosely(american.mediumDateShortTime(afternoon)), "Oct 8, 2016 at 2:04 PM");
  EXPECT_EQ(loosely(american.shortTime(afternoon)), "2:04 PM");

  const DateStyles australian("en_AU", "Australia/Sydney");
  EXPECT_EQ(australian.mediumDate(afternoon), "9 Oct 2016");
  EXPECT_EQ(loosely(australian.mediumDateShortTime(afternoon)), "9 Oct 2016 at 5:04 am");
  EXPECT_EQ(loosely(australian.shortTime(afternoon)), "5:04 am");

  const DateStyles german("de_DE", "Europe/Berlin");
  EXPECT_EQ(german.mediumDate(afternoon), "08.10.2016");
  EXPECT_EQ(german.mediumDateShortTime(afternoon), "08.10.2016 um 20:04");
  EXPECT_EQ(german.shortTime(afternoon), "20:04");
}

TEST(DateStyles, write_the_date_in_the_devices_zone) {
  EXPECT_EQ(american.mediumDate(date("2016-10-08T03:59:59Z")), "Oct 7, 2016");
  EXPECT_EQ(american.mediumDate(date("2016-10-08T04:00:00Z")), "Oct 8, 2016");
}

TEST(DateStyles, use_utc_for_an_unknown_zone) {
  EXPECT_EQ(DateStyles("en_US", "Nowhere/Land").parseLocal("2016-10-08T14:04:00"),
            date("2016-10-08T14:04:00Z"));
  EXPECT_EQ(DateStyles("en_US", "").parseLocal("2016-10-08T14:04:00"), date("2016-10-08T14:04:00Z"));
}

TEST(DateStyles, write_a_date_for_an_unknown_locale) {
  for (const auto* locale : {"", "C", "xx_YY", "no such locale"}) {
    const DateStyles styles(locale, "UTC");
    EXPECT_NE(styles.mediumDate(date("2016-10-08T14:04:00Z")).find("2016"), std::string::npos) << locale;
    EXPECT_NE(styles.shortTime(date("2016-10-08T14:04:00Z")).find("04"), std::string::npos) << locale;
  }
}

const Date now = *parseISO8601("2016-10-08T22:31:00Z");

TEST(RelativeTime, uses_the_largest_unit_and_truncates) {
  const std::vector<std::pair<Duration, std::string>> cases = {{0s, "in 0 sec."},
                                                               {999ms, "in 0 sec."},
                                                               {1s, "1 sec. ago"},
                                                               {59s, "59 sec. ago"},
                                                               {59999ms, "59 sec. ago"},
                                                               {60s, "1 min. ago"},
                                                               {90s, "1 min. ago"},
                                                               {119s, "1 min. ago"},
                                                               {3599s, "59 min. ago"},
                                                               {1h, "1 hr. ago"},
                                                               {24h - 1s, "23 hr. ago"},
                                                               {24h, "1 day ago"},
                                                               {7 * 24h - 1s, "6 days ago"},
                                                               {7 * 24h, "1 wk. ago"},
                                                               {29 * 24h, "4 wk. ago"},
                                                               {30 * 24h, "1 mo. ago"},
                                                               {365 * 24h, "11 mo. ago"},
                                                               {366 * 24h, "1 yr. ago"},
                                                               {-1s, "in 1 sec."},
                                                               {-90s, "in 1 min."},
                                                               {-48h, "in 2 days"},
                                                               {-999ms, "in 0 sec."}};
  const DateStyles utc("en_US", "UTC");
  for (const auto& [age, text] : cases) {
    EXPECT_EQ(utc.abbreviatedRelative(now - age, now), text) << age.count() << " ms";
  }
}

TEST(RelativeTime, counts_days_in_the_devices_calendar) {
  const auto before = date("2016-11-05T16:00:00Z");  // noon before the night in which clocks go back
  EXPECT_EQ(american.abbreviatedRelative(before, before + 24h), "24 hr. ago");
  EXPECT_EQ(american.abbreviatedRelative(before, before + 25h), "1 day ago");
}

}  // namespace
}  // namespace quillmar
