#include <gmock/gmock.h>

#include <array>
#include <cstddef>
#include <functional>
#include <ostream>

#include "testing/live_memory.h"
#include "tests/console/child_detail_fixture.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;
using Logs = std::vector<DNSLog>;

struct ActivityPage : ChildDetail {
  static Names domains(const Logs& logs) {
    Names all;
    for (const auto& log : logs) {
      all.push_back(log.domain);
    }
    return all;
  }
  static Logs sites(int count) {
    Logs logs;
    for (int i = 0; i < count; ++i) {
      logs.push_back(makeLog("www.site" + std::to_string(i) + ".example", i));
    }
    return logs;
  }
  // Opens a child with one device and loads the first list.
  void openWithDevice(std::optional<ChildPolicy> policy = {}) {
    open({makeDevice("d1")}, std::move(policy));
    http().forgetRequests();
  }
  std::size_t fetches() { return count("GET", "/devices/d1/logs"); }
  Names queries() {
    Names all;
    for (const auto& request : http().requests("GET", "/devices/d1/logs")) {
      all.push_back(request.url.substr(request.url.find('?') + 1));
    }
    return all;
  }
  Names runningTimers() {
    Names all;
    const auto add = [&](bool isRunning, const char* name) {
      if (isRunning) {
        all.emplace_back(name);
      }
    };
    add(page().activitySection.recent.isRefreshing(), "recent");
    add(page().activitySection.blocked.isRefreshing(), "blocked");
    add(page().activitySection.allowed.isRefreshing(), "allowed");
    add(page().devicesSection.isRunning(), "status");
    return all;
  }
  void setTab(ChildDetailTab tab) {
    EXPECT_TRUE(page().selectedTab.input(std::string(rawValue(tab))));
    app.settle();
  }
  void setFilter(Input<ActivityTimeFilter>& filter, ActivityTimeFilter to) {
    EXPECT_TRUE(filter.input(std::string(rawValue(to))));
    app.settle();
  }
  Names recentSites() { return texts(page().activitySection.recent.rows, &RecentActivityRow::site); }
};

// The live list.

using RecentActivity = ActivityPage;

TEST_F(RecentActivity, fills_at_the_first_tick_when_the_devices_are_known) {
  answerLogs({makeLog("www.example.com", 1)});
  open({makeDevice("d1")});
  EXPECT_EQ(http().calls(), Names{"GET /children/c1"});
  EXPECT_FALSE(page().activitySection.recent.isLoading());
  app.advance(1999ms);
  EXPECT_EQ(fetches(), 0U);
  app.advance(1ms);
  EXPECT_EQ(queries(), Names{"limit=20&since=2016-10-08T22:30:02Z"});
  EXPECT_EQ(recentSites(), Names{"example.com"});
  EXPECT_EQ(page().activitySection.recent.rows[0].timeText(), "Just now");
}

TEST_F(RecentActivity, is_fetched_every_2_seconds_from_each_device) {
  open({makeDevice("d1"), makeDevice("d2")});
  answerLogs({}, "d1");
  answerLogs({}, "d2");
  http().forgetRequests();
  app.advance(6s);
  EXPECT_EQ(count("GET", "/devices/d1/logs"), 3U);
  EXPECT_EQ(count("GET", "/devices/d2/logs"), 3U);
  EXPECT_EQ(queries()[0], "limit=10&since=2016-10-08T22:30:02Z");
}

TEST_F(RecentActivity, sites_of_the_same_second_keep_their_order_whichever_device_answers_first) {
  answerLogs({makeLog("a.example", 1), makeLog("b.example", 1)}, "d1");
  answerLogs({makeLog("c.example", 1)}, "d2");
  open({makeDevice("d2"), makeDevice("d1")});
  app.advance(2s);
  EXPECT_EQ(recentSites(), (Names{"c.example", "a.example", "b.example"}));
  http().hold();
  app.advance(2s);
  http().release(1);
  app.settle();
  http().releaseAll();
  app.settle();
  EXPECT_EQ(recentSites(), (Names{"c.example", "a.example", "b.example"}));
}

