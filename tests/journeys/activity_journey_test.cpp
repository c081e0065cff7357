#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "console/child_detail_view.h"
#include "tests/journeys/dns_lookup.h"
#include "tests/journeys/people.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

// A child's page on the parent's machine, while the child's machine makes DNS queries.
struct ActivityJourney : testing::Test {
  ActivityJourney() {
    child.machine.deviceInfo.deviceName = "Mia's Phone";
    parent.chooseRole();
    parent.signUp("Ann Fielding", "ann@example.com");
    parent.addChild("Mia");
    enrol(child);
    parent.press(parent.card().tap);
  }

  void enrol(Child& machine) {
    machine.chooseRole();
    parent.enrol(machine);
    time.advance(7s);
    EXPECT_EQ(machine.home().headline(), "Protection Active");
  }

  ChildDetailView& page() { return parent.screen<ChildDetailView>(); }
  void tick() { time.advance(2s); }
  void choose(ChildDetailTab tab) {
    page().selectedTab = tab;
    time.settle();
  }
  void blockTheInternet(bool blocked) {
    page().policySection.isBlocked = blocked;
    time.settle();
  }
  void blockSite(const std::string& site) {
    page().policySection.newBlockedDomain = site;
    parent.press(page().policySection.addBlockedSite);
  }

  bool kdig(const std::string& name) { return kdigResolves(service, child.child().dohEndpoint(), name); }
  bool curl(const std::string& name) { return curlResolves(service, child.child().dohEndpoint(), name); }

  // Drags just beyond the threshold and releases.
  template <class Row>
  void swipe(Row& row) {
    const double dx = row.swipeThreshold() > 0 ? row.swipeThreshold() + 1 : row.swipeThreshold() - 1;
    EXPECT_TRUE(row.dragChanged(dx, 0.0));
    EXPECT_TRUE(row.dragEnded(dx, 0.0));
    time.settle();
  }

  template <class Row>
  static Names sites(const Rows<Row>& rows) {
    Names names;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      names.push_back(rows[i].site());
    }
    return names;
  }
  Names recent() { return sites(page().activitySection.recent.rows); }
  Names blocked() { return sites(page().activitySection.blocked.rows); }
  Names visited() { return sites(page().activitySection.allowed.rows); }

  SharedTime time;
  RealService service{time.clock()};
  Parent parent{service, time};
  Child child{service, time};
};

TEST_F(ActivityJourney, queries_of_kdig_and_curl_are_on_the_real_time_tab_at_the_next_tick) {
  EXPECT_EQ(page().selectedTab(), ChildDetailTab::realTime);
  EXPECT_EQ(page().activitySection.noRecentText(), "No recent activity");
  EXPECT_TRUE(kdig("www.site.example"));
  time.advance(1s);
  EXPECT_TRUE(curl("api.weather.example"));
  EXPECT_THAT(recent(), IsEmpty()) << "nothing is pushed";

  tick();
  EXPECT_THAT(recent(), ElementsAre("weather.example", "site.example"));
  EXPECT_EQ(page().activitySection.recent.rows[0].iconColor(), "brandGreen");
  EXPECT_EQ(page().activitySection.recent.rows[0].badge(), std::nullopt);
  EXPECT_EQ(page().devicesSection.onlineText(), "1/1 online");

  EXPECT_TRUE(kdig("static.site.example"));
  tick();
  EXPECT_THAT(recent(), ElementsAre("site.example", "weather.example")) << "once, by its newest entry";
}

TEST_F(ActivityJourney, a_new_policy_applies_to_the_next_query_and_a_swipe_allows_again) {
  EXPECT_TRUE(curl("www.games.example"));
  blockTheInternet(true);
  EXPECT_EQ(page().policySection.blockWarning(),
            "Internet is blocked for Mia. Only allowed sites will work.");
  time.advance(1s);
  EXPECT_FALSE(curl("www.games.example"));
  tick();
  ASSERT_THAT(recent(), ElementsAre("games.example"));
  auto& row = page().activitySection.recent.rows[0];
  EXPECT_EQ(row.iconColor(), "brandRed");
  EXPECT_EQ(row.badge(), "Blocked");

  swipe(row);
  EXPECT_THAT(page().policySection.allowedDomains(), ElementsAre("games.example"));
  EXPECT_EQ(page().activitySection.recent.rows[0].badge(), "Allowed");
  EXPECT_TRUE(curl("www.games.example"));
  EXPECT_TRUE(kdig("games.example"));
  EXPECT_FALSE(kdig("www.site.example")) << "and nothing else";
  tick();
  EXPECT_EQ(page().activitySection.recent.rows.find("games.example")->iconColor(), "brandGreen");

  blockTheInternet(false);
  EXPECT_TRUE(kdig("www.site.example"));
}

