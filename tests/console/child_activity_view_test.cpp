#include "console/child_activity_view.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/console/child_detail_fixture.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Names = std::vector<std::string>;
using Logs = std::vector<DNSLog>;

// The page of a child's activity, with a service that sends the devices' entries in pages.
struct ActivityScreen : ChildDetail {
  // The entries of each device, newest first. A request gets the page at its limit and offset.
  std::map<std::string, Logs> entries;
  // The service's own limit of a page.
  std::size_t largestPage = 1000;
  std::shared_ptr<ChildActivityView> view;

  void openPage(std::vector<Device> devices = {makeDevice("d1")}, std::optional<ChildPolicy> policy = {}) {
    open(std::move(devices), std::move(policy));
    http().forgetRequests();
    EXPECT_TRUE(page().seeAllActivity());
    view = std::static_pointer_cast<ChildActivityView>(page().showAllActivity.nested().front().object);
  }
  ActivityFilling& filling() { return view->filling; }

  // Answers the pending requests for pages, and those that follow from the answers.
  void serve(std::size_t most = 100'000) {
    app.settle();
    for (std::size_t served = 0; served < most; ++served) {
      const auto held = http().held();
      const auto found = std::ranges::find_if(held, isForPage);
      if (found == held.end()) {
        return;
      }
      asked.push_back(found->url.substr(found->url.find("/devices")));
      http().complete(static_cast<std::size_t>(found - held.begin()), answerTo(asked.back()));
      app.settle();
    }
  }
  // Advances time by minutes until no request is pending.
  void serveAll() {
    serve();
    while (filling().state() == FillingState::loading) {
      app.advance(60s);
      serve();
    }
  }
  static bool isForPage(const HttpRequest& request) {
    return request.url.find("&offset=") != std::string::npos;
  }
  DataTaskResult answerTo(const std::string& request) {
    const std::string device = request.substr(9, request.find('/', 9) - 9);
    const auto number = [&](const std::string& key) {
      return static_cast<std::size_t>(std::atoll(request.c_str() + request.find(key) + key.size()));
    };
    const Logs& all = entries[device];
    const std::size_t begin = std::min(number("&offset="), all.size());
    const std::size_t size = std::min({number("?limit="), largestPage, all.size() - begin});
    const auto first = all.begin() + static_cast<std::ptrdiff_t>(begin);
    return httpAnswer(200, jsonOf(DNSLogsResponse{Logs(first, first + static_cast<std::ptrdiff_t>(size))}));
  }
  Names asked;

  // Entries one second apart, the newest `secondsAgo` seconds old.
  static Logs run(int count, int secondsAgo = 0, const std::string& domain = "www.a.example") {
    Logs logs;
    for (int i = 0; i < count; ++i) {
      logs.push_back(makeLog(domain, secondsAgo + i));
    }
    return logs;
  }
  static Names numbers(const Rows<ActivityBar>& bars) { return texts(bars, &ActivityBar::number); }
  static Names names(const Rows<ActivityBar>& bars) { return texts(bars, &ActivityBar::name); }
  void type(const std::string& text) { EXPECT_TRUE(view->filter.text.input(text)); }
  std::shared_ptr<LogRow> siteRow(std::size_t index) {
    return std::static_pointer_cast<LogRow>(view->siteRows.nested()[index].object);
  }
  Names rows() { return texts(view->siteRows, &LogRow::site); }
  static std::string plain(std::string text) {
    const std::string narrowSpace = "\u202F";
    for (auto at = text.find(narrowSpace); at != std::string::npos; at = text.find(narrowSpace)) {
      text.replace(at, narrowSpace.size(), " ");
    }
    return text;
  }

  ActivityScreen() {
    for (const auto* const id : {"d1", "d2", "d3"}) {
      // The lists on the child's page request the same path.
      http().hold("GET", std::string("/devices/") + id + "/logs");
    }
  }
};

// Filling.

using ActivityFillingTest = ActivityScreen;

TEST_F(ActivityFillingTest, asks_for_page_after_page_until_one_is_empty) {
  entries["d1"] = run(2500);
  openPage();
  EXPECT_EQ(filling().state(), FillingState::loading);
  serve();
  EXPECT_THAT(
      asked,
      ElementsAre("/devices/d1/logs?limit=1000&offset=0", "/devices/d1/logs?limit=1000&offset=1000",
                  "/devices/d1/logs?limit=1000&offset=2000", "/devices/d1/logs?limit=1000&offset=2500"));
  EXPECT_EQ(filling().state(), FillingState::complete);
  EXPECT_EQ(plain(filling().progressText()), "2,500 requests, back to Oct 8, 2016 at 9:49 PM");
}