TEST_F(RecentActivity, without_a_device_sends_nothing_and_is_empty) {
  open();
  http().forgetRequests();
  int changes = 0;
  const auto listening = page().observe([&](const Member& /*any*/) { ++changes; });
  app.advance(10s);
  EXPECT_TRUE(http().requests().empty());
  EXPECT_EQ(changes, 0);
  EXPECT_EQ(page().activitySection.noRecentText(), "Link a device to see activity");
  EXPECT_FALSE(page().activitySection.showsRecentCaption());
}

TEST_F(RecentActivity, is_empty_at_once_when_the_last_device_is_removed) {
  answerLogs({makeLog("a.example", 1)});
  openWithDevice();
  app.advance(2s);
  EXPECT_EQ(page().activitySection.recent.logs().size(), 1U);
  http().answer("DELETE", "/children/c1/devices/d1", 204);
  page().devicesSection.deviceRows[0].unlink();
  page().devicesSection.unlinkConfirmation.confirm();
  app.advance(2s);
  EXPECT_TRUE(page().activitySection.recent.logs().empty());
  EXPECT_EQ(page().activitySection.recent.rows.size(), 0U);
  EXPECT_EQ(page().activitySection.noRecentText(), "Link a device to see activity");
}

TEST_F(RecentActivity, shows_blocked_and_allowed_sites_alike) {
  answerLogs({makeLog("a.example", 1, true), makeLog("b.example", 2, false)});
  openWithDevice();
  app.advance(2s);
  EXPECT_EQ(recentSites(), (Names{"a.example", "b.example"}));
  EXPECT_EQ(page().activitySection.recent.rows[0].badge(), "Blocked");
  EXPECT_EQ(page().activitySection.recent.rows[1].badge(), std::nullopt);
  EXPECT_TRUE(page().activitySection.showsRecentCaption());
}

TEST_F(RecentActivity, keeps_ten_of_eleven_sites_and_ten_of_ten) {
  answerLogs(sites(11));
  openWithDevice();
  app.advance(2s);
  EXPECT_EQ(page().activitySection.recent.logs().size(), 10U);
  EXPECT_EQ(page().activitySection.recent.rows.size(), 10U);
  EXPECT_EQ(recentSites().back(), "site9.example");
  answerLogs(sites(10));
  app.advance(2s);
  EXPECT_EQ(page().activitySection.recent.logs().size(), 10U);
}

TEST_F(RecentActivity, the_limit_of_ten_counts_sites_and_not_entries) {
  auto logs = sites(10);
  for (int i = 0; i < 5; ++i) {
    logs.insert(logs.begin() + i, makeLog("other" + std::to_string(i) + ".site0.example", 0));
  }
  answerLogs(logs);
  openWithDevice();
  app.advance(2s);
  EXPECT_EQ(page().activitySection.recent.logs().size(), 10U);
}

TEST_F(RecentActivity, a_site_is_listed_once_with_its_newest_entry_across_subdomains_and_case) {
  answerLogs({makeLog("old.Example.com", 30), makeLog("NEW.example.COM", 5), makeLog("example.com", 20)});
  openWithDevice();
  app.advance(2s);
  EXPECT_EQ(domains(page().activitySection.recent.logs()), Names{"NEW.example.COM"});
  EXPECT_EQ(page().activitySection.recent.rows[0].log().timestamp, "2016-10-08T22:30:55Z");
}

TEST_F(RecentActivity, shows_a_spinner_during_a_fetch) {
  openWithDevice();
  http().hold();
  app.advance(2s);
  EXPECT_TRUE(page().activitySection.recent.isLoading());
  http().complete(0, httpAnswer(200, R"({"logs":[]})"));
  app.settle();
  EXPECT_FALSE(page().activitySection.recent.isLoading());
  EXPECT_EQ(page().activitySection.noRecentText(), "No recent activity");
}

TEST_F(RecentActivity, a_failure_is_logged_and_keeps_the_list) {
  answerLogs({makeLog("a.example", 1)});
  openWithDevice();
  app.advance(2s);
  http().failAlways("GET", "/devices/d1/logs", TransportError::Kind::timedOut);
  app.advance(2s);
  EXPECT_EQ(recentSites(), Names{"a.example"});
  EXPECT_FALSE(page().activitySection.recent.isLoading());
  EXPECT_FALSE(page().errorAlert.isShown());
  EXPECT_EQ(app.machine.log.systemLines(),
            Names{"[ChildDetailView] Failed to fetch recent activity: The request timed out."});
}

