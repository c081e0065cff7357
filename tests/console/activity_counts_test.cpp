#include "console/activity_counts.h"

#include <gmock/gmock.h>

#include <chrono>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/calendar.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

constexpr LocalDay today{std::chrono::October / 8 / 2016};

// Seven days up to 8 October 2016, its hours, and entries at given local times.
struct CountedActivity : testing::Test {
  explicit CountedActivity(const std::string& zone = "UTC") : calendar("en_US", zone) {}

  ActivityScope scope(LocalDay chosen = today, std::optional<std::uint32_t> device = {}) const {
    std::vector<Date> days;
    for (int back = 6; back >= -1; --back) {
      days.push_back(calendar.startOf(today - std::chrono::days(back)));
    }
    return {.device = device, .days = days, .hours = calendar.hoursOf(chosen)};
  }
  void add(const std::string& time, const std::string& domain, bool wasBlocked = false,
           std::uint32_t device = 0) {
    DNSLog entry;
    entry.id = nextId++;
    entry.domain = domain;
    entry.timestamp = time;
    entry.wasBlocked = wasBlocked;
    log.add(device, {entry});
  }
  ActivityCounts counted(ActivityScope chosen) const {
    ActivityCounts counts(std::move(chosen));
    counts.add(log);
    return counts;
  }
  Names sites(const std::vector<SiteCount>& counts) const {
    Names all;
    for (const auto& [site, count] : counts) {
      all.push_back(std::string(log.site(site)) + " " + std::to_string(count.total()));
    }
    return all;
  }
  ActivitySpan wholeDay() const {
    const auto hours = calendar.hoursOf(today);
    return {.device = {}, .from = hours.front(), .to = hours.back(), .site = {}, .wasBlocked = {}};
  }
  Names texts(const ActivityItems& items, std::size_t limit = 100) const {
    auto all = items.matching([](const ActivityItem& /*any*/) { return true; });
    items.keepNewest(log, all, limit);
    Names names;
    for (const auto& item : all) {
      names.push_back(std::string(items.textOf(log, item)) + (item.wasBlocked ? " blocked " : " ") +
                      std::to_string(item.count));
    }
    return names;
  }
  Names listed(const ActivitySpan& span, std::size_t limit = 100) const {
    ActivityItems items(span);
    items.add(log);
    return texts(items, limit);
  }

  Calendar calendar;
  ActivityLog log{DateStyles("en_US", "UTC")};
  std::int64_t nextId = 1;
};

using ActivityHours = CountedActivity;

TEST_F(ActivityHours, contain_their_first_moment_and_not_their_end) {
  add("2016-10-08T09:59:59.999Z", "a.example");
  add("2016-10-08T10:00:00Z", "a.example");
  add("2016-10-08T10:59:59.999Z", "b.example", true);
  const auto counts = counted(scope());
  EXPECT_EQ(counts.hours().size(), 24U);
  EXPECT_EQ(counts.hours()[9], (ActivityCount{1, 0}));
  EXPECT_EQ(counts.hours()[10], (ActivityCount{1, 1}));
  EXPECT_EQ(counts.hours()[11], (ActivityCount{0, 0}));
  EXPECT_EQ(counts.day(), (ActivityCount{2, 1}));
}

TEST_F(ActivityHours, are_those_of_the_chosen_day_only) {
  add("2016-10-07T23:59:59.999Z", "a.example");
  add("2016-10-08T00:00:00Z", "b.example");
  add("2016-10-09T00:00:00Z", "c.example");
  EXPECT_EQ(counted(scope()).day(), (ActivityCount{1, 0}));
  EXPECT_EQ(counted(scope(today - std::chrono::days(1))).hours()[23], (ActivityCount{1, 0}));
}

TEST_F(ActivityHours, have_no_entry_without_a_readable_time) {
  add("soon", "a.example");
  add("2016-10-08T10:00:00Z", "a.example");
  const auto counts = counted(scope());
  EXPECT_EQ(counts.day().total(), 1U);
  EXPECT_EQ(counts.unreadable(), 1U);
  EXPECT_THAT(sites(counts.most(log, false, 10)), ElementsAre("a.example 1"));
}