TEST_F(ActivityJourney, the_blocked_tab_shows_blocked_sites_and_a_swipe_allows_them) {
  choose(ChildDetailTab::sitesBlocked);
  EXPECT_TRUE(kdig("www.site.example"));
  EXPECT_TRUE(kdig("www.friends.example"));
  blockSite(" Ads.Example ");
  EXPECT_THAT(page().policySection.blockedDomains(), ElementsAre("ads.example"));
  EXPECT_FALSE(kdig("pixel.ads.example"));
  time.advance(1s);
  blockTheInternet(true);
  EXPECT_FALSE(curl("www.friends.example"));
  EXPECT_THAT(blocked(), IsEmpty());
  tick();
  EXPECT_THAT(blocked(), ElementsAre("friends.example", "ads.example")) << "not what was visited";
  EXPECT_THAT(recent(), IsEmpty()) << "its tab is not in view";

  swipe(page().activitySection.blocked.rows[0]);
  EXPECT_EQ(page().activitySection.blocked.rows[0].badge(), "Now Allowed");
  EXPECT_FALSE(page().activitySection.blocked.rows[0].dragChanged(90.0, 0.0)) << "it can be allowed once";
  EXPECT_TRUE(curl("www.friends.example"));

  // A site in both lists stays blocked until it is removed from the blocked list.
  swipe(page().activitySection.blocked.rows[1]);
  EXPECT_THAT(page().policySection.allowedDomains(), ElementsAre("friends.example", "ads.example"));
  EXPECT_FALSE(kdig("pixel.ads.example"));
  parent.press(page().policySection.blockedRows[0].remove);
  EXPECT_THAT(page().policySection.blockedDomains(), IsEmpty());
  EXPECT_TRUE(kdig("pixel.ads.example"));
}

TEST_F(ActivityJourney, the_allowed_tab_shows_visited_sites_and_a_swipe_blocks_them) {
  choose(ChildDetailTab::sitesAllowed);
  EXPECT_TRUE(kdig("www.videos.example"));
  EXPECT_THAT(visited(), IsEmpty());
  tick();
  ASSERT_THAT(visited(), ElementsAre("videos.example"));

  swipe(page().activitySection.allowed.rows[0]);
  EXPECT_THAT(page().policySection.blockedDomains(), ElementsAre("videos.example"));
  EXPECT_FALSE(kdig("www.videos.example"));
  EXPECT_FALSE(curl("cdn.videos.example"));
  choose(ChildDetailTab::sitesBlocked);
  EXPECT_THAT(blocked(), ElementsAre("videos.example"));
}

TEST_F(ActivityJourney, a_swipe_removes_a_permanently_allowed_site) {
  blockTheInternet(true);
  page().policySection.newDomain = std::string("school.example");
  parent.press(page().policySection.addAllowedSite);
  EXPECT_TRUE(kdig("www.school.example"));
  EXPECT_TRUE(kdig("www.apple.com")) << "a default site";
  choose(ChildDetailTab::sitesAllowed);
  ASSERT_EQ(page().policySection.permanentAllowedSiteRows.size(), 1U);
  swipe(page().policySection.permanentAllowedSiteRows[0]);
  EXPECT_EQ(page().policySection.permanentAllowedSiteRows.size(), 0U);
  EXPECT_FALSE(kdig("www.school.example"));
  EXPECT_TRUE(kdig("www.apple.com"));
}

TEST_F(ActivityJourney, each_time_span_shows_its_own_entries) {
  choose(ChildDetailTab::sitesAllowed);
  EXPECT_TRUE(kdig("www.site.example"));
  time.advance(60s);
  EXPECT_THAT(visited(), ElementsAre("site.example")) << "its last second";
  tick();
  EXPECT_THAT(visited(), IsEmpty());

  const auto visitedIn = [&](ActivityTimeFilter filter) {
    page().activitySection.allowedTimeFilter = filter;
    time.settle();
    return visited();
  };
  EXPECT_THAT(visitedIn(ActivityTimeFilter::last5Minutes), ElementsAre("site.example"));
  EXPECT_THAT(visitedIn(ActivityTimeFilter::realTime), IsEmpty());
  time.advance(5min);
  EXPECT_THAT(visitedIn(ActivityTimeFilter::last5Minutes), IsEmpty());
  EXPECT_THAT(visitedIn(ActivityTimeFilter::lastHour), ElementsAre("site.example"));
  EXPECT_THAT(visitedIn(ActivityTimeFilter::today), ElementsAre("site.example"));
}