TEST_F(RecentActivity, of_overlapping_fetches_the_last_answer_wins) {
  openWithDevice();
  http().hold();
  app.advance(4s);
  ASSERT_EQ(http().held().size(), 2U);
  http().complete(1, httpAnswer(200, jsonOf(DNSLogsResponse{{makeLog("new.example", 1)}})));
  app.settle();
  EXPECT_EQ(recentSites(), Names{"new.example"});
  http().complete(0, httpAnswer(200, jsonOf(DNSLogsResponse{{makeLog("old.example", 3)}})));
  app.settle();
  EXPECT_EQ(recentSites(), Names{"old.example"});
}

// Rows that are kept across refreshes.

using ActivityRows = ActivityPage;

TEST_F(ActivityRows, an_unchanged_answer_neither_announces_nor_creates_a_row) {
  answerLogs(sites(5));
  openWithDevice();
  app.advance(2s);
  Names changed;
  const auto listening = page().observe([&](const Member& member) { changed.emplace_back(member.name()); });
  int rowChanges = 0;
  const auto* const row = &page().activitySection.recent.rows[3];
  const auto rowListening =
      page().activitySection.recent.rows[3].observe([&](const Member& /*any*/) { ++rowChanges; });
  app.advance(2s);
  EXPECT_EQ(changed, (Names{"isLoadingRecentLogs", "isLoadingRecentLogs"}));
  EXPECT_EQ(rowChanges, 0);
  EXPECT_EQ(&page().activitySection.recent.rows[3], row);
}

TEST_F(ActivityRows, a_dragged_row_survives_new_rows_above_it) {
  answerLogs({makeLog("a.example", 5), makeLog("b.example", 6)});
  openWithDevice();
  app.advance(2s);
  page().activitySection.recent.rows[1].dragChanged(81, 0);
  answerLogs({makeLog("new.example", 0), makeLog("www.b.example", 1), makeLog("a.example", 5)});
  app.advance(2s);
  EXPECT_EQ(recentSites(), (Names{"new.example", "b.example", "a.example"}));
  auto& dragged = page().activitySection.recent.rows[1];
  EXPECT_EQ(dragged.offset(), 81);
  EXPECT_EQ(dragged.log().domain, "www.b.example");
  dragged.dragEnded(81, 0);
  app.settle();
  EXPECT_EQ(bodies("POST", "/children/c1/policy/allow"), Names{R"({"domain":"b.example"})"});
}

TEST_F(ActivityRows, times_update_while_the_entries_stay_the_same) {
  answerLogs({makeLog("a.example", 0)});
  openWithDevice();
  app.advance(2s);
  EXPECT_EQ(page().activitySection.recent.rows[0].timeText(), "Just now");
  app.advance(58s);
  EXPECT_EQ(page().activitySection.recent.rows[0].timeText(), "1 min ago");
}

TEST_F(ActivityRows, times_update_in_a_list_that_is_fetched_once) {
  answerLogs({makeLog("a.example", 0, true)});
  openWithDevice();
  setTab(ChildDetailTab::sitesBlocked);
  setFilter(page().activitySection.blockedTimeFilter, ActivityTimeFilter::lastHour);
  const std::size_t before = fetches();
  const auto time = [this] { return page().activitySection.blocked.rows[0].timeText(); };
  EXPECT_EQ(time(), "Just now");
  app.advance(59s);
  EXPECT_EQ(time(), "Just now");
  app.advance(1s);
  EXPECT_EQ(time(), "1 min ago");
  app.app().setScenePhase(ScenePhase::background);
  app.advance(2h);
  EXPECT_EQ(time(), "1 min ago") << "nobody looks";
  app.app().setScenePhase(ScenePhase::active);
  EXPECT_EQ(time(), "2 hours ago");
  EXPECT_EQ(fetches(), before);
}

TEST_F(ActivityRows, times_update_while_the_service_does_not_answer) {
  answerLogs({makeLog("a.example", 0)});
  openWithDevice();
  app.advance(2s);
  http().failAlways("GET", "/devices/d1/logs", TransportError::Kind::timedOut);
  app.advance(118s);
  EXPECT_EQ(page().activitySection.recent.rows[0].timeText(), "2 min ago");
}

