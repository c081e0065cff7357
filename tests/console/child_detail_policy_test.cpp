#include "tests/console/child_detail_fixture.h"

namespace quillmar {
namespace {

using Names = std::vector<std::string>;

struct ChildPolicyPart : ChildDetail {
  static ChildPolicy inMode(ChildPolicy policy, const std::string& mode) {
    policy.blockMode = mode;
    return policy;
  }
  // Sets the toggle as a person does.
  void toggle(bool on) {
    EXPECT_TRUE(page().policySection.isBlocked.input(on));
    app.settle();
  }
};

using BlockToggle = ChildPolicyPart;
using SiteLists = ChildPolicyPart;
using LogSwipes = ChildPolicyPart;

TEST_F(BlockToggle, loading_an_unblocked_child_sends_nothing) {
  open({}, inMode(makePolicy(false, {"a.example"}, {"b.example"}), "whitelist"));
  EXPECT_TRUE(policyCalls().empty());
  EXPECT_EQ(page().policySection.blockMode(), "whitelist");
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"a.example"});
  EXPECT_EQ(page().policySection.blockedDomains(), Names{"b.example"});
  EXPECT_EQ(page().policySection.blockWarning(), std::nullopt);
}

TEST_F(BlockToggle, loading_a_blocked_child_sends_whitelist_mode_once) {
  answerPolicy("PUT", "", makePolicy(true));
  open({}, makePolicy(true, {"a.example"}));
  EXPECT_EQ(policyCalls(), Names{R"({"is_blocked":true,"block_mode":"whitelist"})"});
  EXPECT_TRUE(page().policySection.isBlocked());
  EXPECT_EQ(page().policySection.blockMode(), "whitelist");
  EXPECT_EQ(page().policySection.blockWarning(),
            "Internet is blocked for Mia. Only allowed sites will work.");
}

TEST_F(BlockToggle, the_call_is_sent_after_the_whole_answer_is_applied) {
  answerChild({}, makePolicy(true, {"a.example"}, {"b.example"}));
  make();
  const auto watching = page().policySection.blockMode.onChange([&] {
    EXPECT_TRUE(page().policySection.isBlocked());
    EXPECT_EQ(page().policySection.policy()->allowedDomains, Names{"a.example"});
    EXPECT_EQ(page().policySection.allowedDomains(), Names{"a.example"});
    EXPECT_EQ(page().policySection.blockedDomains(), Names{"b.example"});
  });
  screen->appear();
  app.settle();
  EXPECT_EQ(page().policySection.blockMode(), "whitelist");
}

TEST_F(BlockToggle, turning_on_for_the_first_time_and_turning_off_both_send_whitelist) {
  answerPolicy("PUT", "", makePolicy(true));
  open({}, makePolicy(false));
  toggle(true);
  toggle(false);
  EXPECT_EQ(policyCalls(), (Names{R"({"is_blocked":true,"block_mode":"whitelist"})",
                                  R"({"is_blocked":false,"block_mode":"whitelist"})"}));
  EXPECT_EQ(page().policySection.blockMode(), "whitelist");
}

TEST_F(BlockToggle, setting_the_same_value_sends_nothing) {
  open({}, makePolicy(false));
  toggle(false);
  page().policySection.isBlocked = false;
  app.settle();
  EXPECT_TRUE(policyCalls().empty());
}

TEST_F(BlockToggle, an_answer_updates_the_lists_but_not_the_toggle_or_the_mode) {
  auto answer = inMode(makePolicy(false, {"a.example"}, {"b.example"}), "blacklist");
  answerPolicy("PUT", "", answer);
  open({}, makePolicy(false));
  toggle(true);
  EXPECT_EQ(page().policySection.policy(), answer);
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"a.example"});
  EXPECT_EQ(page().policySection.blockedDomains(), Names{"b.example"});
  EXPECT_TRUE(page().policySection.isBlocked());
  EXPECT_EQ(page().policySection.blockMode(), "whitelist");
  EXPECT_EQ(policyCalls().size(), 1U);
}

TEST_F(BlockToggle, a_failure_is_shown_and_does_not_reset_the_toggle) {
  http().answer("PUT", "/children/c1/policy", 403);
  open({}, makePolicy(false, {"a.example"}));
  toggle(true);
  expectAlert("Access denied");
  EXPECT_TRUE(page().policySection.isBlocked());
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"a.example"});
  EXPECT_EQ(page().policySection.policy(), makePolicy(false, {"a.example"}));
}

