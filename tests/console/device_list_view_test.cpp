#include "console/device_list_view.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/console/console_test.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

struct Dashboard : testing::Test {
  Dashboard() { answerWith({makeChild("c1", "Mia", {makeDevice("d1")})}); }

  DeviceListView& screen() { return app.screen<DeviceListView>(); }
  void answerWith(std::vector<ChildProfileWithDevices> children) {
    app.machine.http.answerAlways("GET", "/children", 200, childrenAnswer(std::move(children)));
  }
  void failNext() { app.machine.http.fail("GET", "/children", TransportError::Kind::timedOut); }
  std::size_t loads() { return app.machine.http.count("GET", "/children"); }
  // Loads the dashboard with the scripted answers.
  void load() {
    app.settle();
    app.machine.http.forgetRequests();
  }
  Names names() {
    Names all;
    for (const auto& child : screen().children()) {
      all.push_back(child.name);
    }
    return all;
  }
  Names cardNames() {
    Names all;
    for (std::size_t i = 0; i < screen().cards.size(); ++i) {
      all.push_back(screen().cards[i].name());
    }
    return all;
  }
  void setPhase(ScenePhase phase) { app.app().setScenePhase(phase); }
  DataTaskResult with(const std::string& name) {
    return httpAnswer(200, childrenAnswer({makeChild("c1", name)}));
  }

  TestApplication app{asSignedInParent()};
};

using DashboardLoad = Dashboard;
using DashboardRefresh = Dashboard;
using DashboardScene = Dashboard;
using DashboardSheets = Dashboard;
// A dashboard whose pages stand beside it.
struct DashboardPages : Dashboard {
  DashboardPages() {
    answerWith({makeChild("c1", "Mia"), makeChild("c2", "Zoe")});
    load();
    screen().setPagesBeside(true);
  }

  std::size_t loadsOf(const std::string& child) {
    return app.machine.http.count("GET", "/children/" + child);
  }
};
using DashboardCards = Dashboard;
using DashboardMenu = Dashboard;

TEST_F(DashboardLoad, begins_with_one_load_and_nothing_to_show) {
  EXPECT_TRUE(screen().isLoading());
  EXPECT_EQ(screen().content(), DashboardContent::loading);
  EXPECT_FALSE(screen().cardsAppeared());
  EXPECT_FALSE(screen().isBackgroundRefreshing());
  EXPECT_TRUE(screen().children().empty());
  EXPECT_TRUE(screen().isAutoRefreshing());
  EXPECT_EQ(screen().lastRefreshTime(), VirtualDispatch::defaultStart);
  EXPECT_EQ(screen().maximumContentWidth(), 600);
  EXPECT_EQ(screen().updatedText(), "");
  app.settle();
  EXPECT_EQ(app.machine.http.calls(), Names{"GET /children"});
}

TEST_F(DashboardLoad, shows_the_children_in_the_services_order_and_ignores_display_order) {
  auto first = makeChild("c9", "Zoe");
  first.displayOrder = 5;
  answerWith({first, makeChild("c1", "Ann")});
  app.advance(1s);
  EXPECT_EQ(names(), (Names{"Zoe", "Ann"}));
  EXPECT_EQ(cardNames(), (Names{"Zoe", "Ann"}));
  EXPECT_FALSE(screen().isLoading());
  EXPECT_TRUE(screen().cardsAppeared());
  EXPECT_EQ(screen().content(), DashboardContent::list);
  EXPECT_EQ(screen().maximumContentWidth(), 700);
}

TEST_F(DashboardLoad, without_children_shows_the_welcome) {
  app.machine.http.answerAlways("GET", "/children", 200, "{}");
  app.settle();
  EXPECT_EQ(screen().content(), DashboardContent::empty);
  EXPECT_EQ(screen().maximumContentWidth(), 600);
}

TEST_F(DashboardLoad, unassigned_devices_do_not_count) {
  app.machine.http.answerAlways("GET", "/children", 200,
                                jsonOf(ChildrenResponse{.children = {makeChild("c1", "Mia")},
                                                        .unassignedDevices = {makeDevice("d9")}}));
  app.settle();
  EXPECT_EQ(screen().totalDevices(), 0);
}

TEST_F(DashboardLoad, again_keeps_the_cards_and_replays_their_entry) {
  load();
  app.machine.http.hold();
  screen().loadChildren();
  app.settle();
  EXPECT_FALSE(screen().isLoading());
  EXPECT_EQ(screen().content(), DashboardContent::list);
  EXPECT_FALSE(screen().cardsAppeared());
  EXPECT_EQ(screen().cardOpacity(), 0.0);
  EXPECT_EQ(screen().cardOffset(), 20.0);
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_TRUE(screen().cardsAppeared());
  EXPECT_EQ(screen().cardOpacity(), 1.0);
  EXPECT_EQ(screen().cardOffset(), 0.0);
}