TEST_F(ActivityRows, follow_the_allowed_sites_and_are_kept) {
  answerLogs({makeLog("www.A.example", 1, true)});
  answerPolicy("POST", "/allow", makePolicy(false, {"a.EXAMPLE"}));
  openWithDevice();
  app.advance(2s);
  EXPECT_FALSE(page().activitySection.recent.rows[0].isAlreadyAllowed());
  page().activitySection.recent.rows[0].allow();
  app.settle();
  EXPECT_TRUE(page().activitySection.recent.rows[0].isAlreadyAllowed());
  EXPECT_EQ(page().activitySection.recent.rows[0].badge(), "Allowed");
  EXPECT_EQ(page().activitySection.recent.logs().size(), 1U);
  setTab(ChildDetailTab::sitesBlocked);
  EXPECT_TRUE(page().activitySection.blocked.rows[0].isAlreadyAllowed());
  answerPolicy("DELETE", "/allow/a.EXAMPLE", makePolicy());
  page().policySection.permanentAllowedSiteRows[0].remove();
  app.settle();
  EXPECT_FALSE(page().activitySection.blocked.rows[0].isAlreadyAllowed());
  EXPECT_FALSE(page().activitySection.recent.rows[0].isAlreadyAllowed());
}

TEST_F(ActivityRows, a_row_that_outlives_its_screen_has_no_effect) {
  answerLogs({makeLog("a.example", 1)});
  openWithDevice();
  app.advance(2s);
  const auto row = page().activitySection.recent.rows.share("a.example");
  screen.reset();
  http().forgetRequests();
  row->allow();
  app.settle();
  EXPECT_TRUE(http().requests().empty());
}

// The two lists that differ mainly in their texts.

struct SiteTab {
  std::string name;
  ChildDetailTab tab;
  bool wasBlocked;
  std::string heading;
  std::string failure;
  Input<ActivityTimeFilter> ActivitySection::*filter;
  Derived<std::string> ActivitySection::*emptyHeading;
  Derived<std::string> ActivitySection::*emptyText;
  Derived<std::vector<ChoiceItem>> ActivitySection::*filters;
  SiteLog& (*log)(ActivitySection&);
  std::size_t (*rows)(const ActivitySection&);
};

void PrintTo(const SiteTab& tab, std::ostream* out) { *out << tab.name; }

const std::vector<SiteTab> siteTabs{
    {.name = "blocked",
     .tab = ChildDetailTab::sitesBlocked,
     .wasBlocked = true,
     .heading = "No sites blocked",
     .failure = "blocked logs",
     .filter = &ActivitySection::blockedTimeFilter,
     .emptyHeading = &ActivitySection::noBlockedLogsHeading,
     .emptyText = &ActivitySection::noBlockedLogsText,
     .filters = &ActivitySection::blockedFilters,
     .log = [](ActivitySection& activity) -> SiteLog& { return activity.blocked; },
     .rows = [](const ActivitySection& activity) { return activity.blocked.rows.size(); }},
    {.name = "allowed",
     .tab = ChildDetailTab::sitesAllowed,
     .wasBlocked = false,
     .heading = "No sites visited",
     .failure = "allowed logs",
     .filter = &ActivitySection::allowedTimeFilter,
     .emptyHeading = &ActivitySection::noAllowedLogsHeading,
     .emptyText = &ActivitySection::noAllowedLogsText,
     .filters = &ActivitySection::allowedFilters,
     .log = [](ActivitySection& activity) -> SiteLog& { return activity.allowed; },
     .rows = [](const ActivitySection& activity) { return activity.allowed.rows.size(); }},
};

struct SiteTabs : ActivityPage, testing::WithParamInterface<SiteTab> {
  void openTab() {
    openWithDevice();
    setTab(GetParam().tab);
  }
  ActivitySection& activity() { return page().activitySection; }
  Input<ActivityTimeFilter>& filter() { return activity().*GetParam().filter; }
  SiteLog& log() { return GetParam().log(activity()); }
  const Logs& logs() { return log().logs(); }
  ChildDetailTab otherTab() const {
    return GetParam().wasBlocked ? ChildDetailTab::sitesAllowed : ChildDetailTab::sitesBlocked;
  }
};