TEST_F(BlockToggle, a_reload_that_turns_it_off_sends_the_stored_mode) {
  answerPolicy("PUT", "", makePolicy(true));
  open({}, makePolicy(true));
  answerChild({}, makePolicy(false));
  page().reloadChild();
  app.settle();
  EXPECT_EQ(policyCalls(), (Names{R"({"is_blocked":true,"block_mode":"whitelist"})",
                                  R"({"is_blocked":false,"block_mode":"blacklist"})"}));
}

TEST_F(BlockToggle, a_reload_that_does_not_change_a_blocked_child_sends_nothing) {
  answerPolicy("PUT", "", makePolicy(true));
  open({}, makePolicy(true));
  page().reloadChild();
  app.settle();
  EXPECT_EQ(policyCalls().size(), 1U);
}

TEST_F(BlockToggle, a_child_without_a_policy_starts_with_an_unsent_blacklist_mode) {
  open();
  EXPECT_EQ(page().policySection.blockMode(), "blacklist");
  toggle(true);
  EXPECT_EQ(policyCalls(), Names{R"({"is_blocked":true,"block_mode":"whitelist"})"});
}

TEST_F(SiteLists, each_entry_is_a_row_that_can_be_removed) {
  open({}, makePolicy(false, {"a.example", "B.example"}, {"c.example"}));
  EXPECT_EQ(texts(page().policySection.allowedRows, &PolicySiteRow::domain),
            (Names{"a.example", "B.example"}));
  EXPECT_EQ(texts(page().policySection.permanentAllowedSiteRows, &PermanentAllowedSiteRow::domain),
            (Names{"a.example", "B.example"}));
  EXPECT_EQ(texts(page().policySection.blockedRows, &PolicySiteRow::domain), Names{"c.example"});
  EXPECT_EQ(page().policySection.allowedCount(), 2);
  EXPECT_EQ(page().policySection.blockedCount(), 1);
}

TEST_F(SiteLists, an_added_site_is_only_lower_cased_and_trimmed) {
  struct Row {
    std::string typed;
    std::string sent;
  };
  open();
  for (const auto& [typed, sent] : std::vector<Row>{{"Example.COM", "example.com"},
                                                    {" \t x.example \t", "x.example"},
                                                    {"x.example\n", "x.example\\n"},
                                                    {"https://X.example/Path?q", "https://x.example/path?q"},
                                                    {"   ", ""},
                                                    {"a b", "a b"},
                                                    {"BÜCHER.example", "bücher.example"}}) {
    http().forgetRequests();
    page().policySection.newDomain.input(typed);
    page().policySection.newBlockedDomain.input(typed);
    EXPECT_TRUE(page().policySection.addAllowedSite());
    EXPECT_TRUE(page().policySection.addBlockedSite());
    const Names body{R"({"domain":")" + sent + "\"}"};
    EXPECT_EQ(bodies("POST", "/children/c1/policy/allow"), body);
    EXPECT_EQ(bodies("POST", "/children/c1/policy/block"), body);
  }
}

TEST_F(SiteLists, an_empty_field_adds_nothing) {
  open();
  http().forgetRequests();
  EXPECT_FALSE(page().policySection.addAllowedSite());
  EXPECT_FALSE(page().policySection.addBlockedSite());
  EXPECT_TRUE(http().requests().empty());
}

TEST_F(SiteLists, the_field_is_cleared_and_the_list_updated_after_the_answer) {
  answerPolicy("POST", "/allow", makePolicy(true, {"a.example", "x.example"}, {"ignored.example"}));
  open({}, makePolicy(false, {"a.example"}, {"b.example"}));
  page().policySection.newDomain = std::string("x.example");
  page().policySection.addAllowedSite();
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"a.example"});
  EXPECT_EQ(page().policySection.newDomain(), "x.example");
  app.settle();
  EXPECT_EQ(page().policySection.allowedDomains(), (Names{"a.example", "x.example"}));
  EXPECT_EQ(page().policySection.newDomain(), "");
  EXPECT_EQ(page().policySection.blockedDomains(), Names{"b.example"})
      << "the other list is not taken from the answer";
  EXPECT_FALSE(page().policySection.isBlocked());
}

