#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "client/records/dns_log.h"
#include "console/child_activity_view.h"
#include "foundation/json.h"
#include "foundation/text.h"
#include "tests/journeys/people.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

// The page of all activity of a child of the demonstration family, whose devices go on making requests.
struct AllActivityJourney : testing::Test {
  AllActivityJourney() {
    parent.chooseRole();
    auto& login = parent.screen<LoginView>();
    login.email = std::string(sandbox::demoPrimaryEmail);
    login.password = std::string(sandbox::demoPassword);
    parent.press(login.signIn);
    parent.press(parent.card().tap);
  }

  ChildDetailView& page() { return parent.screen<ChildDetailView>(); }
  ChildActivityView& activity() { return parent.screen<ChildActivityView>(); }
  void openAll() {
    parent.press(page().seeAllActivity);
    for (int i = 0; i < 50 && activity().filling.state() == FillingState::loading; ++i) {
      time.advance(1s);
    }
    EXPECT_EQ(activity().filling.state(), FillingState::complete);
  }

  // The ids of the entries that the service has for the child's devices.
  std::set<std::int64_t> ids() {
    std::set<std::int64_t> all;
    for (const Device& device : page().devicesSection.devices()) {
      for (std::size_t offset = 0;;) {
        const auto answer = service->ask(
            "GET", "/api/v1/devices/" + device.id + "/logs?limit=1000&offset=" + std::to_string(offset), {},
            parent.setting(settings::authToken));
        const auto page = decodeJson<DNSLogsResponse>(answer.body);
        if (!page.ok() || page.value().logs.empty()) {
          break;
        }
        offset += page.value().logs.size();
        for (const DNSLog& log : page.value().logs) {
          all.insert(log.id);
        }
      }
    }
    return all;
  }
  // The number at the start of a text such as "1,234 requests".
  static std::size_t numberIn(std::string text) {
    text = text.substr(0, text.find(' '));
    std::erase(text, ',');
    return static_cast<std::size_t>(wholeNumber(text).value_or(0));
  }

  SharedTime time;
  RealService service{time.clock(), {.seed = sandbox::Seed::demo, .traffic = true}};
  Parent parent{service, time};
};

TEST_F(AllActivityJourney, counts_what_the_service_has_and_nothing_twice) {
  const auto before = ids();
  openAll();
  const auto after = ids();
  EXPECT_GT(before.size(), 400U);
  const auto loaded = numberIn(activity().filling.progressText());
  EXPECT_GE(loaded, before.size());
  EXPECT_LE(loaded, after.size());
  EXPECT_EQ(numberIn(activity().daysNumber()), loaded) << "they are all of the last day";
}

TEST_F(AllActivityJourney, shows_the_sites_of_a_bar) {
  openAll();
  auto& screen = activity();
  ASSERT_GT(screen.visitedBars.size(), 0U);
  const std::string site = screen.visitedBars[0].name();
  parent.press(screen.visitedBars[0].choose);
  EXPECT_EQ(screen.rowsTitle(), site);
  ASSERT_GT(screen.siteRows.size(), 0U);
  for (std::size_t i = 0; i < screen.siteRows.size(); ++i) {
    EXPECT_EQ(screen.siteRows[i].site(), site);
  }
}

TEST_F(AllActivityJourney, blocks_a_site_of_a_row) {
  openAll();
  parent.press(activity().visitedBars[0].choose);
  auto& row = dynamic_cast<AllowedSiteRow&>(activity().siteRows[0]);
  const std::string site = row.site();
  parent.press(row.block);
  EXPECT_THAT(page().policySection.blockedDomains(), Contains(site));
  parent.press(activity().done);
  EXPECT_THAT(page().policySection.blockedDomains(), Contains(site));
}

TEST_F(AllActivityJourney, sends_nothing_after_it_has_closed) {
  parent.press(page().seeAllActivity);
  parent.press(activity().done);
  service->clearRequests();
  time.advance(2min);
  for (const auto& request : service->requests()) {
    EXPECT_THAT(request.target, Not(HasSubstr("offset=")));
  }
}

}  // namespace
}  // namespace quillmar