TEST_F(DashboardLoad, again_is_not_shown_for_300_ms) {
  load();
  app.machine.http.hold();
  screen().loadChildren();
  app.advance(299ms);
  EXPECT_FALSE(screen().showsReload());
  EXPECT_EQ(screen().drawnCardOpacity(), 1.0);
  EXPECT_EQ(screen().cardOpacity(), 0.0) << "the told value";
  app.advance(1ms);
  EXPECT_TRUE(screen().showsReload());
  EXPECT_LT(screen().drawnCardOpacity(), 1.0);
  EXPECT_GE(screen().drawnCardOpacity(), 0.5) << "a little";
  EXPECT_EQ(screen().statusIcon(), "arrow.clockwise") << "no silent refresh runs";
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_FALSE(screen().showsReload());
  EXPECT_EQ(screen().drawnCardOpacity(), 1.0);
}

TEST_F(DashboardLoad, again_that_ends_within_300_ms_is_never_shown) {
  load();
  int shown = 0;
  const auto subscription =
      screen().observe([&](const Member& member) { shown += member.name() == "showsReload"; });
  for (int i = 0; i < 3; ++i) {
    screen().loadChildren();
    app.settle();
  }
  app.advance(10s);
  EXPECT_EQ(shown, 0);
}

TEST_F(DashboardLoad, requested_repeatedly_is_shown_300_ms_after_the_first_request) {
  load();
  app.machine.http.hold();
  screen().loadChildren();
  app.advance(200ms);
  screen().loadChildren();
  app.advance(100ms);
  EXPECT_TRUE(screen().showsReload());
  app.machine.http.complete(0, with("Mia"));
  app.advance(1s);
  EXPECT_FALSE(screen().showsReload()) << "what was asked for first is there";
}

TEST_F(DashboardLoad, with_nothing_on_screen_is_not_a_reload) {
  app.machine.http.hold();
  app.advance(5s);
  EXPECT_TRUE(screen().isLoading());
  EXPECT_FALSE(screen().showsReload());
}

TEST_F(DashboardLoad, again_that_fails_is_no_longer_shown) {
  load();
  app.machine.http.hold();
  screen().loadChildren();
  app.advance(1s);
  ASSERT_TRUE(screen().showsReload());
  app.machine.http.complete(0, transportFailure(TransportError::Kind::timedOut));
  app.settle();
  EXPECT_FALSE(screen().showsReload());
  EXPECT_EQ(screen().content(), DashboardContent::empty);
}

TEST_F(DashboardLoad, that_fails_empties_the_screen_without_a_message) {
  struct Row {
    std::string what;
    DataTaskResult result;
  };
  for (const auto& row :
       std::vector<Row>{{"no network", transportFailure(TransportError::Kind::notConnectedToInternet)},
                        {"a refusal", httpAnswer(500, R"({"error":"Try later"})")},
                        {"a page", httpAnswer(200, "<html>")},
                        {"nothing", httpAnswer(200, "")},
                        {"half a record", httpAnswer(200, R"({"children":[{"id":"c1"}]})")},
                        {"wrong types", httpAnswer(200, R"({"children":"none"})")}}) {
    load();
    ASSERT_EQ(names(), Names{"Mia"});
    app.machine.http.answer("GET", "/children", row.result);
    screen().loadChildren();
    app.settle();
    EXPECT_TRUE(screen().children().empty()) << row.what;
    EXPECT_EQ(screen().cards.size(), 0U) << row.what;
    EXPECT_EQ(screen().content(), DashboardContent::empty) << row.what;
    EXPECT_TRUE(screen().cardsAppeared()) << row.what;
    EXPECT_FALSE(screen().errorAlert.isShown()) << row.what;
    EXPECT_EQ(screen().errorAlert.message(), "") << row.what;
    screen().loadChildren();
  }
}

TEST_F(DashboardLoad, records_its_end_time_on_success_and_failure) {
  load();
  app.advance(5s);
  screen().loadChildren();
  app.settle();
  EXPECT_EQ(screen().lastRefreshTime(), VirtualDispatch::defaultStart + 5s);
  app.advance(5s);
  failNext();
  screen().loadChildren();
  app.settle();
  EXPECT_EQ(screen().lastRefreshTime(), VirtualDispatch::defaultStart + 10s);
}

TEST_F(DashboardLoad, logs_nothing_itself) {
  app.machine.log.clear();
  app.advance(31s);
  failNext();
  screen().loadChildren();
  app.settle();
  auto lines = app.machine.log.printed();
  std::ranges::move(app.machine.log.systemLines(), std::back_inserter(lines));
  EXPECT_FALSE(lines.empty());
  for (const auto& line : lines) {
    EXPECT_TRUE(line.starts_with("[NetworkService]")) << line;
  }
}

TEST_F(DashboardLoad, that_fails_first_keeps_the_timer_which_fills_the_list_without_an_entry_animation) {
  failNext();
  load();
  ASSERT_EQ(screen().content(), DashboardContent::empty);
  EXPECT_TRUE(screen().isAutoRefreshing());
  int entries = 0;
  const auto subscription =
      screen().observe([&](const Member& member) { entries += member.name() == "cardsAppeared"; });
  app.advance(30s);
  EXPECT_EQ(names(), Names{"Mia"});
  EXPECT_EQ(entries, 0);
}