TEST_F(ActivityFillingTest, takes_pages_that_are_shorter_than_asked_for) {
  entries["d1"] = run(5);
  largestPage = 2;
  openPage();
  serve();
  EXPECT_EQ(asked.size(), 4U);
  EXPECT_THAT(filling().progressText(), StartsWith("5 requests"));
}

TEST_F(ActivityFillingTest, takes_pages_that_are_longer_than_asked_for) {
  entries["d1"] = run(5000);
  openPage();
  app.settle();
  http().complete(0, httpAnswer(200, jsonOf(DNSLogsResponse{entries["d1"]})));
  serve();
  EXPECT_EQ(asked, Names{"/devices/d1/logs?limit=1000&offset=5000"});
  EXPECT_THAT(filling().progressText(), StartsWith("5,000 requests"));
  EXPECT_EQ(filling().state(), FillingState::complete);
}

TEST_F(ActivityFillingTest, counts_an_entry_once_when_new_ones_shift_the_pages) {
  entries["d1"] = run(6, 10);
  largestPage = 3;
  openPage();
  serve(1);
  auto& all = entries["d1"];
  all.insert(all.begin(), makeLog("new.example", 1));
  serve();
  EXPECT_THAT(filling().progressText(), StartsWith("6 requests"))
      << "the new one comes with the next opening";
  EXPECT_EQ(filling().state(), FillingState::complete);
}

TEST_F(ActivityFillingTest, asks_a_device_for_one_page_at_a_time_and_the_devices_side_by_side) {
  entries["d1"] = run(2000);
  entries["d2"] = run(2000);
  openPage({makeDevice("d1"), makeDevice("d2")});
  app.settle();
  const auto waiting = [&] {
    const auto held = http().held();
    return std::ranges::count_if(held, isForPage);
  };
  EXPECT_EQ(waiting(), 2);
  serve(1);
  EXPECT_EQ(waiting(), 2);
  app.advance(5s);
  EXPECT_EQ(waiting(), 2);
}

TEST_F(ActivityFillingTest, sends_no_more_than_50_requests_in_any_minute) {
  entries["d1"] = run(300);
  largestPage = 1;
  openPage();
  serve();
  EXPECT_EQ(asked.size(), 50U);
  EXPECT_EQ(filling().state(), FillingState::loading);
  app.advance(59s + 999ms);
  serve();
  EXPECT_EQ(asked.size(), 50U);
  app.advance(1ms);
  serve();
  EXPECT_EQ(asked.size(), 100U);
}

TEST_F(ActivityFillingTest, keeps_the_pace_when_the_clock_jumps) {
  entries["d1"] = run(300);
  largestPage = 1;
  openPage();
  serve(20);
  app.machine.dispatch.jump(30s);
  serve();
  EXPECT_EQ(asked.size(), 50U);
  app.advance(30s);
  serve();
  EXPECT_LE(asked.size(), 100U);
}

TEST_F(ActivityFillingTest, stops_and_goes_on_where_it_was) {
  entries["d1"] = run(6);
  largestPage = 2;
  openPage();
  serve(1);
  EXPECT_TRUE(filling().stop());
  EXPECT_EQ(filling().state(), FillingState::stopped);
  EXPECT_FALSE(filling().stop.isEnabled());
  serve(1);
  EXPECT_THAT(filling().progressText(), StartsWith("4 requests")) << "what was under way still counts";
  app.advance(5min);
  serve();
  EXPECT_EQ(asked.size(), 2U);
  EXPECT_TRUE(filling().goOn());
  serve();
  EXPECT_EQ(asked.back(), "/devices/d1/logs?limit=1000&offset=6");
  EXPECT_EQ(filling().state(), FillingState::complete);
  EXPECT_FALSE(filling().goOn.isEnabled());
}

TEST_F(ActivityFillingTest, keeps_what_it_has_when_a_page_fails_and_tries_again) {
  entries["d1"] = run(4);
  largestPage = 2;
  openPage();
  serve(1);
  app.settle();
  http().complete(0, httpAnswer(500, R"({"error":"Out of order"})"));
  app.settle();
  EXPECT_EQ(filling().state(), FillingState::failed);
  EXPECT_EQ(filling().failureText(), "Out of order");
  EXPECT_THAT(filling().progressText(), StartsWith("2 requests"));
  EXPECT_FALSE(page().errorAlert.isShown());
  EXPECT_EQ(view->content(), ActivityContent::charts);

  EXPECT_TRUE(filling().tryAgain());
  EXPECT_EQ(filling().failureText(), std::nullopt);
  serve();
  EXPECT_EQ(asked[1], "/devices/d1/logs?limit=1000&offset=2");
  EXPECT_EQ(filling().state(), FillingState::complete);
  EXPECT_FALSE(filling().tryAgain());
}