TEST_P(SiteTabs, fetches_on_entering_and_then_every_2_seconds) {
  answerLogs({});
  openTab();
  EXPECT_EQ(queries(), Names{"limit=100&since=2016-10-08T22:30:00Z"});
  EXPECT_EQ(runningTimers(), (Names{GetParam().name, "status"}));
  app.advance(4s);
  EXPECT_EQ(fetches(), 3U);
}

TEST_P(SiteTabs, shows_only_entries_of_its_kind_and_each_site_once) {
  answerLogs({makeLog("both.example", 1, !GetParam().wasBlocked),
              makeLog("www.both.example", 2, GetParam().wasBlocked),
              makeLog("other.example", 3, !GetParam().wasBlocked),
              makeLog("BOTH.example", 4, GetParam().wasBlocked)});
  openTab();
  EXPECT_EQ(domains(logs()), Names{"www.both.example"});
  EXPECT_EQ(GetParam().rows(activity()), 1U);
}

TEST_P(SiteTabs, keeps_all_its_sites) {
  Logs many;
  for (int i = 0; i < 50; ++i) {
    many.push_back(makeLog("site" + std::to_string(i) + ".example", i, GetParam().wasBlocked));
  }
  answerLogs(many);
  openTab();
  EXPECT_EQ(logs().size(), 50U);
}

TEST_P(SiteTabs, another_time_span_is_fetched_once_and_not_refreshed) {
  struct Span {
    ActivityTimeFilter filter;
    std::string since;
  };
  answerLogs({});
  openTab();
  for (const auto& [span, since] :
       std::vector<Span>{{ActivityTimeFilter::last5Minutes, "2016-10-08T22:26:00Z"},
                         {ActivityTimeFilter::lastHour, "2016-10-08T21:31:00Z"},
                         {ActivityTimeFilter::today, "2016-10-07T22:31:00Z"}}) {
    http().forgetRequests();
    setFilter(filter(), span);
    EXPECT_EQ(queries(), Names{"limit=100&since=" + since});
    EXPECT_EQ(runningTimers(), Names{"status"});
  }
  http().forgetRequests();
  app.advance(1min);
  EXPECT_EQ(fetches(), 0U);
}

TEST_P(SiteTabs, returning_to_real_time_fetches_at_once_and_starts_the_timer) {
  answerLogs({});
  openTab();
  setFilter(filter(), ActivityTimeFilter::lastHour);
  http().forgetRequests();
  setFilter(filter(), ActivityTimeFilter::realTime);
  EXPECT_EQ(fetches(), 1U);
  EXPECT_EQ(runningTimers(), (Names{GetParam().name, "status"}));
  app.advance(2s);
  EXPECT_EQ(fetches(), 2U);
}

TEST_P(SiteTabs, choosing_the_same_time_span_changes_nothing) {
  answerLogs({});
  openTab();
  app.advance(1s);
  http().forgetRequests();
  setFilter(filter(), ActivityTimeFilter::realTime);
  setTab(GetParam().tab);
  EXPECT_EQ(fetches(), 0U);
  app.advance(1s);
  EXPECT_EQ(fetches(), 1U) << "and the timer keeps its beat";
}

TEST_P(SiteTabs, a_time_span_changed_on_another_tab_is_fetched_when_entering_the_tab) {
  answerLogs({});
  openWithDevice();
  setTab(otherTab());
  http().forgetRequests();
  setFilter(filter(), ActivityTimeFilter::lastHour);
  EXPECT_EQ(fetches(), 0U);
  setTab(GetParam().tab);
  EXPECT_EQ(queries(), Names{"limit=100&since=2016-10-08T21:31:00Z"});
  EXPECT_EQ(runningTimers(), Names{"status"});
}

