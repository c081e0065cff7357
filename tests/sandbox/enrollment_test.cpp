#include <set>

#include "tests/sandbox/support/household.h"

namespace quillmar::sandbox::test {
namespace {

using namespace std::chrono_literals;

class EnrollmentTest : public ServiceTest {
 protected:
  EnrollmentTest() : ann_{givenAccount("ann@example.com")} {}

  Json starting() {
    return given("POST", "/enrollment/init", {},
                 {{"device_id", "OWN-ID"}, {"device_name", "Mia's iPad"}, {"device_type", "ios"}});
  }
  Reply completing(const Json& code, const std::string& name = "Mia's iPad") {
    return ask("POST", "/enrollment/complete", ann_,
               Json{{"enrollment_code", code}, {"device_name", name}}.dump());
  }
  Reply status(const std::string& deviceId) { return ask("GET", "/enrollment/status/" + deviceId); }
  Reply checkingIn(const std::string& deviceId) {
    return ask("POST", "/device/checkin", {}, Json{{"device_id", deviceId}, {"device_type", "ios"}}.dump());
  }

  std::string ann_;
};

TEST_F(EnrollmentTest, the_service_gives_the_device_an_id_of_its_own) {
  const auto first = starting();
  const auto second = starting();
  EXPECT_NE(first.at("device_id"), "OWN-ID");
  EXPECT_NE(first.at("device_id"), second.at("device_id"));
  EXPECT_NE(first.at("enrollment_code"), second.at("enrollment_code"));
  EXPECT_EQ(status("OWN-ID").status, 404);
}

TEST_F(EnrollmentTest, a_code_is_short_and_without_lookalikes) {
  for (int i = 0; i < 50; ++i) {
    const std::string code = starting().at("enrollment_code");
    EXPECT_THAT(code, testing::MatchesRegex("[A-HJ-NP-Z2-9]{8}"));
  }
}

TEST_F(EnrollmentTest, before_completion_the_status_holds_no_endpoint) {
  const auto pending = starting();
  const auto seen = status(pending.at("device_id")).json();
  EXPECT_EQ(seen, (Json{{"status", "pending"},
                        {"device_id", pending.at("device_id")},
                        {"doh_endpoint", nullptr},
                        {"doh_base_url", nullptr},
                        {"api_base_url", nullptr}}));
  EXPECT_EQ(checkingIn(pending.at("device_id")).status, 404);
}

TEST_F(EnrollmentTest, a_completed_device_gets_its_endpoint_and_the_services_root) {
  const auto pending = starting();
  const auto completed = completing(pending.at("enrollment_code"));
  EXPECT_EQ(completed.status, 201);
  EXPECT_EQ(completed.json().at("device").at("id"), pending.at("device_id"));
  EXPECT_EQ(completed.json().at("device").at("child_id"), nullptr);
  EXPECT_EQ(completed.json().at("device").at("device_type"), "ios");

  const auto seen = status(pending.at("device_id")).json();
  EXPECT_EQ(seen.at("status"), "completed");
  EXPECT_EQ(seen.at("doh_endpoint"), completed.json().at("doh_endpoint"));
  EXPECT_EQ(seen.at("doh_base_url"), service().secureUrl() + "/dns-query");
  EXPECT_THAT(seen.at("doh_endpoint").get<std::string>(),
              testing::StartsWith(service().secureUrl() + "/dns-query/"));
}

TEST_F(EnrollmentTest, the_root_is_the_one_of_the_devices_request) {
  const auto pending = starting();
  completing(pending.at("enrollment_code"));
  const auto path = "/api/v1/enrollment/status/" + pending.at("device_id").get<std::string>();
  const auto rootThrough = [&](const std::string& root) {
    return curl({root + path}).json().at("api_base_url");
  };
  EXPECT_EQ(rootThrough(service().url()), service().url());
  EXPECT_EQ(rootThrough(service().secureUrl()), service().secureUrl());
  const auto byName = "https://localhost:" + std::to_string(service().tlsPort());
  EXPECT_EQ(rootThrough(byName), byName);
  EXPECT_EQ(curl({"--http1.1", byName + path}).json().at("api_base_url"), byName);
}

TEST_F(EnrollmentTest, a_code_works_once) {
  const auto pending = starting();
  EXPECT_EQ(completing(pending.at("enrollment_code")).status, 201);
  EXPECT_EQ(completing(pending.at("enrollment_code")).status, 409);
  EXPECT_EQ(given("GET", "/children", ann_).at("unassigned_devices").size(), 1U);
}

TEST_F(EnrollmentTest, a_code_may_be_typed_in_small_letters) {
  std::string code = starting().at("enrollment_code");
  for (auto& c : code) c = char(std::tolower(c));
  EXPECT_EQ(completing(code).status, 201);
}

TEST_F(EnrollmentTest, after_10_minutes_a_code_has_expired_on_both_sides) {
  const auto pending = starting();
  EXPECT_EQ(pending.at("expires_at"), "2026-10-08T22:41:00.250Z");
  advance(10min - 1ms);
  EXPECT_EQ(status(pending.at("device_id")).json().at("status"), "pending");
  advance(1ms);
  EXPECT_EQ(status(pending.at("device_id")).json().at("status"), "expired");
  const auto refused = completing(pending.at("enrollment_code"));
  EXPECT_EQ(refused.status, 422);
  EXPECT_EQ(refused.error(), "This enrollment code has expired. Start again on the child's device.");
}

TEST_F(EnrollmentTest, a_completed_device_stays_completed_after_the_code_expires) {
  const auto pending = starting();
  completing(pending.at("enrollment_code"));
  advance(24h * 30);
  EXPECT_EQ(status(pending.at("device_id")).json().at("status"), "completed");
}

TEST_F(EnrollmentTest, an_unknown_code_or_child_adds_no_device) {
  EXPECT_EQ(completing("AAAAAAAA").status, 404);
  const auto pending = starting();
  const Json body{
      {"enrollment_code", pending.at("enrollment_code")}, {"device_name", "x"}, {"child_id", "nobody"}};
  EXPECT_EQ(ask("POST", "/enrollment/complete", ann_, body.dump()).status, 404);
  EXPECT_EQ(given("GET", "/children", ann_).at("unassigned_devices"), Json::array());
  EXPECT_EQ(completing(pending.at("enrollment_code")).status, 201) << "the code is still good";
}

TEST_F(EnrollmentTest, without_a_name_from_the_parent_the_device_keeps_its_own) {
  EXPECT_EQ(completing(starting().at("enrollment_code"), "").json().at("device").at("device_name"),
            "Mia's iPad");
  EXPECT_EQ(completing(starting().at("enrollment_code"), "Tablet").json().at("device").at("device_name"),
            "Tablet");
}

TEST_F(EnrollmentTest, a_checkin_makes_the_device_online_for_three_minutes) {
  const auto device = givenDevice(ann_);
  const auto online = [&] {
    return given("GET", "/children", ann_).at("unassigned_devices")[0].at("is_online");
  };
  EXPECT_EQ(online(), false);
  const auto answer = checkingIn(device).json();
  EXPECT_EQ(answer.at("status"), "ok");
  EXPECT_EQ(answer.at("server_time"), "2026-10-08T22:31:00.250Z");
  advance(3min);
  EXPECT_EQ(online(), true);
  advance(1ms);
  EXPECT_EQ(online(), false);
  EXPECT_EQ(given("GET", "/children", ann_).at("unassigned_devices")[0].at("last_seen_at"),
            "2026-10-08T22:31:00.250Z");
}

TEST_F(EnrollmentTest, a_deleted_device_learns_of_it_at_its_next_checkin) {
  const auto device = givenDevice(ann_);
  given("DELETE", "/devices/" + device, ann_);
  const auto reply = checkingIn(device);
  EXPECT_EQ(reply.status, 404);
  EXPECT_EQ(reply.error(), "This device is not enrolled any more. Ask your parent to add it again.");
  EXPECT_EQ(status(device).json().at("status"), "expired");
}

TEST_F(EnrollmentTest, five_types_of_device_are_set_up_by_hand_each_in_its_own_way) {
  std::set<std::string> platforms;
  for (const std::string type : {"playstation", "xbox", "nintendo", "smarttv", "other"}) {
    const auto answer =
        given("POST", "/enrollment/manual", ann_, {{"device_name", "Console"}, {"device_type", type}});
    const auto& guide = answer.at("setup_instructions");
    platforms.insert(guide.at("platform"));
    EXPECT_EQ(answer.at("device").at("device_type"), type);
    EXPECT_EQ(guide.at("dns_server_ip"), answer.at("dns_server"));
    EXPECT_GE(guide.at("steps").size(), 4U);
    EXPECT_THAT(guide.at("steps").dump(), testing::HasSubstr(answer.at("dns_server").get<std::string>()));
  }
  EXPECT_EQ(platforms.size(), 5U);
  EXPECT_EQ(given("GET", "/children", ann_).at("unassigned_devices").size(), 5U);
}

TEST_F(EnrollmentTest, a_type_without_manual_setup_is_refused) {
  const auto trying = [&](const Json& changes) {
    Json body{{"device_name", "Console"}, {"device_type", "xbox"}};
    body.update(changes);
    return ask("POST", "/enrollment/manual", ann_, body.dump()).status;
  };
  EXPECT_EQ(trying({{"device_type", "toaster"}}), 422);
  EXPECT_EQ(trying({{"device_name", " "}}), 422);
  EXPECT_EQ(trying({{"device_ip", "192.168.1.256"}}), 422);
  EXPECT_EQ(trying({{"device_ip", "next to the TV"}}), 422);
  EXPECT_EQ(trying({{"child_id", "nobody"}}), 404);
  EXPECT_EQ(given("GET", "/children", ann_).at("unassigned_devices"), Json::array());
  EXPECT_EQ(trying({{"device_ip", "2001:db8::5"}}), 201);
}

}  // namespace
}  // namespace quillmar::sandbox::test