TEST_F(DashboardLoad, that_ends_after_the_screen_disappeared_starts_no_timer) {
  load();
  const auto kept = app.find<DeviceListView>();
  kept->loadChildren();
  kept->disappear();
  app.settle();
  EXPECT_FALSE(kept->isAutoRefreshing());
  app.advance(5min);
  EXPECT_EQ(loads(), 1U);
}

TEST_F(DashboardLoad, that_ends_while_the_scene_is_not_active_starts_no_timer) {
  for (const auto phase : {ScenePhase::inactive, ScenePhase::background}) {
    setPhase(ScenePhase::active);
    load();
    screen().loadChildren();
    setPhase(phase);
    app.settle();
    EXPECT_FALSE(screen().isAutoRefreshing());
  }
  app.machine.http.forgetRequests();
  app.advance(5min);
  EXPECT_EQ(loads(), 0U);
}

TEST_F(DashboardLoad, is_dropped_if_its_screen_no_longer_exists) {
  app.machine.http.hold();
  app.settle();
  screen().logout();
  screen().logoutConfirmation.confirm();
  app.settle();
  ASSERT_EQ(app.find<DeviceListView>(), nullptr);
  app.machine.http.releaseAll();
  app.machine.http.forgetRequests();
  app.advance(5min);
  EXPECT_EQ(loads(), 0U);
}

TEST_F(DashboardRefresh, runs_every_30_seconds_and_first_after_30) {
  load();
  app.advance(29s);
  EXPECT_EQ(loads(), 0U);
  app.advance(1s);
  EXPECT_EQ(loads(), 1U);
  app.advance(90s);
  EXPECT_EQ(loads(), 4U);
}

TEST_F(DashboardRefresh, keeps_its_schedule_despite_other_loads) {
  load();
  app.advance(20s);
  screen().loadChildren();
  app.advance(10s);
  EXPECT_EQ(loads(), 2U);
  screen().openSettings();
  screen().showSettings = false;
  app.advance(30s);
  EXPECT_EQ(loads(), 4U);
}

TEST_F(DashboardRefresh, shows_a_spinner_instead_of_the_icon) {
  load();
  EXPECT_EQ(screen().statusIcon(), "arrow.clockwise");
  app.machine.http.hold();
  app.advance(30s);
  EXPECT_TRUE(screen().isBackgroundRefreshing());
  EXPECT_EQ(screen().statusIcon(), std::nullopt);
  EXPECT_FALSE(screen().isLoading());
  EXPECT_EQ(screen().content(), DashboardContent::list);
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_FALSE(screen().isBackgroundRefreshing());
  EXPECT_EQ(screen().statusIcon(), "arrow.clockwise");
}

TEST_F(DashboardRefresh, shows_how_long_ago_the_last_one_was) {
  load();
  EXPECT_EQ(screen().updatedText(), "Updated in 0 sec.");
  app.machine.http.hold();
  app.advance(29s);
  EXPECT_EQ(screen().updatedText(), "Updated 29 sec. ago");
  app.advance(61s);
  EXPECT_EQ(screen().updatedText(), "Updated 1 min. ago");
  EXPECT_EQ(screen().autoRefreshText(), "Auto-refresh every 30s");
}

TEST_F(DashboardRefresh, updates_how_long_ago_the_last_one_was) {
  load();
  Names told;
  const auto subscription = screen().observe([&](const Member& member) {
    if (member.name() == "updatedText") {
      told.push_back(screen().updatedText());
    }
  });
  app.machine.http.hold();
  app.advance(3s);
  EXPECT_EQ(told, (Names{"Updated 1 sec. ago", "Updated 2 sec. ago", "Updated 3 sec. ago"}));
  app.advance(57s);
  told.clear();
  app.advance(59s);
  EXPECT_EQ(told, Names()) << "it reads the same for a minute";
  app.advance(1s);
  EXPECT_EQ(told, Names{"Updated 2 min. ago"});
}

TEST_F(DashboardScene, that_becomes_active_updates_the_time_text_at_once) {
  setPhase(ScenePhase::active);
  load();
  app.advance(1s);
  Names told;
  const auto subscription = screen().observe([&](const Member& member) {
    if (member.name() == "updatedText") {
      told.push_back(screen().updatedText());
    }
  });
  setPhase(ScenePhase::background);
  app.advance(8h);
  EXPECT_EQ(told, Names()) << "nobody looks";
  setPhase(ScenePhase::active);
  EXPECT_EQ(told, Names{"Updated 8 hr. ago"});
}

