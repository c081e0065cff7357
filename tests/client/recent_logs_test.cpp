#include "client/recent_logs.h"

#include <cstdint>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "tests/client/console_answers.h"

namespace quillmar {
namespace {

using Times = std::vector<std::string>;

const Error timedOut = TransportError{TransportError::Kind::timedOut, {}};
const Error forbidden = NetworkError::forbidden();

Result<std::vector<DNSLog>> answerWith(const Times& times) {
  std::vector<DNSLog> logs;
  for (const auto& time : times) {
    logs.push_back(logEntry(static_cast<std::int64_t>(logs.size()), time));
  }
  return logs;
}

Times times(const Result<std::vector<DNSLog>>& result) {
  Times all;
  for (const auto& entry : result.value()) {
    all.push_back(entry.timestamp);
  }
  return all;
}

std::vector<std::int64_t> ids(const Result<std::vector<DNSLog>>& result) {
  std::vector<std::int64_t> all;
  for (const auto& entry : result.value()) {
    all.push_back(entry.id);
  }
  return all;
}

TEST(RecentLogs, no_answers_give_an_empty_list) {
  EXPECT_THAT(RecentLogs(0).takeNewest(10).value(), IsEmpty());
}

TEST(RecentLogs, the_newest_entries_of_all_devices_come_first_and_the_rest_is_cut) {
  RecentLogs logs(2);
  logs.add(0, answerWith({"2016-10-08T01:00:00Z", "2016-10-08T04:00:00Z"}));
  logs.add(1, answerWith({"2016-10-08T03:00:00Z", "2016-10-08T02:00:00Z"}));
  EXPECT_THAT(times(logs.takeNewest(3)),
              ElementsAre("2016-10-08T04:00:00Z", "2016-10-08T03:00:00Z", "2016-10-08T02:00:00Z"));
}

TEST(RecentLogs, timestamps_are_compared_as_text) {
  RecentLogs logs(1);
  logs.add(0, answerWith({"2016-10-08T01:00:00Z", "", "zebra", "2016-10-08T01:00:00.5Z", "Ära"}));
  EXPECT_THAT(times(logs.takeNewest(10)),
              ElementsAre("Ära", "zebra", "2016-10-08T01:00:00Z", "2016-10-08T01:00:00.5Z", ""));
}

TEST(RecentLogs, entries_with_equal_times_are_all_kept) {
  RecentLogs logs(2);
  logs.add(0, answerWith({"t", "t"}));
  logs.add(1, answerWith({"t"}));
  EXPECT_THAT(times(logs.takeNewest(10)), ElementsAre("t", "t", "t"));
}

// Enough entries to make an unstable sort reorder them.
TEST(RecentLogs, entries_with_equal_times_are_ordered_by_device_then_as_received) {
  constexpr std::int64_t each = 40;
  RecentLogs logs(2);
  for (const std::int64_t device : {1, 0}) {
    std::vector<DNSLog> answer;
    for (std::int64_t i = 0; i < each; ++i) {
      answer.push_back(logEntry(device * each + i, "t"));
    }
    logs.add(static_cast<std::size_t>(device), std::move(answer));
  }
  std::vector<std::int64_t> expected(each + each / 2);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(ids(logs.takeNewest(expected.size())), expected);
}

TEST(RecentLogs, an_entry_keeps_all_its_fields) {
  RecentLogs logs(1);
  const DNSLog entry = logEntry(7, "2016-10-08T01:00:00Z", "a device whose id is long");
  logs.add(0, std::vector{entry});
  EXPECT_THAT(logs.takeNewest(1).value(), ElementsAre(entry));
}

TEST(RecentLogs, a_limit_of_zero_keeps_nothing) {
  RecentLogs logs(1);
  logs.add(0, answerWith({"t"}));
  EXPECT_THAT(logs.takeNewest(0).value(), IsEmpty());
}

TEST(RecentLogs, an_error_is_ignored_if_another_device_has_entries) {
  RecentLogs logs(2);
  logs.add(0, timedOut);
  logs.add(1, answerWith({"t"}));
  EXPECT_THAT(times(logs.takeNewest(10)), ElementsAre("t"));
}

TEST(RecentLogs, an_error_beside_empty_lists_is_returned) {
  RecentLogs logs(2);
  logs.add(0, answerWith({}));
  logs.add(1, timedOut);
  EXPECT_EQ(logs.takeNewest(10).error(), timedOut);
}

TEST(RecentLogs, of_two_errors_the_first_is_returned) {
  RecentLogs logs(2);
  logs.add(0, forbidden);
  logs.add(1, timedOut);
  EXPECT_EQ(logs.takeNewest(10).error(), forbidden);
}

}  // namespace
}  // namespace quillmar