TEST_P(SiteTabs, the_time_span_and_the_list_survive_a_change_of_tab) {
  answerLogs({makeLog("a.example", 1, GetParam().wasBlocked)});
  openTab();
  setFilter(filter(), ActivityTimeFilter::today);
  http().hold();
  setTab(ChildDetailTab::realTime);
  setTab(GetParam().tab);
  EXPECT_EQ(filter()(), ActivityTimeFilter::today);
  EXPECT_EQ(logs().size(), 1U) << "shown until the next answer";
  EXPECT_TRUE(log().isLoading());
}

TEST_P(SiteTabs, without_a_device_sends_nothing) {
  open();
  http().forgetRequests();
  setTab(GetParam().tab);
  app.advance(10s);
  EXPECT_TRUE(http().requests().empty());
  EXPECT_FALSE(log().isLoading());
  EXPECT_EQ((activity().*GetParam().emptyHeading)(), "Link a device to see activity");
  EXPECT_EQ((activity().*GetParam().emptyText)(), "in the last 60 seconds");
}

TEST_P(SiteTabs, the_text_of_an_empty_list_names_the_time_span) {
  answerLogs({});
  openTab();
  EXPECT_EQ((activity().*GetParam().emptyHeading)(), GetParam().heading);
  EXPECT_EQ((activity().*GetParam().emptyText)(), "in the last 60 seconds");
  for (const auto span :
       {ActivityTimeFilter::last5Minutes, ActivityTimeFilter::lastHour, ActivityTimeFilter::today}) {
    setFilter(filter(), span);
    EXPECT_EQ((activity().*GetParam().emptyText)(), "during this time period");
  }
}

TEST_P(SiteTabs, the_chips_are_the_four_time_spans_with_one_selected) {
  openTab();
  setFilter(filter(), ActivityTimeFilter::lastHour);
  EXPECT_EQ((activity().*GetParam().filters)(),
            (std::vector<ChoiceItem>{
                {"Real-Time", false}, {"Last 5 min", false}, {"Last Hour", true}, {"Today", false}}));
}

TEST_P(SiteTabs, a_failure_is_logged_and_keeps_the_list) {
  answerLogs({makeLog("a.example", 1, GetParam().wasBlocked)});
  openTab();
  app.machine.log.clear();
  http().answerAlways("GET", "/devices/d1/logs", 403);
  app.advance(2s);
  EXPECT_EQ(logs().size(), 1U);
  EXPECT_FALSE(log().isLoading());
  EXPECT_FALSE(page().errorAlert.isShown());
  EXPECT_EQ(app.machine.log.systemLines(),
            Names{"[ChildDetailView] Failed to fetch " + GetParam().failure + ": Access denied"});
}

INSTANTIATE_TEST_SUITE_P(Tabs, SiteTabs, testing::ValuesIn(siteTabs),
                         [](const auto& tested) { return tested.param.name; });

// Timers.

using ActivityTimers = ActivityPage;

TEST_F(ActivityTimers, only_the_visible_tabs_timer_runs) {
  answerLogs({});
  openWithDevice();
  EXPECT_EQ(runningTimers(), (Names{"recent", "status"}));
  setTab(ChildDetailTab::sitesBlocked);
  EXPECT_EQ(runningTimers(), (Names{"blocked", "status"}));
  setTab(ChildDetailTab::sitesAllowed);
  EXPECT_EQ(runningTimers(), (Names{"allowed", "status"}));
  setTab(ChildDetailTab::realTime);
  EXPECT_EQ(runningTimers(), (Names{"recent", "status"}));
  http().forgetRequests();
  app.advance(10s);
  EXPECT_EQ(fetches(), 5U) << "one timer, however often the tab was changed";
}

TEST_F(ActivityTimers, a_change_of_tab_does_not_affect_the_devices_timer) {
  answerLogs({});
  openWithDevice();
  app.advance(14s);
  setTab(ChildDetailTab::sitesBlocked);
  app.advance(1s);
  EXPECT_EQ(count("GET", "/children/c1"), 1U);
}

TEST_F(ActivityTimers, no_timer_starts_while_the_screen_is_not_shown) {
  make();
  page().selectedTab = ChildDetailTab::sitesBlocked;
  page().activitySection.blockedTimeFilter = ActivityTimeFilter::today;
  page().activitySection.blockedTimeFilter = ActivityTimeFilter::realTime;
  EXPECT_TRUE(runningTimers().empty());
  openWithDevice();
  page().disappear();
  setTab(ChildDetailTab::sitesAllowed);
  page().activitySection.allowedTimeFilter = ActivityTimeFilter::today;
  app.advance(1min);
  EXPECT_TRUE(runningTimers().empty());
  EXPECT_TRUE(http().requests().empty());
}