TEST_F(DashboardScene, not_in_use_has_no_wake_ups) {
  const auto isWoken = [this] {
    // Stopped tasks may still be queued, but have nothing to run.
    app.advance(1h);
    return app.machine.dispatch.nextDue() < app.machine.dispatch.now() + 24h;
  };
  load();
  EXPECT_TRUE(isWoken());
  setPhase(ScenePhase::background);
  EXPECT_FALSE(isWoken());
  setPhase(ScenePhase::active);
  EXPECT_TRUE(isWoken());
  const auto kept = app.find<DeviceListView>();
  kept->disappear();
  EXPECT_FALSE(isWoken());
  setPhase(ScenePhase::background);
  setPhase(ScenePhase::active);
  EXPECT_FALSE(isWoken()) << "it is not on screen";
}

TEST_F(DashboardRefresh, shows_new_data_without_the_entry_animation) {
  load();
  answerWith({makeChild("c2", "Zoe"), makeChild("c1", "Mia")});
  int entries = 0;
  const auto subscription =
      screen().observe([&](const Member& member) { entries += member.name() == "cardsAppeared"; });
  app.advance(30s);
  EXPECT_EQ(cardNames(), (Names{"Zoe", "Mia"}));
  EXPECT_EQ(entries, 0);
  EXPECT_EQ(screen().lastRefreshTime(), VirtualDispatch::defaultStart + 30s);
}

TEST_F(DashboardRefresh, that_fails_changes_only_the_time) {
  load();
  failNext();
  app.advance(30s);
  EXPECT_EQ(names(), Names{"Mia"});
  EXPECT_EQ(screen().content(), DashboardContent::list);
  EXPECT_FALSE(screen().isBackgroundRefreshing());
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_EQ(screen().lastRefreshTime(), VirtualDispatch::defaultStart + 30s);
}

TEST_F(DashboardRefresh, that_is_running_skips_the_ticks) {
  load();
  app.machine.http.hold();
  app.advance(5min);
  EXPECT_EQ(loads(), 1U);
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_EQ(loads(), 1U) << "swallowed ticks do not queue up";
  app.advance(30s);
  EXPECT_EQ(loads(), 2U);
}

TEST_F(DashboardRefresh, does_nothing_during_the_first_load) {
  app.machine.http.hold();
  app.advance(5min);
  EXPECT_EQ(loads(), 1U);
  EXPECT_FALSE(screen().isBackgroundRefreshing());
}

// A foreground and a silent load can overlap in three ways; the last one to end wins.

TEST_F(DashboardRefresh, that_ends_before_an_overlapping_foreground_load_is_overwritten) {
  load();
  app.machine.http.hold();
  app.advance(30s);
  screen().loadChildren();
  app.settle();
  ASSERT_EQ(loads(), 2U) << "a silent load holds no other back";
  app.machine.http.complete(0, with("silent"));
  app.settle();
  EXPECT_EQ(names(), Names{"silent"});
  EXPECT_FALSE(screen().cardsAppeared()) << "the foreground load is still to bring the cards in";
  app.machine.http.complete(0, with("foreground"));
  app.settle();
  EXPECT_EQ(names(), Names{"foreground"});
  EXPECT_TRUE(screen().cardsAppeared());
}

TEST_F(DashboardRefresh, that_ends_after_an_overlapping_foreground_load_wins) {
  load();
  app.machine.http.hold();
  app.advance(30s);
  screen().loadChildren();
  app.settle();
  app.machine.http.complete(1, with("foreground"));
  app.settle();
  EXPECT_EQ(names(), Names{"foreground"});
  EXPECT_TRUE(screen().isBackgroundRefreshing());
  app.machine.http.complete(0, with("silent"));
  app.settle();
  EXPECT_EQ(names(), Names{"silent"});
  EXPECT_FALSE(screen().isBackgroundRefreshing());
}

TEST_F(DashboardRefresh, that_begins_during_a_foreground_load_runs_if_there_are_cards) {
  load();
  app.machine.http.hold();
  app.advance(29s);
  screen().loadChildren();
  app.advance(1s);
  ASSERT_EQ(loads(), 2U);
  EXPECT_TRUE(screen().isBackgroundRefreshing());
  app.machine.http.complete(0, transportFailure(TransportError::Kind::timedOut));
  app.settle();
  EXPECT_EQ(screen().content(), DashboardContent::empty);
  app.machine.http.complete(0, with("silent"));
  app.settle();
  EXPECT_EQ(names(), Names{"silent"});
}

TEST_F(DashboardScene, in_the_background_has_no_timer_and_keeps_the_time_of_the_last_refresh) {
  for (const auto phase : {ScenePhase::inactive, ScenePhase::background}) {
    setPhase(ScenePhase::active);
    load();
    const Date before = screen().lastRefreshTime();
    setPhase(phase);
    EXPECT_FALSE(screen().isAutoRefreshing());
    app.advance(10min);
    EXPECT_EQ(loads(), 0U);
    EXPECT_EQ(screen().lastRefreshTime(), before);
  }
}

TEST_F(DashboardScene, first_reported_as_background_stops_the_timer) {
  load();
  setPhase(ScenePhase::background);
  app.advance(5min);
  EXPECT_EQ(loads(), 0U);
}