TEST_F(ActivityFillingTest, is_tried_again_by_the_key_that_refreshes_and_by_nothing_else) {
  entries["d1"] = run(4);
  largestPage = 2;
  openPage();
  EXPECT_FALSE(view->keys.press({Command::refresh})) << "it is loading";
  serve(1);
  EXPECT_TRUE(filling().stop());
  EXPECT_FALSE(view->keys.press({Command::refresh})) << "the person has stopped it";
  EXPECT_TRUE(filling().goOn());
  http().complete(0, httpAnswer(500, R"({"error":"Out of order"})"));
  app.settle();
  EXPECT_TRUE(view->keys.press({Command::refresh}));
  serve();
  EXPECT_EQ(filling().state(), FillingState::complete);
  EXPECT_FALSE(view->keys.press({Command::refresh})) << "there is nothing more";
}

TEST_F(ActivityFillingTest, goes_on_with_the_other_devices_when_one_has_gone) {
  entries["d2"] = run(3);
  openPage({makeDevice("d1"), makeDevice("d2")});
  app.settle();
  const auto held = http().held();
  http().complete(static_cast<std::size_t>(std::ranges::find_if(held, isForPage) - held.begin()),
                  httpAnswer(404));
  serve();
  EXPECT_THAT(filling().progressText(), StartsWith("3 requests"));
  EXPECT_EQ(filling().state(), FillingState::failed);
  EXPECT_EQ(filling().failureText(), "Device d1: Resource not found");
}

TEST_F(ActivityFillingTest, asks_a_device_no_more_that_is_no_longer_linked_and_keeps_its_entries) {
  entries["d1"] = run(4);
  entries["d2"] = run(4);
  largestPage = 2;
  openPage({makeDevice("d1"), makeDevice("d2")});
  serve(2);
  answerChild({makeDevice("d2")});
  app.advance(15s);
  serve();
  EXPECT_EQ(filling().state(), FillingState::complete);
  EXPECT_EQ(std::ranges::count(asked, "/devices/d1/logs?limit=1000&offset=4"), 0);
  EXPECT_EQ(std::ranges::count(asked, "/devices/d2/logs?limit=1000&offset=4"), 1);
  EXPECT_THAT(filling().progressText(), StartsWith("8 requests"));
}

TEST_F(ActivityFillingTest, starts_with_a_device_that_is_linked_later) {
  openPage({});
  EXPECT_EQ(view->content(), ActivityContent::noDevices);
  entries["d2"] = run(1);
  answerChild({makeDevice("d2")});
  app.advance(15s);
  serve();
  EXPECT_EQ(view->content(), ActivityContent::charts);
}

TEST_F(ActivityFillingTest, ends_a_service_that_repeats_itself_forever) {
  entries["d1"] = run(2);
  openPage();
  const auto forever = httpAnswer(200, jsonOf(DNSLogsResponse{entries["d1"]}));
  for (int i = 0; i < 20 && filling().state() == FillingState::loading; ++i) {
    app.settle();
    const auto held = http().held();
    http().complete(static_cast<std::size_t>(std::ranges::find_if(held, isForPage) - held.begin()), forever);
    app.settle();
    asked.emplace_back();
  }
  EXPECT_EQ(asked.size(), 4U);
  EXPECT_EQ(filling().failureText(), "The service keeps sending the same entries.");
  EXPECT_THAT(filling().progressText(), StartsWith("2 requests"));
}

TEST_F(ActivityFillingTest, sends_nothing_after_the_page_has_closed) {
  entries["d1"] = run(5000);
  largestPage = 10;
  openPage();
  serve(3);
  const auto kept = view;
  EXPECT_TRUE(view->done());
  EXPECT_FALSE(page().showAllActivity());
  serve();
  const auto before = asked.size();
  EXPECT_LE(before, 4U) << "only what was under way is answered";
  const auto entriesBefore = filling().progressText();
  EXPECT_FALSE(filling().tryAgain());
  filling().stop();
  filling().goOn();
  app.advance(10min);
  serve();
  EXPECT_EQ(asked.size(), before);
  EXPECT_EQ(filling().progressText(), entriesBefore);
}

