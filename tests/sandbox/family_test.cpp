
#include "tests/sandbox/support/household.h"

namespace quillmar::sandbox::test {
namespace {

using namespace std::chrono_literals;

class FamilyTest : public ServiceTest {
 protected:
  FamilyTest() : ann_{givenAccount("ann@example.com")} {}

  std::string inviting() { return given("POST", "/family/invite", ann_, Json::object()).at("invite_code"); }
  Reply validating(const std::string& code) { return ask("GET", "/family/invite/" + code); }
  Reply joining(const std::string& code, const std::string& email = "ben@example.com") {
    return ask(
        "POST", "/family/join", {},
        Json{{"invite_code", code}, {"email", email}, {"password", password}, {"display_name", "Ben B"}}
            .dump());
  }
  Json openInvitations() { return given("GET", "/family", ann_).at("pending_invitations"); }

  void expectInvalid(const std::string& code, const std::string& reason) {
    const auto seen = validating(code).json();
    EXPECT_EQ(seen.at("valid"), false);
    EXPECT_EQ(seen.at("error"), reason);
    EXPECT_EQ(seen.at("family_name"), nullptr) << "a dead code tells nothing of the family";
    const auto refused = joining(code);
    EXPECT_GE(refused.status, 400);
    EXPECT_EQ(refused.error(), reason);
  }