TEST_F(SiteLists, the_blocked_field_updates_its_own_list) {
  answerPolicy("POST", "/block", makePolicy(false, {"ignored.example"}, {"x.example"}));
  open({}, makePolicy(false, {"a.example"}));
  page().policySection.newDomain = std::string("stays");
  page().policySection.newBlockedDomain = std::string("x.example");
  page().policySection.addBlockedSite();
  app.settle();
  EXPECT_EQ(page().policySection.blockedDomains(), Names{"x.example"});
  EXPECT_EQ(page().policySection.newBlockedDomain(), "");
  EXPECT_EQ(page().policySection.newDomain(), "stays");
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"a.example"});
}

TEST_F(SiteLists, a_refused_site_is_reported_and_stays_in_its_field) {
  http().answer("POST", "/children/c1/policy/allow", 400, R"({"error":"Not a domain"})");
  http().answer("POST", "/children/c1/policy/block", 400, R"({"error":"Not one either"})");
  open({}, makePolicy(false, {"a.example"}));
  page().policySection.newDomain = std::string("x");
  page().policySection.addAllowedSite();
  app.settle();
  expectAlert("Not a domain");
  EXPECT_EQ(page().policySection.newDomain(), "x");
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"a.example"});
  page().policySection.newBlockedDomain = std::string("y");
  page().policySection.addBlockedSite();
  app.settle();
  expectAlert("Not one either");
  EXPECT_EQ(page().policySection.newBlockedDomain(), "y");
}

TEST_F(SiteLists, two_additions_are_sent_concurrently_and_the_last_answer_wins) {
  open();
  http().hold();
  http().answer("POST", "/children/c1/policy/allow", 200, jsonOf(makePolicy(false, {"a"})));
  http().answer("POST", "/children/c1/policy/allow", 200, jsonOf(makePolicy(false, {"a", "b"})));
  page().policySection.newDomain = std::string("a");
  page().policySection.addAllowedSite();
  page().policySection.newDomain = std::string("b");
  page().policySection.addAllowedSite();
  app.settle();
  EXPECT_EQ(bodies("POST", "/children/c1/policy/allow"), (Names{R"({"domain":"a"})", R"({"domain":"b"})"}));
  http().complete(1, httpAnswer(200, jsonOf(makePolicy(false, {"a", "b"}))));
  http().complete(0, httpAnswer(200, jsonOf(makePolicy(false, {"a"}))));
  app.settle();
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"a"});
}

TEST_F(SiteLists, a_removal_sends_the_entry_unchanged) {
  answerPolicy("DELETE", "/allow/A.example", makePolicy(false, {}, {"ignored"}));
  answerPolicy("DELETE", "/block/B.example", makePolicy(false, {"ignored"}, {}));
  open({}, makePolicy(false, {"A.example"}, {"B.example"}));
  page().policySection.allowedRows[0].remove();
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"A.example"})
      << "not before the service has answered";
  page().policySection.blockedRows[0].remove();
  app.settle();
  EXPECT_TRUE(page().policySection.allowedDomains().empty());
  EXPECT_TRUE(page().policySection.blockedDomains().empty());
  EXPECT_EQ(page().policySection.allowedRows.size(), 0U);
  EXPECT_EQ(page().policySection.permanentAllowedSiteRows.size(), 0U);
  EXPECT_EQ(page().policySection.blockedRows.size(), 0U);
}

TEST_F(SiteLists, a_swipe_to_the_left_removes_an_allowed_site) {
  answerPolicy("DELETE", "/allow/a.example", makePolicy());
  open({}, makePolicy(false, {"a.example"}));
  auto& row = page().policySection.permanentAllowedSiteRows[0];
  row.dragChanged(-81, 0);
  row.dragEnded(-81, 0);
  app.settle();
  EXPECT_TRUE(page().policySection.allowedDomains().empty());
}

TEST_F(SiteLists, a_failed_removal_is_reported_and_removes_nothing) {
  open({}, makePolicy(false, {"a b"}, {"b.example"}));
  http().answer("DELETE", "/children/c1/policy/block/b.example", 404);
  page().policySection.removeBlockedSite("b.example");
  app.settle();
  expectAlert("Resource not found");
  page().policySection.removeAllowedSite("a b");
  app.settle();
  expectAlert("Invalid response from server");
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"a b"});
  EXPECT_EQ(page().policySection.blockedDomains(), Names{"b.example"});
}

TEST_F(SiteLists, an_unchanged_list_announces_no_row) {
  open({}, makePolicy(false, {"a.example", "b.example"}, {"c.example"}));
  page().policySection.permanentAllowedSiteRows[1].dragChanged(-40, 0);
  int changes = 0;
  const auto listening =
      page().observe([&](const Member& member) { changes += member.name().ends_with("Rows") ? 1 : 0; });
  page().reloadChild();
  app.settle();
  EXPECT_EQ(changes, 0);
  answerChild({}, makePolicy(false, {"b.example"}, {"c.example"}));
  page().reloadChild();
  app.settle();
  EXPECT_EQ(page().policySection.permanentAllowedSiteRows[0].offset(), -40) << "a row stays its site's";
}

