#include "foundation/calendar.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/date_format.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;

Date moment(const char* text) { return *parseISO8601(text); }

LocalDay localDay(int year, unsigned month, unsigned day) {
  return LocalDay(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day));
}

// Locales separate "AM" by a narrow space that does not break.
std::string plain(std::string text) {
  const std::string narrowSpace = "\u202F";
  for (auto at = text.find(narrowSpace); at != std::string::npos; at = text.find(narrowSpace)) {
    text.replace(at, narrowSpace.size(), " ");
  }
  return text;
}

std::vector<std::string> hourTexts(const Calendar& calendar, LocalDay day) {
  std::vector<std::string> texts;
  const auto starts = calendar.hoursOf(day);
  for (std::size_t i = 0; i + 1 < starts.size(); ++i) {
    texts.push_back(plain(calendar.hour(starts[i])));
  }
  return texts;
}

TEST(CalendarDay, is_that_of_the_zone_and_not_of_utc) {
  const Calendar sydney("en_AU", "Australia/Sydney");
  EXPECT_EQ(sydney.dayOf(moment("2016-10-08T12:59:59Z")), localDay(2016, 10, 8));
  EXPECT_EQ(sydney.dayOf(moment("2016-10-08T13:00:00Z")), localDay(2016, 10, 9));
  EXPECT_EQ(sydney.startOf(localDay(2016, 10, 9)), moment("2016-10-08T13:00:00Z"));
}

TEST(CalendarDay, has_24_hours_that_begin_on_the_clocks_full_hour) {
  const Calendar nepal("en_US", "Asia/Kathmandu");
  const auto hours = nepal.hoursOf(localDay(2016, 10, 8));
  ASSERT_EQ(hours.size(), 25U);
  EXPECT_EQ(hours.front(), moment("2016-10-07T18:15:00Z"));
  EXPECT_EQ(hours[1], moment("2016-10-07T19:15:00Z"));
  EXPECT_EQ(hours.back(), moment("2016-10-08T18:15:00Z"));
}

TEST(CalendarDay, has_23_hours_when_the_clocks_go_forward) {
  const Calendar newYork("en_US", "America/New_York");
  const auto texts = hourTexts(newYork, localDay(2016, 3, 13));
  ASSERT_EQ(texts.size(), 23U);
  EXPECT_EQ(texts[1], "1 AM");
  EXPECT_EQ(texts[2], "3 AM");
}

TEST(CalendarDay, has_25_hours_when_the_clocks_go_back) {
  const Calendar newYork("en_US", "America/New_York");
  const auto texts = hourTexts(newYork, localDay(2016, 11, 6));
  ASSERT_EQ(texts.size(), 25U);
  EXPECT_EQ(texts[1], "1 AM");
  EXPECT_EQ(texts[2], "1 AM");
  EXPECT_EQ(texts[3], "2 AM");
}

TEST(CalendarDay, counts_a_repeated_half_hour_as_an_hour_of_its_own) {
  const Calendar lordHowe("en_AU", "Australia/Lord_Howe");
  const auto hours = lordHowe.hoursOf(localDay(2016, 4, 3));
  ASSERT_EQ(hours.size(), 26U);
  EXPECT_EQ(hours[3] - hours[2], 30min);
  EXPECT_EQ(hours.back() - hours.front(), 24h + 30min);
}

TEST(CalendarDay, begins_at_1_if_the_clocks_skip_midnight) {
  const Calendar saoPaulo("en_US", "America/Sao_Paulo");
  const auto texts = hourTexts(saoPaulo, localDay(2016, 10, 16));
  ASSERT_EQ(texts.size(), 23U);
  EXPECT_EQ(texts.front(), "1 AM");
  EXPECT_EQ(saoPaulo.dayOf(saoPaulo.startOf(localDay(2016, 10, 16))), localDay(2016, 10, 16));
}

TEST(CalendarDay, begins_with_the_first_of_two_midnights) {
  const Calendar azores("en_US", "Atlantic/Azores");
  const auto texts = hourTexts(azores, localDay(2016, 10, 30));
  ASSERT_EQ(texts.size(), 25U);
  EXPECT_EQ(texts[0], "12 AM");
  EXPECT_EQ(texts[1], "12 AM");
}

TEST(CalendarDay, that_the_zone_left_out_has_no_hours) {
  const Calendar samoa("en_US", "Pacific/Apia");
  EXPECT_EQ(samoa.hoursOf(localDay(2011, 12, 30)).size(), 1U);
  EXPECT_EQ(samoa.hoursOf(localDay(2011, 12, 31)).size(), 25U);
}

TEST(CalendarDay, of_any_year_contains_its_moments) {
  const Calendar berlin("de_DE", "Europe/Berlin");
  for (const auto* const text : {"0000-01-01T00:00:00Z", "1969-12-31T23:59:59Z", "9999-12-31T23:59:59Z"}) {
    const Date date = moment(text);
    const LocalDay day = berlin.dayOf(date);
    EXPECT_LE(berlin.startOf(day), date) << text;
    EXPECT_GT(berlin.startOf(day + std::chrono::days(1)), date) << text;
  }
}

TEST(CalendarDay, is_utcs_in_an_unknown_zone) {
  EXPECT_EQ(Calendar("en_US", "Nowhere/Land").startOf(localDay(2016, 10, 8)), moment("2016-10-08T00:00:00Z"));
}

TEST(CalendarTexts, are_the_locales) {
  const Calendar american("en_US", "UTC");
  EXPECT_EQ(american.weekday(localDay(2016, 10, 8)), "Sat");
  EXPECT_EQ(american.weekdayAndDate(localDay(2016, 10, 8)), "Saturday, October 8");
  EXPECT_EQ(american.number(1234567), "1,234,567");
  EXPECT_EQ(american.percent(0.125), "12%");
  const Calendar german("de_DE", "UTC");
  EXPECT_EQ(german.hour(moment("2016-10-08T21:00:00Z")), "21 Uhr");
  EXPECT_EQ(german.weekdayAndDate(localDay(2016, 10, 8)), "Samstag, 8. Oktober");
  EXPECT_EQ(german.number(1234567), "1.234.567");
}

TEST(CalendarTexts, are_written_for_a_malformed_locale) {
  const Calendar calendar(std::string(300, 'x'), "UTC");
  EXPECT_FALSE(calendar.hour(moment("2016-10-08T21:00:00Z")).empty());
  EXPECT_EQ(calendar.number(7), "7");
}

}  // namespace
}  // namespace quillmar