TEST_F(ActivityFillingTest, ends_at_200000_entries_and_says_from_when_on) {
  std::int64_t id = 1;
  Logs all;
  for (int i = 0; i < 201'000; ++i) {
    auto log = makeLog("www.site" + std::to_string(i % 500) + ".example", i * 3, i % 5 == 0);
    log.id = ++id;
    all.push_back(std::move(log));
  }
  entries["d1"] = std::move(all);
  openPage();
  serveAll();
  EXPECT_EQ(filling().state(), FillingState::full);
  EXPECT_EQ(asked.size(), 200U);
  EXPECT_EQ(
      plain(*filling().limitText()),
      "These are the newest 200,000 requests. Earlier than Oct 1, 2016 at 11:51 PM some or all are missing.");
  EXPECT_EQ(view->daysNumber(), "199,821 requests, 39,965 blocked");
  EXPECT_EQ(view->visitedBars.size(), 10U);
}

// The charts. It is 8 October 2016, 22:31.

using ActivityChartsTest = ActivityScreen;

TEST_F(ActivityChartsTest, are_not_there_before_there_is_activity) {
  openPage();
  EXPECT_EQ(view->content(), ActivityContent::waiting);
  EXPECT_EQ(view->title(), "Mia's Activity");
  EXPECT_EQ(filling().progressText(), "Loading activity...");
  serve();
  EXPECT_EQ(view->content(), ActivityContent::empty);
}

TEST_F(ActivityChartsTest, have_a_name_and_a_number_for_each_hour) {
  entries["d1"] = {makeLog("a.example", 60), makeLog("b.example", 120, true), makeLog("c.example", 3600)};
  openPage();
  serve();
  ASSERT_EQ(view->hourBars.size(), 24U);
  EXPECT_EQ(plain(view->hourBars[22].name()), "10 PM to 11 PM");
  EXPECT_EQ(view->hourBars[22].number(), "2 requests, 1 blocked");
  EXPECT_EQ(view->hourBars[21].number(), "1 request");
  EXPECT_EQ(view->hourBars[20].number(), "No requests");
  EXPECT_EQ(view->hourBars[22].allowed(), 0.5);
  EXPECT_EQ(view->hourBars[22].blocked(), 0.5);
  EXPECT_EQ(view->hourBars[20].allowed(), 0.0);
  EXPECT_EQ(plain(view->hourBars[0].label()), "12 AM");
  EXPECT_EQ(view->hourBars[1].label(), "");
  EXPECT_EQ(view->hoursTitle(), "Today");
  EXPECT_EQ(view->hoursNumber(), "3 requests, 1 blocked");
  EXPECT_EQ(view->hoursTop(), "2");
  EXPECT_EQ(view->hoursMiddle(), "1");
}

TEST_F(ActivityChartsTest, have_a_round_scale) {
  entries["d1"] = run(41, 60);
  openPage();
  serve();
  EXPECT_EQ(view->hoursTop(), "60");
  EXPECT_EQ(view->hoursMiddle(), "30");
}

TEST_F(ActivityChartsTest, have_the_last_seven_days) {
  constexpr int day = 86400;
  entries["d1"] = {makeLog("a.example", 1), makeLog("a.example", day), makeLog("a.example", 6 * day),
                   makeLog("a.example", 7 * day)};
  openPage();
  serve();
  EXPECT_THAT(texts(view->dayBars, &ActivityBar::label),
              ElementsAre("Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"));
  EXPECT_EQ(view->dayBars[0].name(), "Sunday, October 2");
  EXPECT_EQ(view->dayBars[0].number(), "1 request");
  EXPECT_EQ(view->dayBars[5].name(), "Yesterday");
  EXPECT_EQ(view->dayBars[6].name(), "Today");
  EXPECT_TRUE(view->dayBars[6].isSelected());
  EXPECT_EQ(view->daysNumber(), "3 requests");
}

