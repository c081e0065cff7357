#include "sandbox/seed.h"

#include <set>

#include "sandbox/dns/rules.h"
#include "sandbox/store/families.h"
#include "sandbox/store/policies.h"
#include "sandbox/traffic.h"
#include "sandbox/world.h"
#include "tests/sandbox/support/household.h"

namespace quillmar::sandbox::test {
namespace {

using namespace std::chrono_literals;

class DemoTest : public ServiceTest {
 protected:
  DemoTest() {
    restart({.seed = Seed::demo});
    ann_ = given("POST", "/auth/login", {}, {{"email", demoPrimaryEmail}, {"password", demoPassword}})
               .at("token");
  }

  Json children() { return given("GET", "/children", ann_).at("children"); }
  Json allDevices() {
    const auto home = given("GET", "/children", ann_);
    auto devices = home.at("unassigned_devices");
    for (const auto& child : home.at("children")) {
      for (const auto& device : child.at("devices")) devices.push_back(device);
    }
    return devices;
  }
  Json logsOf(const Json& device) {
    return given("GET", "/devices/" + device.at("id").get<std::string>() + "/logs?limit=1000", ann_)
        .at("logs");
  }

  std::string ann_;
};

TEST_F(DemoTest, is_one_family_of_two_parents_with_an_open_invitation) {
  const auto family = given("GET", "/family", ann_);
  EXPECT_EQ(family.at("is_primary"), true);
  EXPECT_EQ(family.at("members").size(), 2U);
  EXPECT_EQ(family.at("pending_invitations").size(), 1U);
  const auto ben = given("POST", "/auth/login", {}, {{"email", demoMemberEmail}, {"password", demoPassword}});
  EXPECT_EQ(given("GET", "/family", ben.at("token")).at("is_primary"), false);
}

TEST_F(DemoTest, has_three_children_and_seven_devices_of_mixed_types_and_states) {
  EXPECT_EQ(children().size(), 3U);
  std::set<std::string> types;
  std::set<std::pair<bool, bool>> states;
  for (const auto& device : allDevices()) {
    types.insert(device.at("device_type"));
    states.emplace(device.at("is_active"), device.at("is_online"));
  }
  EXPECT_EQ(allDevices().size(), 7U);
  EXPECT_GE(types.size(), 5U);
  EXPECT_EQ(states, (std::set<std::pair<bool, bool>>{{true, true}, {true, false}, {false, false}}));
}

TEST_F(DemoTest, has_policies_of_both_kinds) {
  std::set<bool> blocked;
  for (const auto& child : children()) {
    blocked.insert(child.at("policy").at("is_blocked").get<bool>());
  }
  EXPECT_EQ(blocked.size(), 2U);
}

TEST_F(DemoTest, has_a_day_of_logs_that_match_its_policies) {
  int blocked = 0;
  int allowed = 0;
  for (const auto& device : allDevices()) {
    for (const auto& log : logsOf(device)) {
      ++(log.at("was_blocked").get<bool>() ? blocked : allowed);
      EXPECT_LE(log.at("timestamp"), iso8601(now()));
      EXPECT_GT(log.at("timestamp"), iso8601(now() - 24h));
      EXPECT_LE(log.at("timestamp"), device.at("last_seen_at"));
    }
  }
  EXPECT_GT(blocked, 50);
  EXPECT_GT(allowed, 200);
}

TEST_F(DemoTest, has_a_home_network_that_matches) {
  const auto home = given("GET", "/home-network", ann_);
  EXPECT_EQ(home.at("ip_matches"), true);
  EXPECT_EQ(home.at("policy").at("blocked_domains").size(), 1U);
}

TEST_F(DemoTest, comes_back_at_a_reset) {
  for (const auto& child : children()) {
    given("DELETE", "/children/" + child.at("id").get<std::string>(), ann_);
  }
  given("POST", "/sandbox/reset");
  ann_ =
      given("POST", "/auth/login", {}, {{"email", demoPrimaryEmail}, {"password", demoPassword}}).at("token");
  EXPECT_EQ(children().size(), 3U);
}

class TrafficTest : public testing::Test {
 protected:
  TrafficTest() : database_{std::move(*Database::open(std::nullopt))} {
    Transaction transaction{*database_};
    const auto parent =
        addAccount(*database_, {.email = "a@example.com", .password = "secret", .name = "A"}, start);
    const auto family = addFamily(*database_, parent, start);
    online_ =
        addDevice(*database_, {.familyId = family, .parentId = parent, .name = "On", .type = "ios"}, start);
    addDevice(*database_, {.familyId = family, .parentId = parent, .name = "Off", .type = "ios"}, start);
    logQuery(*database_, online_, "first.example", "A", false, start);
    EXPECT_TRUE(transaction.commit());
  }

  void browseAt(Time now) {
    Transaction transaction{*database_};
    browse(*database_, now, dice_);
    EXPECT_TRUE(transaction.commit());
  }
  std::int64_t count(const std::string& condition) {
    return database_
        ->first(
            "SELECT count(*) FROM dns_logs WHERE " + condition, [](Row row) { return row.integer(0); },
            online_)
        .value_or(-1);
  }

  static constexpr Time start{std::chrono::milliseconds{1'791'498'660'250}};
  std::unique_ptr<Database> database_;
  std::string online_;
  Dice dice_{1};
};

TEST_F(TrafficTest, goes_on_for_devices_that_are_online_and_for_no_others) {
  for (int round = 1; round <= 200; ++round) browseAt(start + round * 20s);
  EXPECT_GT(count("device_id = ?"), 100) << "each query keeps the device online";
  EXPECT_EQ(count("device_id <> ?"), 0);
}

TEST_F(TrafficTest, stops_when_the_device_goes_offline) {
  browseAt(start + onlineFor + 1ms);
  EXPECT_EQ(count("device_id = ?"), 1);
}

TEST_F(TrafficTest, obeys_the_policy) {
  {
    Transaction transaction{*database_};
    setPolicy(*database_, Owner::device, online_, true, "whitelist", start);
    addDomain(*database_, Owner::device, online_, List::allowed, "school.example", start);
    EXPECT_TRUE(transaction.commit());
  }
  for (int round = 1; round <= 200; ++round) browseAt(start + round * 1s);
  EXPECT_GT(count("device_id = ? AND was_blocked"), 0);
  EXPECT_GT(count("device_id = ? AND domain LIKE '%school.example'"), 0);
  EXPECT_EQ(count("device_id = ? AND domain LIKE '%school.example' AND was_blocked"), 0);
}

}  // namespace
}  // namespace quillmar::sandbox::test
