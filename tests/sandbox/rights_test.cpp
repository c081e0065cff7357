#include "tests/sandbox/support/household.h"

namespace quillmar::sandbox::test {
namespace {

using Call = std::tuple<std::string, std::string, std::string>;  // method, path, body

class RightsTest : public ServiceTest {
 protected:
  RightsTest()
      : ann_{givenAccount("ann@example.com")},
        ben_{givenMember(ann_, "ben@example.com")},
        bensMembership_{"/family/members/" + memberId(ann_, "ben@example.com")},
        child_{"/children/" + givenChild(ann_)},
        device_{"/devices/" + givenDevice(ann_)} {}

  void set(const Json& rights) { given("PUT", bensMembership_, ann_, rights); }

  void expectForBen(int status, const std::vector<Call>& calls) {
    for (const auto& [method, path, body] : calls) {
      const auto reply = ask(method, path, ben_, body);
      EXPECT_EQ(reply.status, status) << method << ' ' << path;
      EXPECT_EQ(status == 403, reply.error().ends_with('.')) << reply.body;
    }
  }

  std::vector<Call> callsOnDevices() const {
    return {{"PUT", device_, R"({"friendly_name":"x"})"},
            {"DELETE", device_, ""},
            {"POST", "/children", R"({"name":"x"})"},
            {"PUT", child_, R"({"name":"x"})"},
            {"DELETE", child_, ""},
            {"POST", child_ + "/devices", R"({"device_id":"x"})"},
            {"DELETE", child_ + "/devices/x", ""},
            {"POST", "/enrollment/complete", R"({"enrollment_code":"x","device_name":"x"})"},
            {"POST", "/enrollment/manual", R"({"device_name":"x","device_type":"xbox"})"},
            {"POST", "/home-network", R"({"confirm":true})"},
            {"POST", "/home-network/update-ip", R"({"confirm":true})"}};
  }
  std::vector<Call> callsOnPolicies() const {
    std::vector<Call> calls;
    for (const auto& owner : {device_, child_}) {
      calls.emplace_back("PUT", owner + "/policy", R"({"is_blocked":true,"block_mode":"whitelist"})");
      for (const std::string list : {"/policy/block", "/policy/allow"}) {
        calls.emplace_back("POST", owner + list, R"({"domain":"x.example"})");
        calls.emplace_back("DELETE", owner + list + "/x.example", "");
      }
    }
    return calls;
  }
  std::vector<Call> readingCalls() const {
    return {{"GET", "/children", ""},
            {"GET", child_, ""},
            {"GET", device_ + "/policy", ""},
            {"GET", device_ + "/logs", ""},
            {"GET", "/home-network", ""}};
  }

  std::string ann_;
  std::string ben_;
  std::string bensMembership_;
  std::string child_;
  std::string device_;
};

TEST_F(RightsTest, a_member_without_the_right_to_devices_cannot_change_them) {
  set({{"can_manage_devices", false}});
  expectForBen(403, callsOnDevices());
  expectForBen(200, readingCalls());
  EXPECT_EQ(ask("PUT", child_ + "/policy", ben_, R"({"is_blocked":true,"block_mode":"whitelist"})").status,
            200);
  EXPECT_EQ(given("GET", "/children", ann_).at("children").size(), 1U);
}

TEST_F(RightsTest, a_member_without_the_right_to_policies_cannot_change_them) {
  set({{"can_manage_policies", false}});
  expectForBen(403, callsOnPolicies());
  expectForBen(200, readingCalls());
  EXPECT_EQ(ask("PUT", device_, ben_, R"({"friendly_name":"x"})").status, 200);
  EXPECT_EQ(given("GET", child_, ann_).at("policy").at("is_blocked"), false);
}

TEST_F(RightsTest, a_disabled_member_may_only_see_the_family_and_leave) {
  set({{"is_active", false}});
  expectForBen(403, callsOnDevices());
  expectForBen(403, callsOnPolicies());
  expectForBen(403, readingCalls());
  expectForBen(200, {{"GET", "/family", ""}, {"POST", "/auth/refresh", ""}});
  expectForBen(204, {{"DELETE", "/auth/account", R"({"password":"correct horse"})"}});
}

TEST_F(RightsTest, restored_rights_apply_at_once) {
  set({{"is_active", false}, {"can_manage_devices", false}});
  set({{"is_active", true}});
  EXPECT_EQ(ask("PUT", device_, ben_, R"({"friendly_name":"x"})").status, 403)
      << "the other right is still missing";
  set({{"can_manage_devices", true}});
  EXPECT_EQ(ask("PUT", device_, ben_, R"({"friendly_name":"x"})").status, 200);
}

TEST_F(RightsTest, only_the_primary_parent_manages_the_family) {
  const std::string code = given("POST", "/family/invite", ann_, Json::object()).at("invite_code");
  expectForBen(403, {{"POST", "/family/invite", "{}"},
                     {"DELETE", "/family/invite/" + code, ""},
                     {"PUT", bensMembership_, R"({"can_manage_devices":true})"},
                     {"DELETE", bensMembership_, ""}});
  EXPECT_EQ(given("GET", "/family", ann_).at("pending_invitations").size(), 1U);
  EXPECT_EQ(given("GET", "/family", ben_).at("members").size(), 2U);
}

TEST_F(RightsTest, the_primary_parent_can_neither_be_restricted_nor_removed) {
  const auto path = "/family/members/" + memberId(ann_, "ann@example.com");
  EXPECT_EQ(ask("PUT", path, ann_, R"({"is_active":false})").status, 422);
  EXPECT_EQ(ask("DELETE", path, ann_).status, 422);
  EXPECT_EQ(ask("GET", "/children", ann_).status, 200);
}

TEST_F(RightsTest, a_removed_member_keeps_the_account_and_sees_nothing_of_the_family) {
  const auto device = givenDevice(ben_);
  EXPECT_EQ(ask("DELETE", bensMembership_, ann_).status, 204);
  EXPECT_EQ(given("GET", "/family", ben_).at("family"), nullptr);
  EXPECT_EQ(given("GET", "/children", ben_),
            (Json{{"children", Json::array()}, {"unassigned_devices", Json::array()}}));
  EXPECT_EQ(ask("GET", child_, ben_).status, 404);
  EXPECT_EQ(ask("DELETE", "/devices/" + device, ben_).status, 404)
      << "what Ben enrolled stays with the family";
  EXPECT_EQ(given("GET", "/children", ann_).at("unassigned_devices").size(), 2U);
  EXPECT_EQ(ask("DELETE", bensMembership_, ann_).status, 404);
}

TEST_F(RightsTest, a_parent_without_a_family_gets_one_with_the_first_child) {
  given("DELETE", bensMembership_, ann_);
  givenChild(ben_, "Own");
  const auto family = given("GET", "/family", ben_);
  EXPECT_EQ(family.at("is_primary"), true);
  EXPECT_EQ(given("GET", "/children", ben_).at("children").size(), 1U);
  EXPECT_EQ(given("GET", "/children", ann_).at("children").size(), 1U);
}

}  // namespace
}  // namespace quillmar::sandbox::test