TEST_F(LogSwipes, a_site_counts_as_allowed_ignoring_case) {
  open({}, makePolicy(false, {"Example.COM", "bücher.example"}));
  EXPECT_TRUE(page().policySection.isDomainAllowed("example.com"));
  EXPECT_TRUE(page().policySection.isDomainAllowed("EXAMPLE.com"));
  EXPECT_TRUE(page().policySection.isDomainAllowed("BÜCHER.example"));
  EXPECT_FALSE(page().policySection.isDomainAllowed("www.example.com"));
  EXPECT_FALSE(page().policySection.isDomainAllowed("google.com")) << "the service's own sites do not count";
}

TEST_F(LogSwipes, allowing_sends_the_site_with_haptic_feedback) {
  answerPolicy("POST", "/allow", makePolicy(false, {"example.co.uk"}, {"ignored"}));
  open();
  page().policySection.allowFromLog(makeLog("WWW.Shop.Example.co.uk", 1));
  EXPECT_TRUE(app.machine.haptics.played.empty());
  app.settle();
  EXPECT_EQ(bodies("POST", "/children/c1/policy/allow"), Names{R"({"domain":"example.co.uk"})"});
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"example.co.uk"});
  EXPECT_TRUE(page().policySection.blockedDomains().empty());
  EXPECT_EQ(app.machine.haptics.played, std::vector{HapticFeedback::success});
}

TEST_F(LogSwipes, allowing_an_allowed_site_sends_nothing) {
  open({}, makePolicy(false, {"EXAMPLE.com"}));
  http().forgetRequests();
  page().policySection.allowFromLog(makeLog("www.example.com", 1));
  app.settle();
  EXPECT_TRUE(http().requests().empty());
  EXPECT_TRUE(app.machine.haptics.played.empty());
}

TEST_F(LogSwipes, blocking_always_sends_the_site) {
  answerPolicy("POST", "/block", makePolicy(false, {"ignored"}, {"example.com"}));
  open({}, makePolicy(false, {"example.com"}, {"example.com"}));
  page().policySection.blockFromLog(makeLog("www.example.com", 1));
  app.settle();
  EXPECT_EQ(bodies("POST", "/children/c1/policy/block"), Names{R"({"domain":"example.com"})"});
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"example.com"});
  EXPECT_EQ(page().policySection.blockedDomains(), Names{"example.com"});
  EXPECT_EQ(app.machine.haptics.played, std::vector{HapticFeedback::success});
}

TEST_F(LogSwipes, a_failure_is_reported_without_haptic_feedback) {
  http().answer("POST", "/children/c1/policy/allow", 403);
  http().answer("POST", "/children/c1/policy/block", 404);
  open();
  page().policySection.allowFromLog(makeLog("www.example.com", 1));
  app.settle();
  expectAlert("Access denied");
  page().policySection.blockFromLog(makeLog("www.example.com", 1));
  app.settle();
  expectAlert("Resource not found");
  EXPECT_TRUE(app.machine.haptics.played.empty());
}

TEST_F(LogSwipes, the_texts_are_exact) {
  make();
  EXPECT_EQ(page().policySection.controlsTitle(), "Internet Controls");
  EXPECT_EQ(page().policySection.blockTitle(), "Block the Internet");
  EXPECT_EQ(page().policySection.blockCaption(), "Block all sites except allowed list");
  EXPECT_EQ(page().policySection.allowedTitle(), "Allowed Sites");
  EXPECT_EQ(page().policySection.noAllowedText(),
            "No sites allowed yet. Default sites (Quillmar, Microsoft, Apple, Google) are always allowed.");
  EXPECT_EQ(page().policySection.allowedPlaceholder(), "Add allowed site (e.g., example.com)");
  EXPECT_EQ(page().policySection.blockedTitle(), "Blocked Sites");
  EXPECT_EQ(page().policySection.blockedCaption(), "Sites in this list will always be blocked");
  EXPECT_EQ(page().policySection.noBlockedText(), "No blocked sites yet");
  EXPECT_EQ(page().policySection.blockedPlaceholder(), "Add blocked site (e.g., example.com)");
}

}  // namespace
}  // namespace quillmar