TEST_F(DashboardScene, that_becomes_active_starts_one_timer_and_loads_after_a_full_interval) {
  setPhase(ScenePhase::active);
  load();
  setPhase(ScenePhase::inactive);
  setPhase(ScenePhase::background);
  setPhase(ScenePhase::inactive);
  app.advance(1h);
  setPhase(ScenePhase::active);
  setPhase(ScenePhase::active);
  app.advance(29s);
  EXPECT_EQ(loads(), 0U);
  app.advance(1s);
  EXPECT_EQ(loads(), 1U);
  app.advance(60s);
  EXPECT_EQ(loads(), 3U);
}

TEST_F(DashboardScene, that_becomes_active_after_the_screen_disappeared_starts_nothing) {
  setPhase(ScenePhase::active);
  load();
  const auto kept = app.find<DeviceListView>();
  kept->disappear();
  setPhase(ScenePhase::background);
  setPhase(ScenePhase::active);
  EXPECT_FALSE(kept->isAutoRefreshing());
}

TEST_F(DashboardScene, every_appearance_loads_and_keeps_the_one_timer) {
  load();
  const auto kept = app.find<DeviceListView>();
  kept->disappear();
  EXPECT_FALSE(kept->isAutoRefreshing());
  app.advance(5min);
  EXPECT_EQ(loads(), 0U);
  kept->appear();
  app.settle();
  EXPECT_EQ(loads(), 1U);
  app.advance(30s);
  EXPECT_EQ(loads(), 2U);
}

TEST_F(DashboardSheets, open_by_their_controls) {
  load();
  struct Row {
    std::string sheet;
    std::function<void()> open;
    std::function<void()> close;
  };
  for (const auto& row : std::vector<Row>{
           {"AddChildView", [&] { screen().addChild(); }, [&] { screen().showAddChild = false; }},
           {"SettingsView", [&] { screen().openSettings(); }, [&] { screen().showSettings = false; }},
           {"FamilyMembersView", [&] { screen().openFamilyMembers(); },
            [&] { screen().showFamilyMembers = false; }},
           {"HomeNetworkView", [&] { screen().openHomeNetwork(); },
            [&] { screen().showHomeNetwork = false; }},
           {"ChildDetailView", [&] { screen().cards[0].tap(); }, [&] { screen().showChildDetail = false; }},
           {"AddDeviceSheet", [&] { screen().cards[0].addDevice(); },
            [&] { screen().showAddDevice = false; }}}) {
    row.open();
    EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", row.sheet}));
    EXPECT_TRUE(screen().isOnScreen());
    row.close();
    app.settle();
    EXPECT_EQ(app.screenNames(), Names{"DeviceListView"});
  }
}

TEST_F(DashboardSheets, never_stop_the_timer) {
  load();
  screen().openSettings();
  app.advance(90s);
  EXPECT_EQ(loads(), 3U);
}

TEST_F(DashboardSheets, returning_from_any_loads_once_and_keeps_the_timer) {
  using Open = std::function<void(DeviceListView&)>;
  for (const auto& [open, close] : std::vector<std::pair<Open, Open>>{
           {[](auto& on) { on.addChild(); }, [](auto& on) { on.showAddChild = false; }},
           {[](auto& on) { on.openSettings(); }, [](auto& on) { on.showSettings = false; }},
           {[](auto& on) { on.openFamilyMembers(); }, [](auto& on) { on.showFamilyMembers = false; }},
           {[](auto& on) { on.openHomeNetwork(); }, [](auto& on) { on.showHomeNetwork = false; }},
           {[](auto& on) { on.cards[0].tap(); }, [](auto& on) { on.showChildDetail = false; }},
           {[](auto& on) { on.cards[0].addDevice(); }, [](auto& on) { on.showAddDevice = false; }}}) {
    screen().loadChildren();
    load();
    open(screen());
    app.settle();
    EXPECT_EQ(loads(), 0U) << "opening loads nothing";
    close(screen());
    EXPECT_FALSE(screen().cardsAppeared());
    app.settle();
    EXPECT_EQ(loads(), 1U);
  }
  app.machine.http.forgetRequests();
  app.advance(30s);
  EXPECT_EQ(loads(), 1U) << "one timer, whatever came back";
}

TEST_F(DashboardSheets, returning_while_the_scene_is_inactive_starts_no_timer) {
  setPhase(ScenePhase::active);
  load();
  screen().openSettings();
  setPhase(ScenePhase::background);
  screen().showSettings = false;
  app.settle();
  EXPECT_FALSE(screen().isAutoRefreshing());
}

TEST_F(DashboardSheets, the_detail_is_shown_exactly_while_a_child_is_selected) {
  answerWith({makeChild("c1", "Mia"), makeChild("c2", "Zoe")});
  load();
  EXPECT_EQ(screen().selectedChild(), std::nullopt);
  screen().showChildDetail = true;
  EXPECT_FALSE(screen().showChildDetail()) << "there is no child to show";
  screen().cards[1].tap();
  EXPECT_EQ(screen().selectedChild(), makeChild("c2", "Zoe"));
  screen().cards[0].tap();
  EXPECT_EQ(screen().selectedChild(), makeChild("c2", "Zoe")) << "one at a time";
  screen().showChildDetail->dismiss();
  EXPECT_EQ(screen().selectedChild(), std::nullopt);
  EXPECT_FALSE(screen().showChildDetail());
}