TEST_F(ActivityTimers, appearing_starts_the_selected_tabs_timer) {
  answerLogs({});
  openWithDevice();
  setTab(ChildDetailTab::sitesAllowed);
  page().disappear();
  page().appear();
  EXPECT_EQ(runningTimers(), (Names{"allowed", "status"}));
}

TEST_F(ActivityTimers, a_sheet_over_the_screen_stops_no_timer) {
  answerLogs({});
  openWithDevice();
  page().editName();
  EXPECT_EQ(runningTimers(), (Names{"recent", "status"}));
}

TEST_F(ActivityTimers, eight_hours_with_10_percent_failures_leak_nothing) {
  openWithDevice();
  constexpr int ticksAnHour = 60 * 60 / 2;
  int failures = 0;
  std::array<std::size_t, 8> bytesAfterHours{};
  http().setLatency(300ms);
  for (int tick = 1; tick <= 8 * ticksAnHour; ++tick) {
    if (tick % 10 == 3) {
      http().fail("GET", "/devices/d1/logs", TransportError::Kind::networkConnectionLost);
      ++failures;
    } else {
      http().answer("GET", "/devices/d1/logs", 200,
                    jsonOf(DNSLogsResponse{{makeLog("now" + std::to_string(tick % 90) + ".example", 1),
                                            makeLog("always.example", 2)}}));
    }
    app.advance(2s);
    ASSERT_LE(page().activitySection.recent.rows.size(), 2U);
    if (tick % ticksAnHour == 0) {
      EXPECT_EQ(fetches(), 1800U) << "one timer, one fetch a tick";
      EXPECT_EQ(count("GET", "/children/c1"), 240U);
      EXPECT_EQ(std::ssize(app.machine.log.systemLines()), failures);
      EXPECT_EQ(runningTimers(), (Names{"recent", "status"}));
      EXPECT_FALSE(page().errorAlert.isShown());
      failures = 0;
      http().forgetRequests();
      app.machine.log.clear();
      bytesAfterHours.at(static_cast<std::size_t>(tick / ticksAnHour - 1)) = liveBytes();
    }
  }
  EXPECT_THAT(bytesAfterHours, testing::Each(bytesAfterHours.front()))
      << "all hours end in the same state, and so must weigh the same";
  app.advance(1s);
  EXPECT_FALSE(page().activitySection.recent.isLoading());
  http().forgetRequests();
  page().disappear();
  app.advance(1min);
  EXPECT_TRUE(http().requests().empty());
  EXPECT_FALSE(app.machine.dispatch.hasReadyWork());
  EXPECT_GT(app.machine.dispatch.nextDue(), app.machine.dispatch.now() + 24h)
      << "no timer and no task is left";
}

TEST_F(ActivityTimers, the_texts_are_exact) {
  make();
  EXPECT_EQ(page().activitySection.recentTitle(), "Recent Activity");
  EXPECT_EQ(page().activitySection.swipeToAllowText(), "Swipe right to allow");
  EXPECT_EQ(page().activitySection.swipeToBlockText(), "Swipe right to block");
  EXPECT_EQ(page().activitySection.recentHelp(),
            "Sites visited in the last 60 seconds will appear here. Swipe right to add to allowed list.");
  EXPECT_EQ(page().activitySection.blockedLogsTitle(), "Blocked Sites");
  EXPECT_EQ(page().activitySection.allowedLogsTitle(), "Sites Visited");
  EXPECT_EQ(page().policySection.permanentTitle(), "Sites You've Allowed");
  EXPECT_EQ(page().policySection.permanentCaption(), "These sites are always allowed. Swipe left to remove.");
  EXPECT_EQ(page().policySection.noPermanentHeading(), "No sites manually allowed yet");
  EXPECT_EQ(page().policySection.noPermanentText(),
            "Default sites (Quillmar, Microsoft, Apple, Google) are always allowed.");
}

}  // namespace
}  // namespace quillmar