TEST_F(ActivityChartsTest, show_the_day_whose_bar_is_chosen) {
  entries["d1"] = {makeLog("a.example", 1), makeLog("b.example", 86400)};
  openPage();
  serve();
  EXPECT_THAT(rows(), ElementsAre("a.example"));
  view->dayBars[5].choose();
  EXPECT_TRUE(view->dayBars[5].isSelected());
  EXPECT_FALSE(view->dayBars[6].isSelected());
  EXPECT_EQ(view->hoursTitle(), "Yesterday");
  EXPECT_EQ(view->newSitesTitle(), "First Seen Yesterday");
  EXPECT_THAT(rows(), ElementsAre("b.example"));
  EXPECT_THAT(names(view->visitedBars), ElementsAre("b.example"));
  view->dayBars[0].choose();
  EXPECT_EQ(view->newSitesTitle(), "First Seen on Sunday, October 2");
  EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(ActivityChartsTest, share_out_the_sites_of_the_day) {
  entries["d1"] = {makeLog("www.a.example", 1), makeLog("b.example", 2), makeLog("cdn.a.example", 3),
                   makeLog("a.example", 4), makeLog("ads.example", 5, true)};
  openPage();
  serve();
  EXPECT_THAT(names(view->visitedBars), ElementsAre("a.example", "b.example"));
  EXPECT_THAT(numbers(view->visitedBars), ElementsAre("3 requests, 75%", "1 request, 25%"));
  EXPECT_EQ(view->visitedBars[0].allowed(), 1.0);
  EXPECT_THAT(numbers(view->blockedBars), ElementsAre("1 request, 100%"));
  EXPECT_EQ(view->blockedBars[0].blocked(), 1.0);
  EXPECT_EQ(view->blockedBars[0].allowed(), 0.0);
}

TEST_F(ActivityChartsTest, say_less_than_one_percent_and_never_none) {
  entries["d1"] = run(300, 60);
  entries["d1"].push_back(makeLog("b.example", 400));
  openPage();
  serve();
  EXPECT_THAT(numbers(view->visitedBars), ElementsAre("300 requests, 100%", "1 request, <1%"));
}

TEST_F(ActivityChartsTest, know_what_is_new_only_when_earlier_days_are_loaded) {
  entries["d1"] = {makeLog("new.example", 1), makeLog("known.example", 2), makeLog("known.example", 86400),
                   makeLog("old.example", 90000)};
  largestPage = 2;
  openPage();
  serve(1);
  EXPECT_THAT(names(view->newSiteBars), IsEmpty());
  EXPECT_EQ(view->newSitesCaption(), "Shown once earlier days are loaded");
  serve(1);
  EXPECT_THAT(names(view->newSiteBars), ElementsAre("new.example"));
  EXPECT_EQ(view->newSitesTitle(), "First Seen Today");
  EXPECT_EQ(view->newSitesCaption(), "Not in any request since Oct 7, 2016");
}

TEST_F(ActivityChartsTest, know_that_there_is_nothing_to_compare_with) {
  entries["d1"] = {makeLog("new.example", 1)};
  openPage();
  serve();
  EXPECT_THAT(names(view->newSiteBars), ElementsAre("new.example"));
  EXPECT_EQ(view->newSitesCaption(), "There are no earlier requests to compare with");
}

TEST_F(ActivityChartsTest, lead_to_all_new_sites_if_there_are_many) {
  for (int i = 0; i < 12; ++i) {
    entries["d1"].push_back(makeLog("site" + std::to_string(i) + ".example", i));
  }
  entries["d1"].push_back(makeLog("known.example", 20));
  entries["d1"].push_back(makeLog("known.example", 86400));
  openPage();
  serve();
  EXPECT_EQ(view->newSiteBars.size(), 10U);
  EXPECT_EQ(view->allNewSitesTitle(), "Show All 12");
  EXPECT_EQ(rows().size(), 13U);
  view->showNewSites();
  EXPECT_EQ(rows().size(), 12U);
  EXPECT_EQ(view->rowsTitle(), "First Seen Today");
}

TEST_F(ActivityChartsTest, are_of_one_device_or_of_all_together) {
  entries["d1"] = {makeLog("a.example", 1)};
  entries["d2"] = {makeLog("b.example", 1)};
  openPage({makeDevice("d1"), makeDevice("d2")});
  serve();
  EXPECT_TRUE(view->hasDeviceChoices());
  const auto titles = [&] {
    Names all;
    for (const auto& [title, isSelected] : view->deviceChoices()) {
      all.push_back(title + (isSelected ? " *" : ""));
    }
    return all;
  };
  EXPECT_THAT(titles(), ElementsAre("All Devices *", "Device d1", "Device d2"));
  EXPECT_THAT(rows(), ElementsAre("a.example", "b.example"));
  view->chooseDevice(2);
  EXPECT_THAT(titles(), ElementsAre("All Devices", "Device d1", "Device d2 *"));
  EXPECT_THAT(rows(), ElementsAre("b.example"));
  EXPECT_EQ(view->daysNumber(), "1 request");
  view->chooseDevice(3);
  view->chooseDevice(-1);
  EXPECT_THAT(rows(), ElementsAre("b.example"));
  view->chooseDevice(0);
  EXPECT_EQ(view->daysNumber(), "2 requests");
}

TEST_F(ActivityChartsTest, say_how_many_times_are_unreadable) {
  entries["d1"] = {makeLog("a.example", 1), makeLog("b.example", 1)};
  entries["d1"][1].timestamp = "noon";
  openPage();
  serve();
  EXPECT_EQ(view->hoursNumber(), "1 request");
  EXPECT_EQ(view->unreadableText(), "1 request has no readable time and can't be shown in the charts.");
}

TEST_F(ActivityChartsTest, move_on_at_midnight) {
  entries["d1"] = {makeLog("a.example", 1)};
  openPage();
  serve();
  EXPECT_EQ(view->dayBars[6].number(), "1 request");
  app.advance(89min);
  EXPECT_EQ(view->dayBars[6].number(), "No requests");
  EXPECT_EQ(view->dayBars[5].number(), "1 request");
  EXPECT_EQ(view->hoursTitle(), "Today") << "who looked at today, looks at today";
  EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(ActivityChartsTest, follow_a_clock_that_jumps) {
  entries["d1"] = {makeLog("a.example", 1)};
  openPage();
  serve();
  app.machine.dispatch.jump(3 * 24h);
  app.advance(1s);
  EXPECT_EQ(view->dayBars[6].number(), "No requests");
  EXPECT_EQ(view->dayBars[3].number(), "1 request");
  EXPECT_EQ(view->dayBars[3].name(), "Saturday, October 8");
  EXPECT_EQ(view->hoursTitle(), "Today");
}

TEST_F(ActivityChartsTest, bear_entries_in_any_order_and_of_any_time) {
  entries["d1"] = {makeLog("a.example", 86400), makeLog("b.example", 1), makeLog("c.example", -100'000),
                   makeLog("a.example", 2)};
  entries["d1"].push_back(makeLog("old.example", 0));
  entries["d1"].back().timestamp = "0001-01-01T00:00:00Z";
  entries["d1"].push_back(makeLog("late.example", 0));
  entries["d1"].back().timestamp = "9999-12-31T23:59:59Z";
  largestPage = 2;
  openPage();
  serve();
  EXPECT_EQ(view->hoursNumber(), "2 requests");
  EXPECT_EQ(view->daysNumber(), "3 requests");
  EXPECT_THAT(rows(), ElementsAre("b.example", "a.example"));
  EXPECT_THAT(names(view->newSiteBars), ElementsAre("b.example"));
}

TEST_F(ActivityChartsTest, stay_at_a_chosen_day_until_it_leaves_the_seven) {
  openPage();
  entries["d1"] = {makeLog("a.example", 1)};
  serve();
  view->dayBars[1].choose();
  app.advance(24h);
  EXPECT_TRUE(view->dayBars[0].isSelected());
  app.advance(24h);
  EXPECT_TRUE(view->dayBars[6].isSelected());
  EXPECT_EQ(view->hoursTitle(), "Today");
}

TEST_F(ActivityChartsTest, have_23_bars_when_the_clocks_go_forward) {
  app.machine.deviceInfo.deviceTimeZone = "America/Asuncion";
  openPage();
  entries["d1"] = {makeLog("a.example", 1)};
  serve();
  view->dayBars[0].choose();
  EXPECT_EQ(view->hoursTitle(), "Sunday, October 2");
  ASSERT_EQ(view->hourBars.size(), 23U);
  EXPECT_EQ(plain(view->hourBars[0].name()), "1 AM to 2 AM");
  view->dayBars[1].choose();
  EXPECT_EQ(view->hourBars.size(), 24U);
}

// The rows.

using ActivityRowsTest = ActivityScreen;

TEST_F(ActivityRowsTest, are_those_of_the_bar_that_was_chosen) {
  entries["d1"] = {makeLog("www.a.example", 60), makeLog("cdn.a.example", 120, true),
                   makeLog("b.example", 180), makeLog("b.example", 7200)};
  openPage();
  serve();
  EXPECT_EQ(view->rowsTitle(), "All Sites");
  EXPECT_EQ(view->rowsCount(), "3");
  EXPECT_THAT(rows(), ElementsAre("a.example", "a.example", "b.example"));
  EXPECT_EQ(view->siteRows[2].countText(), "2 requests");
  EXPECT_EQ(plain(view->siteRows[2].timeText()), "10:28 PM");
  EXPECT_FALSE(view->showWholeDay.isEnabled());

  view->hourBars[20].choose();
  EXPECT_EQ(plain(view->rowsTitle()), "8 PM to 9 PM");
  EXPECT_THAT(rows(), ElementsAre("b.example"));
  EXPECT_EQ(view->siteRows[0].countText(), "1 request");
  EXPECT_TRUE(view->hourBars[20].isSelected());

  view->visitedBars[1].choose();
  EXPECT_EQ(view->rowsTitle(), "a.example");
  EXPECT_TRUE(view->showsNames());
  ASSERT_EQ(view->siteRows.size(), 1U);
  EXPECT_EQ(view->siteRows[0].log().domain, "www.a.example");
  EXPECT_FALSE(view->hourBars[20].isSelected());

  view->blockedBars[0].choose();
  ASSERT_EQ(view->siteRows.size(), 1U);
  EXPECT_EQ(view->siteRows[0].log().domain, "cdn.a.example");

  EXPECT_TRUE(view->showWholeDay());
  EXPECT_EQ(rows().size(), 3U);
}

TEST_F(ActivityRowsTest, of_a_bar_that_is_chosen_again_are_the_whole_day) {
  entries["d1"] = {makeLog("a.example", 60), makeLog("b.example", 7200)};
  openPage();
  serve();
  view->hourBars[20].choose();
  view->hourBars[20].choose();
  EXPECT_EQ(rows().size(), 2U);
  EXPECT_FALSE(view->hourBars[20].isSelected());
}

TEST_F(ActivityRowsTest, are_filtered_as_one_types) {
  entries["d1"] = {makeLog("games.example", 1), makeLog("school.example", 2), makeLog("MoreGames.example", 3),
                   makeLog("новости.example", 4)};
  openPage();
  serve();
  EXPECT_TRUE(view->filter.open());
  type(" GÄMES ");
  EXPECT_THAT(rows(), ElementsAre("games.example", "moregames.example"));
  EXPECT_EQ(view->rowsCount(), "2");
  type("НОВ");
  EXPECT_THAT(rows(), ElementsAre("новости.example"));
  type("nowhere");
  EXPECT_THAT(rows(), IsEmpty());
  EXPECT_EQ(view->noRowsText(), "No match");
  EXPECT_TRUE(view->filter.close());
  EXPECT_EQ(rows().size(), 4U);
}

TEST_F(ActivityRowsTest, of_one_site_are_filtered_by_its_names) {
  entries["d1"] = {makeLog("img.a.example", 1), makeLog("api.a.example", 2)};
  openPage();
  serve();
  view->visitedBars[0].choose();
  type("api");
  ASSERT_EQ(view->siteRows.size(), 1U);
  EXPECT_EQ(view->siteRows[0].log().domain, "api.a.example");
}

TEST_F(ActivityRowsTest, stay_filtered_while_pages_arrive_and_on_another_day) {
  entries["d1"] = {makeLog("a.example", 1), makeLog("b.example", 2), makeLog("ab.example", 3),
                   makeLog("old.example", 100'000)};
  largestPage = 2;
  openPage();
  serve(1);
  EXPECT_TRUE(view->filter.open());
  type("a.");
  EXPECT_THAT(rows(), ElementsAre("a.example"));
  type("b.");
  serve();
  EXPECT_THAT(rows(), ElementsAre("b.example", "ab.example"));
  view->dayBars[5].choose();
  EXPECT_THAT(rows(), IsEmpty());
  EXPECT_EQ(view->noRowsText(), "No match");
}

TEST_F(ActivityRowsTest, that_are_none_are_not_blamed_on_the_filter) {
  entries["d1"] = {makeLog("a.example", 1), makeLog("b.example", 2)};
  openPage();
  serve();
  type("a");
  view->dayBars[0].choose();
  EXPECT_EQ(view->noRowsText(), "No requests");
}

TEST_F(ActivityRowsTest, can_be_found_if_there_is_a_choice) {
  openPage();
  EXPECT_FALSE(view->filter.open());
  entries["d1"] = {makeLog("a.example", 1), makeLog("b.example", 2)};
  largestPage = 1;
  serve(1);
  EXPECT_FALSE(view->keys.press({Command::find}));
  serve();
  EXPECT_TRUE(view->keys.press({Command::find}));
  EXPECT_TRUE(view->filter.isOpen());
}

TEST_F(ActivityRowsTest, are_another_selection_only_if_the_person_selects) {
  entries["d1"] = {makeLog("a.example", 1), makeLog("b.example", 2), makeLog("c.example", 100'000)};
  largestPage = 1;
  openPage();
  serve(1);
  const auto selection = [this] { return view->shownSites.revision(); };
  auto before = selection();
  serve();
  EXPECT_EQ(selection(), before);
  for (const auto& select : std::vector<std::function<void()>>{
           [this] { type("a"); }, [this] { view->hourBars[20].choose(); },
           [this] { view->dayBars[5].choose(); }, [this] { view->chooseDevice(1); }}) {
    select();
    EXPECT_NE(selection(), before);
    before = selection();
  }
}

TEST_F(ActivityRowsTest, of_another_selection_are_shown_in_those_there_are) {
  entries["d1"] = {makeLog("a.example", 1), makeLog("b.example", 2), makeLog("c.example", 3, true)};
  openPage();
  serve();
  type("a.");
  const auto* const row = &view->siteRows[0];
  type("b.");
  EXPECT_EQ(&view->siteRows[0], row);
  EXPECT_EQ(row->site(), "b.example");
  type("c.");
  EXPECT_EQ(rows(), Names{"c.example"});
  EXPECT_NE(dynamic_cast<BlockedSiteRow*>(&view->siteRows[0]), nullptr);
}

TEST_F(ActivityRowsTest, that_are_being_swiped_are_shown_no_other_site) {
  entries["d1"] = {makeLog("a.example", 1), makeLog("b.example", 2)};
  openPage();
  serve();
  type("a.");
  const auto swiped = siteRow(0);
  swiped->dragChanged(60, 0);
  type("b.");
  EXPECT_NE(siteRow(0), swiped);
  EXPECT_EQ(swiped->site(), "a.example");
  EXPECT_EQ(siteRow(0)->offset(), 0);
}

TEST_F(ActivityRowsTest, are_filtered_without_a_request) {
  entries["d1"] = {makeLog("a.example", 1), makeLog("b.example", 2)};
  openPage();
  serve();
  const auto before = http().requests().size();
  view->filter.open();
  for (const auto* const text : {"a", "ab", "", "b"}) {
    type(text);
  }
  view->filter.close();
  app.settle();
  EXPECT_EQ(http().requests().size(), before);
}

TEST_F(ActivityRowsTest, are_few_at_first_and_more_on_request) {
  for (int i = 0; i < 120; ++i) {
    entries["d1"].push_back(makeLog("site" + std::to_string(i) + ".example", i));
  }
  openPage();
  serve();
  EXPECT_EQ(rows().size(), 20U);
  EXPECT_EQ(rows().front(), "site0.example");
  EXPECT_EQ(view->rowsCount(), "120");
  EXPECT_TRUE(view->showMoreRows());
  EXPECT_EQ(rows().size(), 70U);
  EXPECT_TRUE(view->showMoreRows());
  EXPECT_EQ(rows().size(), 120U);
  EXPECT_FALSE(view->showMoreRows());
}

TEST_F(ActivityRowsTest, stay_the_same_objects_while_pages_arrive) {
  entries["d1"] = {makeLog("a.example", 1), makeLog("b.example", 2), makeLog("a.example", 3)};
  largestPage = 2;
  openPage();
  serve(1);
  const auto* const row = &view->siteRows[0];
  serve();
  EXPECT_EQ(&view->siteRows[0], row);
  EXPECT_EQ(view->siteRows[0].countText(), "2 requests");
}

TEST_F(ActivityRowsTest, allow_and_block_as_those_of_the_childs_page) {
  entries["d1"] = {makeLog("www.a.example", 1), makeLog("cdn.b.example", 2, true)};
  openPage({makeDevice("d1")}, makePolicy());
  serve();
  answerPolicy("POST", "/block", makePolicy(false, {}, {"a.example"}));
  answerPolicy("POST", "/allow", makePolicy(false, {"B.example"}));
  auto& visited = dynamic_cast<AllowedSiteRow&>(view->siteRows[0]);
  EXPECT_TRUE(visited.block());
  app.settle();
  EXPECT_THAT(bodies("POST", "/children/c1/policy/block"), ElementsAre(R"({"domain":"a.example"})"));
  EXPECT_THAT(page().policySection.blockedDomains(), ElementsAre("a.example"));

  auto& blocked = dynamic_cast<BlockedSiteRow&>(view->siteRows[1]);
  EXPECT_EQ(blocked.badge(), std::nullopt);
  EXPECT_TRUE(blocked.allow());
  app.settle();
  EXPECT_THAT(bodies("POST", "/children/c1/policy/allow"), ElementsAre(R"({"domain":"b.example"})"));
  EXPECT_EQ(blocked.badge(), "Now Allowed");
  EXPECT_FALSE(blocked.allow()) << "it can be allowed once";
  EXPECT_EQ(http().count("PUT", "/children/c1/policy"), 0U);
}

TEST_F(ActivityRowsTest, tell_of_a_failure_in_the_alert_of_the_childs_page) {
  entries["d1"] = {makeLog("www.a.example", 1)};
  openPage();
  serve();
  http().answer("POST", "/children/c1/policy/block", 500, R"({"error":"Not now"})");
  dynamic_cast<AllowedSiteRow&>(view->siteRows[0]).block();
  app.settle();
  expectAlert("Not now");
}

}  // namespace
}  // namespace quillmar