TEST_F(DashboardSheets, the_add_device_sheet_requires_a_child) {
  load();
  screen().showAddDevice = true;
  EXPECT_FALSE(screen().showAddDevice());
  EXPECT_EQ(app.screenNames(), Names{"DeviceListView"});
  screen().cards[0].addDevice();
  EXPECT_EQ(screen().childForNewDevice(), makeChild("c1", "Mia", {makeDevice("d1")}));
  EXPECT_EQ(app.screen<AddDeviceSheet>().heading(), "Add Device for Mia");
}

TEST_F(DashboardSheets, the_child_is_set_before_the_add_device_sheet_is_shown) {
  load();
  Names order;
  const auto subscription = screen().observe([&](const Member& member) {
    if (member.name() == "childForNewDevice" || member.name() == "showAddDevice") {
      order.emplace_back(member.name());
    }
  });
  screen().cards[0].addDevice();
  EXPECT_EQ(order, (Names{"childForNewDevice", "showAddDevice"}));
}

TEST_F(DashboardSheets, a_refresh_beneath_a_detail_keeps_the_detail) {
  load();
  screen().cards[0].tap();
  const auto* before = screen().showChildDetail.get();
  answerWith({});
  app.advance(30s);
  EXPECT_EQ(screen().cards.size(), 0U);
  EXPECT_EQ(screen().showChildDetail.get(), before);
}

TEST_F(DashboardPages, neither_load_nor_restart_the_timer_when_they_close) {
  using Open = std::function<void(DeviceListView&)>;
  const std::vector<std::pair<Open, Open>> ways{
      {[](auto& on) { on.openSettings(); }, [](auto& on) { on.showSettings = false; }},
      {[](auto& on) { on.openFamilyMembers(); }, [](auto& on) { on.showFamilyMembers = false; }},
      {[](auto& on) { on.openHomeNetwork(); }, [](auto& on) { on.showHomeNetwork = false; }},
      {[](auto& on) { on.cards[0].tap(); }, [](auto& on) { on.showChildDetail = false; }}};
  app.advance(29s);
  for (const auto& [open, close] : ways) {
    open(screen());
    app.settle();
    close(screen());
    EXPECT_TRUE(screen().isOnScreen());
    EXPECT_TRUE(screen().cardsAppeared());
    app.settle();
  }
  EXPECT_EQ(loads(), 0U);
  app.advance(1s);
  EXPECT_EQ(loads(), 1U) << "the timer kept its schedule";
}

TEST_F(DashboardPages, open_by_themselves_never) {
  app.advance(5min);
  EXPECT_EQ(app.screenNames(), Names{"DeviceListView"});
  EXPECT_EQ(loadsOf("c1"), 0U);
}

TEST_F(DashboardPages, of_another_child_replaces_the_first) {
  screen().cards[0].tap();
  app.settle();
  const std::weak_ptr<ChildDetailView> first = app.find<ChildDetailView>();
  screen().cards[1].tap();
  EXPECT_TRUE(first.expired());
  EXPECT_EQ(screen().selectedChild(), makeChild("c2", "Zoe"));
  app.settle();
  EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", "ChildDetailView"}));
  EXPECT_EQ(app.screen<ChildDetailView>().name(), "Zoe");
  EXPECT_EQ(loadsOf("c2"), 1U);
  app.machine.http.forgetRequests();
  app.advance(15s);
  EXPECT_EQ(loadsOf("c1"), 0U) << "the first page's timer still runs";
  EXPECT_EQ(loadsOf("c2"), 1U);
}

TEST_F(DashboardPages, of_the_same_child_stays) {
  screen().cards[0].tap();
  const auto before = app.find<ChildDetailView>();
  screen().cards[0].tap();
  app.settle();
  EXPECT_EQ(app.find<ChildDetailView>(), before);
  EXPECT_EQ(loadsOf("c1"), 1U);
}

TEST_F(DashboardPages, take_each_others_place) {
  screen().cards[0].tap();
  screen().openSettings();
  EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", "SettingsView"}));
  EXPECT_EQ(screen().selectedChild(), std::nullopt);
  screen().openHomeNetwork();
  EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", "HomeNetworkView"}));
  screen().cards[1].tap();
  EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", "ChildDetailView"}));
}

TEST_F(DashboardPages, stay_if_what_was_asked_for_cannot_be_shown) {
  screen().openSettings();
  screen().showChildDetail = true;
  EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", "SettingsView"}));
}

TEST_F(DashboardPages, stay_under_a_sheet_which_still_covers_the_dashboard) {
  screen().cards[0].tap();
  screen().addChild();
  EXPECT_TRUE(screen().showChildDetail());
  screen().showAddChild = false;
  app.settle();
  EXPECT_EQ(loads(), 1U);
  EXPECT_TRUE(screen().showChildDetail());
}