TEST_F(ActivityJourney, the_list_has_all_devices_of_one_child_and_no_others) {
  parent.press(page().done);
  Child tablet(service, time);
  tablet.machine.deviceInfo.deviceName = "Mia's Tablet";
  enrol(tablet);
  parent.addChild("Leo");
  EXPECT_EQ(parent.dashboard().cards.size(), 2U);
  parent.press(parent.card().tap);
  EXPECT_EQ(page().devicesSection.onlineText(), "2/2 online");

  EXPECT_TRUE(kdig("www.phone.example"));
  time.advance(1s);
  EXPECT_TRUE(kdigResolves(service, tablet.child().dohEndpoint(), "www.tablet.example"));
  tick();
  EXPECT_THAT(recent(), ElementsAre("tablet.example", "phone.example"));
  blockTheInternet(true);
  EXPECT_FALSE(kdigResolves(service, tablet.child().dohEndpoint(), "www.tablet.example"))
      << "a policy is the child's, whatever the device";

  parent.press(page().done);
  parent.press(parent.dashboard().cards[1].tap);
  EXPECT_EQ(page().name(), "Leo");
  tick();
  EXPECT_THAT(recent(), IsEmpty());
  EXPECT_EQ(page().activitySection.noRecentText(), "Link a device to see activity");
  EXPECT_FALSE(page().policySection.isBlocked());
}

TEST_F(ActivityJourney, unlinking_hides_a_device_and_its_queries_and_linking_restores_them) {
  blockSite("ads.example");
  EXPECT_FALSE(kdig("ads.example"));
  tick();
  ASSERT_THAT(recent(), ElementsAre("ads.example"));

  parent.press(page().devicesSection.deviceRows[0].unlink);
  EXPECT_TRUE(page().devicesSection.unlinkConfirmation.isShown());
  EXPECT_EQ(page().devicesSection.deviceRows.size(), 1U) << "not before the question is answered";
  parent.press(page().devicesSection.unlinkConfirmation.confirm);
  EXPECT_EQ(page().devicesSection.deviceRows.size(), 0U);
  EXPECT_TRUE(kdig("ads.example")) << "no child, no child's policy";
  tick();
  EXPECT_THAT(recent(), IsEmpty());
  EXPECT_EQ(page().activitySection.noRecentText(), "Link a device to see activity");
  EXPECT_EQ(parent.card().deviceCount(), "0");
  EXPECT_TRUE(child.child().isConnectedToServer()) << "the device itself hears nothing of it";

  parent.press(page().devicesSection.linkDevice);
  auto& linking = parent.screen<LinkDeviceView>();
  ASSERT_EQ(linking.deviceRows.size(), 1U);
  EXPECT_EQ(linking.deviceRows[0].deviceDisplayName(), "Mia's Phone");
  parent.press(linking.deviceRows[0].link);
  EXPECT_EQ(parent.find<LinkDeviceView>(), nullptr);
  EXPECT_EQ(page().devicesSection.deviceRows.size(), 1U);
  EXPECT_FALSE(kdig("ads.example"));
  tick();
  EXPECT_THAT(recent(), ElementsAre("ads.example"));
}

TEST_F(ActivityJourney, a_failing_service_keeps_the_list_without_a_message) {
  EXPECT_TRUE(kdig("www.site.example"));
  tick();
  sandbox::Misbehaviour broken;
  broken.failEverything = true;
  broken.onlyPath = "/api/v1/";
  service->misbehave(broken);
  EXPECT_TRUE(kdig("www.other.example"));
  time.advance(20s);
  EXPECT_THAT(recent(), ElementsAre("site.example"));
  EXPECT_FALSE(page().errorAlert.isShown());
  EXPECT_EQ(page().devicesSection.onlineText(), "1/1 online");

  service->misbehave({});
  tick();
  EXPECT_THAT(recent(), ElementsAre("other.example", "site.example"));
}

TEST_F(ActivityJourney, a_closed_page_sends_nothing) {
  parent.press(page().done);
  service->clearRequests();
  EXPECT_TRUE(kdig("www.site.example"));
  time.advance(20s);
  for (const auto& request : service->requests()) {
    EXPECT_THAT(request.target, testing::Not(testing::HasSubstr("/logs")));
  }
}

}  // namespace
}  // namespace quillmar
