#include "presentation/relative_timestamp.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace quillmar {
namespace {

using namespace std::chrono_literals;

const Date noon = *parseISO8601("2024-03-15T12:00:00Z");
const DateStyles inSydney("en_US", "Australia/Sydney");  // eleven hours ahead in March

std::string after(Duration age) { return relativeTimestamp("2024-03-15T12:00:00Z", noon + age, inSydney); }

TEST(RelativeTimestamp, uses_the_largest_unit_and_rounds_down) {
  const std::vector<std::pair<Duration, std::string>> cases = {
      {0s, "Just now"},
      {59s, "Just now"},
      {59900ms, "Just now"},
      {59999ms, "Just now"},
      {60s, "1 min ago"},
      {119s, "1 min ago"},
      {120s, "2 min ago"},
      {59min + 59s, "59 min ago"},
      {3599999ms, "59 min ago"},
      {3600s, "1 hour ago"},
      {2h - 1s, "1 hour ago"},
      {7200s, "2 hours ago"},
      {24h - 1ms, "23 hours ago"},
      {24h, "1 day ago"},
      {48h - 1ms, "1 day ago"},
      {48h, "2 days ago"},
      {168h - 1ms, "6 days ago"},
      {168h, "Mar 15, 2024"},
      {10000h, "Mar 15, 2024"},
  };
  for (const auto& [age, text] : cases) {
    EXPECT_EQ(after(age), text) << age.count() << " ms";
  }
}

TEST(RelativeTimestamp, shows_the_future_as_just_now) {
  EXPECT_EQ(after(-1ms), "Just now");
  EXPECT_EQ(after(-10000h), "Just now");
}

TEST(RelativeTimestamp, reads_fractions_of_a_second) {
  EXPECT_EQ(relativeTimestamp("2024-03-15T11:58:59.999999Z", noon, inSydney), "1 min ago");
  EXPECT_EQ(relativeTimestamp("2024-03-15T11:59:00.001Z", noon, inSydney), "Just now");
}

TEST(RelativeTimestamp, reads_the_zone) {
  EXPECT_EQ(relativeTimestamp("2024-03-15T12:00:00+02:00", noon, inSydney), "2 hours ago");
}

TEST(RelativeTimestamp, reads_a_time_without_a_zone_as_local) {
  EXPECT_EQ(relativeTimestamp("2024-03-15T22:00:00", noon, inSydney), "1 hour ago");
  EXPECT_EQ(relativeTimestamp("2024-03-15T22:00:00.123456", noon, inSydney), "1 hour ago");
  EXPECT_EQ(relativeTimestamp("2024-03-15T22:00:00 or so", noon, inSydney), "1 hour ago");
}

TEST(RelativeTimestamp, falls_back_to_local_time_when_the_zone_cannot_be_read) {
  EXPECT_EQ(relativeTimestamp("2024-03-15T22:00:00z", noon, inSydney), "1 hour ago");
}

TEST(RelativeTimestamp, shows_the_date_in_the_devices_time_zone) {
  EXPECT_EQ(relativeTimestamp("2024-03-15T12:59:59Z", noon + 1000h, inSydney), "Mar 15, 2024");
  EXPECT_EQ(relativeTimestamp("2024-03-15T13:00:00Z", noon + 1000h, inSydney), "Mar 16, 2024");
}

TEST(RelativeTimestamp, returns_a_text_that_is_not_a_time_unchanged) {
  for (const std::string text : {"", "yesterday", "2024-03-15", "2024-13-15T12:00:00Z", "2024-02-30T12:00:00",
                                 "é\u0301", "\xff", " 2024-03-15T12:00:00Z", "%s%n"}) {
    EXPECT_EQ(relativeTimestamp(text, noon, inSydney), text);
  }
}

}  // namespace
}  // namespace quillmar