TEST_F(DashboardPages, count_as_covering_if_they_cover_when_they_close) {
  screen().openSettings();
  screen().setPagesBeside(false);
  EXPECT_EQ(app.screenNames().back(), "SettingsView");
  app.settle();
  EXPECT_EQ(loads(), 0U) << "more or less room sends nothing";
  screen().showSettings = false;
  app.settle();
  EXPECT_EQ(loads(), 1U);

  screen().openSettings();
  screen().setPagesBeside(true);
  screen().showSettings = false;
  app.settle();
  EXPECT_EQ(loads(), 1U);
}

TEST_F(DashboardPages, end_with_the_session) {
  screen().cards[0].tap();
  app.settle();
  const std::weak_ptr<ChildDetailView> page = app.find<ChildDetailView>();
  screen().logout();
  screen().logoutConfirmation.confirm();
  app.settle();
  EXPECT_EQ(app.screenNames(), Names{"LoginView"});
  EXPECT_TRUE(page.expired());
  app.machine.http.forgetRequests();
  app.advance(5min);
  EXPECT_EQ(app.machine.http.calls(), Names());
}

TEST_F(DashboardCards, show_counts_with_the_right_plurals) {
  struct Row {
    std::vector<ChildProfileWithDevices> children;
    std::string line;
  };
  Device offline = makeDevice("d3");
  offline.isOnline = false;
  for (const auto& row :
       std::vector<Row>{{{}, "0 Children 0 Devices 0 Online"},
                        {{makeChild("c1", "Mia", {makeDevice("d1")})}, "1 Child 1 Device 1 Online"},
                        {{makeChild("c1", "Mia", {makeDevice("d1"), makeDevice("d2", false)}),
                          makeChild("c2", "Zoe", {offline})},
                         "2 Children 3 Devices 1 Online"},
                        {{makeChild("c1", "Mia")}, "1 Child 0 Devices 0 Online"}}) {
    answerWith(row.children);
    screen().loadChildren();
    app.settle();
    EXPECT_EQ(std::to_string(screen().totalChildren()) + " " + screen().childrenLabel() + " " +
                  std::to_string(screen().totalDevices()) + " " + screen().devicesLabel() + " " +
                  std::to_string(screen().onlineDevices()) + " " + screen().onlineLabel(),
              row.line);
  }
}

TEST_F(DashboardCards, are_kept_across_a_refresh_and_only_changed_ones_announce) {
  std::vector<ChildProfileWithDevices> family;
  for (int c = 0; c < 50; ++c) {
    const std::string id = "c" + std::to_string(c);
    family.push_back(
        makeChild(id, "Child " + id,
                  {makeDevice(id + "a"), makeDevice(id + "b"), makeDevice(id + "c"), makeDevice(id + "d")}));
  }
  answerWith(family);
  load();
  Names announced;
  std::vector<Subscription> subscriptions;
  subscriptions.push_back(screen().observe([&](const Member& member) {
    if (member.name() != "updatedText") {
      announced.emplace_back(member.name());
    }
  }));
  std::vector<const ChildDashboardCard*> before;
  for (std::size_t i = 0; i < screen().cards.size(); ++i) {
    auto& card = screen().cards[i];
    before.push_back(&card);
    subscriptions.push_back(card.observe([&](const Member& member) {
      announced.push_back(card.child().id + " " + std::string(member.name()));
    }));
  }
  const Names unchanged{"isBackgroundRefreshing", "isBackgroundRefreshing", "lastRefreshTime"};
  app.advance(30s);
  EXPECT_EQ(announced, unchanged);

  announced.clear();
  family[7].devices[2].isOnline = false;
  answerWith(family);
  app.advance(30s);
  Names oneChange = unchanged;
  oneChange.insert(oneChange.end(), {"children", "c7 child"});
  EXPECT_EQ(announced, oneChange);

  for (std::size_t i = 0; i < before.size(); ++i) {
    EXPECT_EQ(&screen().cards[i], before[i]);
  }
}

TEST_F(DashboardCards, move_with_their_child) {
  answerWith({makeChild("c1", "Mia"), makeChild("c2", "Zoe")});
  load();
  const auto* mia = &screen().cards[0];
  answerWith({makeChild("c3", "Ann"), makeChild("c2", "Zoe"), makeChild("c1", "Mia")});
  app.advance(30s);
  EXPECT_EQ(cardNames(), (Names{"Ann", "Zoe", "Mia"}));
  EXPECT_EQ(&screen().cards[2], mia);
  EXPECT_EQ(mia->position(), 2);
  answerWith({makeChild("c2", "Zoe")});
  app.advance(30s);
  EXPECT_EQ(cardNames(), Names{"Zoe"});
}

TEST_F(DashboardCards, animate_their_entry_after_a_load_but_not_after_a_refresh) {
  load();
  EXPECT_EQ(screen().cards[0].entrance(), CardEntrance::staged);
  answerWith({makeChild("c1", "Mia"), makeChild("c2", "Zoe")});
  app.advance(30s);
  EXPECT_EQ(screen().cards[0].entrance(), CardEntrance::staged) << "it is there since the load";
  EXPECT_EQ(screen().cards[1].entrance(), CardEntrance::inPlace);
}