TEST_F(ActivityHours, bear_times_of_any_year) {
  for (const auto* const time : {"0000-01-01T00:00:00Z", "1969-12-31T23:59:59Z", "9999-12-31T23:59:59Z"}) {
    add(time, "a.example");
  }
  const auto counts = counted(scope());
  EXPECT_EQ(counts.day().total(), 0U);
  EXPECT_EQ(counts.unreadable(), 0U);
}

struct ActivityInNewYork : CountedActivity {
  ActivityInNewYork() : CountedActivity("America/New_York") {}
};

TEST_F(ActivityInNewYork, a_repeated_hour_is_counted_by_itself) {
  add("2016-11-06T05:30:00Z", "a.example");
  add("2016-11-06T06:30:00Z", "a.example", true);
  const LocalDay clocksGoBack{std::chrono::November / 6 / 2016};
  const auto counts = counted(scope(clocksGoBack));
  ASSERT_EQ(counts.hours().size(), 25U);
  EXPECT_EQ(counts.hours()[1], (ActivityCount{1, 0}));
  EXPECT_EQ(counts.hours()[2], (ActivityCount{0, 1}));
}

using ActivityDays = CountedActivity;

TEST_F(ActivityDays, are_the_last_seven) {
  add("2016-10-01T23:59:59Z", "a.example");
  add("2016-10-02T00:00:00Z", "a.example");
  add("2016-10-08T23:59:59Z", "a.example", true);
  add("2016-10-09T00:00:00Z", "a.example");
  const auto counts = counted(scope());
  ASSERT_EQ(counts.days().size(), 7U);
  EXPECT_EQ(counts.days().front(), (ActivityCount{1, 0}));
  EXPECT_EQ(counts.days().back(), (ActivityCount{0, 1}));
}

TEST_F(ActivityDays, are_of_one_device_or_of_all) {
  add("2016-10-08T10:00:00Z", "a.example", false, 0);
  add("2016-10-08T10:00:00Z", "b.example", false, 1);
  add("never", "b.example", false, 1);
  EXPECT_EQ(counted(scope()).days().back().total(), 2U);
  const auto second = counted(scope(today, 1));
  EXPECT_EQ(second.days().back().total(), 1U);
  EXPECT_EQ(second.unreadable(), 1U);
  EXPECT_EQ(counted(scope(today, 0)).unreadable(), 0U);
}

using ActivitySites = CountedActivity;

TEST_F(ActivitySites, with_most_requests_come_first_and_equal_counts_by_name) {
  for (const auto* const name : {"b.example", "www.c.example", "a.example", "cdn.c.example"}) {
    add("2016-10-08T10:00:00Z", name);
  }
  add("2016-10-08T10:00:00Z", "blocked.example", true);
  add("2016-10-07T10:00:00Z", "a.example");
  const auto counts = counted(scope());
  EXPECT_THAT(sites(counts.most(log, false, 10)), ElementsAre("c.example 2", "a.example 1", "b.example 1"));
  EXPECT_THAT(sites(counts.most(log, false, 2)), ElementsAre("c.example 2", "a.example 1"));
  EXPECT_THAT(sites(counts.most(log, true, 10)), ElementsAre("blocked.example 1"));
  EXPECT_THAT(sites(counts.most(log, false, 0)), IsEmpty());
}

TEST_F(ActivitySites, are_first_seen_on_the_day_if_no_request_is_older) {
  add("2016-10-08T10:00:00Z", "new.example");
  add("2016-10-08T09:00:00Z", "www.new.example", true);
  add("2016-10-08T10:00:00Z", "known.example");
  add("2016-10-08T10:00:00Z", "other.example");
  add("someday", "new.example");
  EXPECT_THAT(sites(counted(scope()).firstSeen(log, 10)),
              ElementsAre("new.example 2", "known.example 1", "other.example 1"));
  EXPECT_THAT(sites(counted(scope()).firstSeen(log, 1)), ElementsAre("new.example 2"));
  EXPECT_EQ(counted(scope()).firstSeenCount(), 3U);
  add("2015-01-01T00:00:00Z", "known.example");
  EXPECT_THAT(sites(counted(scope()).firstSeen(log, 10)), ElementsAre("new.example 2", "other.example 1"));
  EXPECT_THAT(sites(counted(scope(today - std::chrono::days(1))).firstSeen(log, 10)), IsEmpty());
}