  std::string ann_;
};

TEST_F(FamilyTest, an_invitation_is_a_code_of_six_and_a_text_that_holds_it) {
  const auto invitation = given("POST", "/family/invite", ann_, {{"invitee_name", "Grandma"}});
  const std::string code = invitation.at("invite_code");
  EXPECT_THAT(code, testing::MatchesRegex("[A-HJ-NP-Z2-9]{6}"));
  EXPECT_THAT(invitation.at("qr_data").get<std::string>(), testing::EndsWith("?code=" + code));
  EXPECT_EQ(invitation.at("expires_at"), "2026-10-09T22:31:00.250Z");

  const auto open = openInvitations();
  ASSERT_EQ(open.size(), 1U);
  EXPECT_EQ(open[0].at("invite_code"), code);
  EXPECT_EQ(open[0].at("invitee_name"), "Grandma");
  EXPECT_EQ(open[0].at("status"), "pending");
  EXPECT_EQ(open[0].at("created_at"), "2026-10-08T22:31:00.250Z");
}

TEST_F(FamilyTest, a_valid_code_shows_who_invites_to_which_family) {
  const auto code = inviting();
  const Json expected{{"valid", true},
                      {"family_name", "Fielding Family"},
                      {"invited_by_name", "Ann Fielding"},
                      {"expires_at", "2026-10-09T22:31:00.250Z"},
                      {"error", nullptr}};
  EXPECT_EQ(validating(code).json(), expected);
}

TEST_F(FamilyTest, joining_makes_an_account_that_is_signed_in) {
  const auto joined = joining(inviting());
  EXPECT_EQ(joined.status, 201);
  EXPECT_EQ(joined.json().at("role"), "member");
  const auto seen = given("GET", "/family", joined.json().at("token"));
  EXPECT_EQ(seen.at("is_primary"), false);
  EXPECT_EQ(seen.at("family").at("id"), joined.json().at("family_id"));
  EXPECT_EQ(seen.at("members")[1].at("display_name"), "Ben B");
  EXPECT_EQ(seen.at("members")[1].at("parent_id"), joined.json().at("parent_id"));
  EXPECT_EQ(seen.at("members")[1].at("invited_by"), seen.at("members")[0].at("parent_id"));
  EXPECT_EQ(seen.at("members")[1].at("can_manage_devices"), true);
  given("POST", "/auth/login", {}, {{"email", "ben@example.com"}, {"password", password}});
}

TEST_F(FamilyTest, a_code_works_once_only) {
  const auto code = inviting();
  EXPECT_EQ(joining(code).status, 201);
  expectInvalid(code, "This invitation was used already.");
  EXPECT_EQ(openInvitations(), Json::array());
}

TEST_F(FamilyTest, an_email_in_use_is_refused_and_leaves_the_code_good) {
  const auto code = inviting();
  EXPECT_EQ(joining(code, "Ann@example.com").status, 409);
  EXPECT_EQ(validating(code).json().at("valid"), true);
  EXPECT_EQ(joining(code).status, 201);
}

TEST_F(FamilyTest, a_bad_email_or_password_is_refused_and_leaves_the_code_good) {
  const auto code = inviting();
  EXPECT_EQ(joining(code, "ben").status, 422);
  const Json body{
      {"invite_code", code}, {"email", "b@example.com"}, {"password", "short"}, {"display_name", "B"}};
  EXPECT_EQ(ask("POST", "/family/join", {}, body.dump()).status, 422);
  EXPECT_EQ(validating(code).json().at("valid"), true);
}

TEST_F(FamilyTest, a_code_is_valid_for_24_hours) {
  const auto code = inviting();
  advance(24h - 1ms);
  EXPECT_EQ(validating(code).json().at("valid"), true);
  advance(1ms);
  expectInvalid(code, "This invitation has expired. Ask for a new one.");
}

TEST_F(FamilyTest, an_invitation_can_be_taken_back_by_its_code_and_by_its_id) {
  const auto first = inviting();
  inviting();
  EXPECT_EQ(ask("DELETE", "/family/invite/" + first, ann_).status, 204);
  expectInvalid(first, "This invitation was taken back.");
  const std::string id = openInvitations()[0].at("id");
  EXPECT_EQ(ask("DELETE", "/family/invite/" + id, ann_).status, 204);
  EXPECT_EQ(openInvitations(), Json::array());
  EXPECT_EQ(ask("DELETE", "/family/invite/" + first, ann_).status, 404);
}

TEST_F(FamilyTest, an_unknown_code_is_a_404_in_the_form_of_the_record) {
  const auto reply = validating("AAAAAA");
  EXPECT_EQ(reply.status, 404);
  EXPECT_EQ(reply.json().at("valid"), false);
  expectInvalid("AAAAAA", "There is no invitation with this code.");
}

TEST_F(FamilyTest, codes_may_come_in_small_letters) {
  auto code = inviting();
  for (auto& c : code) c = char(std::tolower(c));
  EXPECT_EQ(validating(code).json().at("valid"), true);
  EXPECT_EQ(joining(code).status, 201);
}

class HomeNetworkTest : public FamilyTest {
 protected:
  Reply creating(const Json& body) { return ask("POST", "/home-network", ann_, body.dump()); }
  void comeFrom(const std::string& address) { service().misbehave({.publicAddress = address}); }
};

TEST_F(HomeNetworkTest, before_it_is_set_up_there_is_only_the_callers_address) {
  comeFrom("198.51.100.7");
  const Json expected{
      {"home_network", nullptr}, {"policy", nullptr}, {"current_ip", "198.51.100.7"}, {"ip_matches", false}};
  EXPECT_EQ(ask("GET", "/home-network", ann_).json(), expected);
}

TEST_F(HomeNetworkTest, it_takes_the_callers_address) {
  comeFrom("198.51.100.7");
  const auto made = creating({{"confirm", true}}).json();
  EXPECT_EQ(made.at("home_network").at("public_ip"), "198.51.100.7");
  EXPECT_EQ(made.at("home_network").at("name"), "Home Network");
  EXPECT_EQ(made.at("policy").at("home_network_id"), made.at("home_network").at("id"));
  EXPECT_EQ(made.at("policy").at("block_mode"), "blacklist");
  EXPECT_EQ(made.at("policy").at("blocked_domains"), Json::array());
  EXPECT_EQ(ask("GET", "/home-network", ann_).json().at("ip_matches"), true);
}

TEST_F(HomeNetworkTest, an_address_that_changed_matches_again_after_an_update) {
  creating({{"confirm", true}});
  advance(1h);
  comeFrom("198.51.100.8");
  EXPECT_EQ(ask("GET", "/home-network", ann_).json().at("ip_matches"), false);
  const auto updated = ask("POST", "/home-network/update-ip", ann_, R"({"confirm":true})").json();
  EXPECT_EQ(updated.at("public_ip"), "198.51.100.8");
  EXPECT_EQ(updated.at("updated_at"), "2026-10-08T23:31:00.250Z");
  const auto seen = ask("GET", "/home-network", ann_).json();
  EXPECT_EQ(seen.at("ip_matches"), true);
  EXPECT_EQ(seen.at("home_network").at("updated_at"), "2026-10-08T23:31:00.250Z");
}

TEST_F(HomeNetworkTest, nothing_is_registered_without_a_confirmation) {
  EXPECT_EQ(creating({{"confirm", false}}).status, 422);
  EXPECT_EQ(ask("GET", "/home-network", ann_).json().at("home_network"), nullptr);
  creating({{"confirm", true}});
  comeFrom("198.51.100.9");
  EXPECT_EQ(ask("POST", "/home-network/update-ip", ann_, R"({"confirm":false})").status, 422);
  EXPECT_EQ(ask("GET", "/home-network", ann_).json().at("ip_matches"), false);
}

TEST_F(HomeNetworkTest, a_family_has_at_most_one_and_cannot_update_a_missing_one) {
  EXPECT_EQ(ask("POST", "/home-network/update-ip", ann_, R"({"confirm":true})").status, 404);
  EXPECT_EQ(creating({{"confirm", true}, {"name", "Ours"}}).status, 201);
  EXPECT_EQ(creating({{"confirm", true}, {"name", "Another"}}).status, 409);
  const auto ben = givenMember(ann_, "ben@example.com");
  EXPECT_EQ(given("GET", "/home-network", ben).at("home_network").at("name"), "Ours");
}

}  // namespace
}  // namespace quillmar::sandbox::test