TEST_F(DashboardCards, exist_for_each_of_two_children_with_the_same_id) {
  answerWith({makeChild("c1", "Mia"), makeChild("c1", "Zoe")});
  load();
  EXPECT_EQ(cardNames(), (Names{"Mia", "Zoe"}));
  const auto nested = screen().cards.nested();
  EXPECT_NE(nested[0].key, nested[1].key);
  const auto* zoe = &screen().cards[1];
  app.advance(30s);
  EXPECT_EQ(&screen().cards[1], zoe);
}

TEST_F(DashboardCards, held_by_a_front_end_do_nothing_after_the_screen_is_destroyed) {
  load();
  const auto card = screen().cards.share("c1");
  screen().logout();
  screen().logoutConfirmation.confirm();
  app.settle();
  card->tap();
  card->addDevice();
  EXPECT_EQ(app.find<ChildDetailView>(), nullptr);
}

TEST_F(DashboardMenu, shows_the_initials_of_the_signed_in_parent) { EXPECT_EQ(screen().initials(), "AL"); }

TEST_F(DashboardMenu, steps_through_the_themes) {
  Names titles{screen().themeTitle()};
  for (int i = 0; i < 3; ++i) {
    screen().cycleTheme();
    titles.push_back(screen().themeTitle());
  }
  EXPECT_EQ(titles, (Names{"Theme: System", "Theme: Light", "Theme: Dark", "Theme: System"}));
  EXPECT_EQ(app.machine.settings.string(settings::appearanceMode), "System");
}

TEST_F(DashboardMenu, shows_a_theme_that_is_set_elsewhere) {
  int announced = 0;
  const auto subscription = screen().observe([&](const Member&) { ++announced; });
  app.environment().appearanceManager()->currentMode = AppearanceMode::dark;
  EXPECT_GT(announced, 0);
  EXPECT_EQ(screen().themeTitle(), "Theme: Dark");
}

TEST_F(DashboardMenu, logout_asks_first_and_can_be_cancelled) {
  load();
  EXPECT_FALSE(screen().logoutConfirmation.confirm());
  screen().logout();
  EXPECT_TRUE(screen().logoutConfirmation.isShown());
  EXPECT_TRUE(app.environment().authState()->isLoggedIn());
  screen().logoutConfirmation.cancel();
  EXPECT_FALSE(screen().logoutConfirmation.isShown());
  app.settle();
  EXPECT_TRUE(app.environment().authState()->isLoggedIn());
  EXPECT_TRUE(screen().isAutoRefreshing());
}

TEST_F(DashboardMenu, logout_stops_the_timer_ends_the_session_and_shows_the_login) {
  load();
  const auto kept = app.find<DeviceListView>();
  std::vector<bool> refreshingAtTheEnd;
  const auto subscription = app.environment().authState()->isLoggedIn.onChange(
      [&] { refreshingAtTheEnd.push_back(kept->isAutoRefreshing()); });
  screen().logout();
  screen().logoutConfirmation.confirm();
  EXPECT_EQ(refreshingAtTheEnd, std::vector{false});
  app.settle();
  EXPECT_EQ(app.screenNames(), Names{"LoginView"});
  app.advance(5min);
  EXPECT_EQ(loads(), 0U);
}

TEST_F(DashboardMenu, the_texts_are_exact) {
  EXPECT_EQ(screen().title(), "My Family");
  EXPECT_EQ(screen().settingsTitle(), "Settings");
  EXPECT_EQ(screen().familyMembersTitle(), "Family Members");
  EXPECT_EQ(screen().homeNetworkTitle(), "Home Network");
  EXPECT_EQ(screen().homeNetworkText(), "Manage filtering for game consoles & smart TVs");
  EXPECT_EQ(screen().logoutTitle(), "Logout");
  EXPECT_EQ(screen().addAnotherTitle(), "Add Another Child");
  EXPECT_EQ(screen().loadingText(), "Loading...");
  EXPECT_EQ(screen().welcomeHeading(), "Welcome to Quillmar");
  EXPECT_EQ(screen().welcomeText(), "Add your children to start protecting\ntheir online experience");
  EXPECT_EQ(screen().addFirstTitle(), "Add Your First Child");
  EXPECT_EQ(screen().setUpHomeNetworkTitle(), "Set Up Home Network");
  EXPECT_EQ(screen().setUpHomeNetworkCaption(), "For game consoles & smart TVs");
  EXPECT_EQ(screen().confirmationTitle(), "Logout?");
  EXPECT_EQ(screen().confirmationText(), "Are you sure you want to logout?");
  EXPECT_EQ(screen().confirmTitle(), "Logout");
  EXPECT_EQ(screen().errorAlert.title(), "Error");
  EXPECT_EQ(screen().errorAlert.okTitle(), "OK");
}

}  // namespace
}  // namespace quillmar