TEST_F(ActivitySites, first_seen_are_those_of_the_device) {
  add("2016-10-08T10:00:00Z", "a.example", false, 0);
  add("2016-10-07T10:00:00Z", "a.example", false, 1);
  EXPECT_THAT(sites(counted(scope(today, 0)).firstSeen(log, 10)), ElementsAre("a.example 1"));
  EXPECT_THAT(sites(counted(scope()).firstSeen(log, 10)), IsEmpty());
}

// Counting page by page gives the same result as counting all entries at once.
TEST_F(ActivitySites, counted_page_by_page_are_those_counted_at_once) {
  std::mt19937 dice(7);
  const auto any = [&](int most) { return std::uniform_int_distribution(0, most)(dice); };
  ActivityCounts paged(scope(today - std::chrono::days(2)));
  ActivityItems pagedItems(wholeDay());
  for (int page = 0; page < 50; ++page) {
    for (int entry = any(20); entry > 0; --entry) {
      const Date time = calendar.startOf(today) - std::chrono::minutes(any(60 * 24 * 8)) + 24h;
      add(any(30) == 0 ? "?" : formatISO8601(time), "www.site" + std::to_string(any(40)) + ".example",
          any(3) == 0, static_cast<std::uint32_t>(any(2)));
    }
    paged.add(log);
    pagedItems.add(log);
  }
  const auto whole = counted(paged.scope());
  EXPECT_EQ(paged.days(), whole.days());
  EXPECT_EQ(paged.hours(), whole.hours());
  EXPECT_EQ(paged.unreadable(), whole.unreadable());
  EXPECT_GT(paged.unreadable(), 0U);
  for (const bool wasBlocked : {false, true}) {
    EXPECT_EQ(sites(paged.most(log, wasBlocked, 10)), sites(whole.most(log, wasBlocked, 10)));
  }
  EXPECT_EQ(sites(paged.firstSeen(log, 10)), sites(whole.firstSeen(log, 10)));
  EXPECT_EQ(texts(pagedItems), listed(wholeDay()));
}

using ActivityListed = CountedActivity;

TEST_F(ActivityListed, is_each_site_with_its_blocked_and_allowed_requests_the_newest_first) {
  add("2016-10-08T10:00:00Z", "www.a.example");
  add("2016-10-08T12:00:00Z", "cdn.a.example");
  add("2016-10-08T11:00:00Z", "a.example", true);
  add("2016-10-08T11:00:00Z", "B.example");
  add("2016-10-07T11:00:00Z", "yesterday.example");
  add("when", "unknown.example");
  EXPECT_THAT(listed(wholeDay()), ElementsAre("a.example 2", "a.example blocked 1", "b.example 1"));
  EXPECT_THAT(listed(wholeDay(), 1), ElementsAre("a.example 2"));
}

TEST_F(ActivityListed, of_one_site_is_each_of_its_names) {
  add("2016-10-08T10:00:00Z", "www.a.example");
  add("2016-10-08T12:00:00Z", "cdn.a.example");
  add("2016-10-08T12:30:00Z", "cdn.a.example", true);
  add("2016-10-08T12:00:00Z", "b.example");
  auto span = wholeDay();
  span.site = log.siteOf(log.entries()[0].name);
  EXPECT_THAT(listed(span), ElementsAre("cdn.a.example blocked 1", "cdn.a.example 1", "www.a.example 1"));
  span.wasBlocked = false;
  EXPECT_THAT(listed(span), ElementsAre("cdn.a.example 1", "www.a.example 1"));
}

TEST_F(ActivityListed, is_of_one_device_and_between_two_moments) {
  add("2016-10-08T09:59:59Z", "a.example", false, 1);
  add("2016-10-08T10:00:00Z", "b.example", false, 1);
  add("2016-10-08T10:30:00Z", "c.example", false, 0);
  add("2016-10-08T11:00:00Z", "d.example", false, 1);
  auto span = wholeDay();
  span.from += 10h;
  span.to = span.from + 1h;
  span.device = 1;
  EXPECT_THAT(listed(span), ElementsAre("b.example 1"));
}

}  // namespace
}  // namespace quillmar
