#include "tests/console/child_detail_fixture.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

struct TakingBack : ChildDetail {
  TakingBack() {
    answerPolicy("POST", "/allow", makePolicy(false, {"a.example", "x.example"}, {"b.example"}));
    answerPolicy("POST", "/block", makePolicy(false, {"a.example"}, {"b.example", "y.example"}));
    answerPolicy("DELETE", "/allow/x.example", makePolicy(false, {"a.example"}, {"b.example"}));
    answerPolicy("DELETE", "/block/y.example", makePolicy(false, {"a.example"}, {"b.example"}));
  }
  void openWithLists() { open({}, makePolicy(false, {"a.example"}, {"b.example"})); }
  PolicySection& policy() { return page().policySection; }
  const Rows<AddedSiteRow>& added() { return policy().addedSites.rows; }
  Names offers() {
    Names all;
    for (std::size_t i = 0; i < added().size(); ++i) {
      all.push_back(added()[i].verb() + " " + added()[i].domain());
    }
    return all;
  }
  void allow(const std::string& site) {
    policy().newDomain = site;
    policy().addAllowedSite();
    app.settle();
  }
  void block(const std::string& site) {
    policy().newBlockedDomain = site;
    policy().addBlockedSite();
    app.settle();
  }
  std::size_t removals() {
    const auto calls = http().calls();
    return static_cast<std::size_t>(
        std::ranges::count_if(calls, [](const std::string& call) { return call.starts_with("DELETE "); }));
  }
};

TEST_F(TakingBack, nothing_is_offered_before_an_addition) {
  openWithLists();
  EXPECT_EQ(added().size(), 0U);
}

TEST_F(TakingBack, a_typed_site_is_offered_for_ten_seconds_after_the_answer) {
  openWithLists();
  http().setLatency(3s);
  policy().newDomain = std::string("X.example");
  policy().addAllowedSite();
  app.advance(2900ms);
  EXPECT_EQ(offers(), Names());
  app.advance(100ms);
  EXPECT_EQ(offers(), Names{"Allowed x.example"});
  EXPECT_EQ(added()[0].undoTitle(), "Undo");
  app.advance(9900ms);
  EXPECT_EQ(offers(), Names{"Allowed x.example"});
  app.advance(100ms);
  EXPECT_EQ(offers(), Names());
  EXPECT_EQ(removals(), 0U);
}

TEST_F(TakingBack, undoing_makes_the_inverse_call_and_takes_the_list_from_its_answer) {
  openWithLists();
  allow("x.example");
  added()[0].undo();
  EXPECT_EQ(policy().allowedDomains(), (Names{"a.example", "x.example"})) << "not before the answer";
  app.settle();
  EXPECT_EQ(policy().allowedDomains(), Names{"a.example"});
  EXPECT_EQ(count("DELETE", "/children/c1/policy/allow/x.example"), 1U);

  block("y.example");
  EXPECT_EQ(offers(), Names{"Blocked y.example"});
  added()[0].undo();
  app.settle();
  EXPECT_EQ(policy().blockedDomains(), Names{"b.example"});
  EXPECT_EQ(count("DELETE", "/children/c1/policy/block/y.example"), 1U);
  EXPECT_EQ(removals(), 2U);
}

TEST_F(TakingBack, a_second_tap_sends_nothing) {
  openWithLists();
  allow("x.example");
  const auto row = added().share("1");
  ASSERT_NE(row, nullptr);
  row->undo();
  EXPECT_EQ(offers(), Names());
  row->undo();
  app.settle();
  row->undo();
  app.settle();
  EXPECT_EQ(removals(), 1U);
}

TEST_F(TakingBack, a_site_from_the_log_is_offered_too) {
  openWithLists();
  policy().allowFromLog(makeLog("www.x.example", 1, true));
  policy().blockFromLog(makeLog("www.y.example", 1));
  app.settle();
  EXPECT_EQ(offers(), (Names{"Allowed x.example", "Blocked y.example"}));
}

TEST_F(TakingBack, a_site_that_was_listed_before_is_not_offered) {
  openWithLists();
  for (const auto* const known : {"a.example", "A.Example "}) {
    allow(known);
    EXPECT_EQ(offers(), Names()) << known;
  }
  block("b.example");
  policy().blockFromLog(makeLog("www.b.example", 1));
  app.settle();
  EXPECT_EQ(offers(), Names());
}

TEST_F(TakingBack, a_site_that_the_answer_does_not_list_is_not_offered) {
  openWithLists();
  // The answer contains an x.example that another parent added.
  allow("z.example");
  EXPECT_EQ(offers(), Names());
}

TEST_F(TakingBack, the_entry_is_taken_back_as_the_service_wrote_it) {
  answerPolicy("POST", "/allow", makePolicy(false, {"X.Example"}));
  answerPolicy("DELETE", "/allow/X.Example", makePolicy());
  openWithLists();
  allow("x.example");
  ASSERT_EQ(offers(), Names{"Allowed X.Example"});
  added()[0].undo();
  app.settle();
  EXPECT_EQ(count("DELETE", "/children/c1/policy/allow/X.Example"), 1U);
}

TEST_F(TakingBack, nothing_is_offered_while_the_former_list_is_unknown) {
  http().answer("GET", "/children/c1", 500);
  make();
  screen->appear();
  app.settle();
  allow("x.example");
  EXPECT_EQ(policy().allowedDomains(), (Names{"a.example", "x.example"}));
  EXPECT_EQ(offers(), Names());
}

TEST_F(TakingBack, a_child_without_a_policy_has_empty_lists) {
  open();
  block("y.example");
  EXPECT_EQ(offers(), Names{"Blocked y.example"});
}

TEST_F(TakingBack, a_refused_addition_is_not_offered) {
  http().answer("POST", "/children/c1/policy/allow", 400, R"({"error":"Not a domain"})");
  openWithLists();
  allow("x.example");
  expectAlert("Not a domain");
  EXPECT_EQ(offers(), Names());
}

TEST_F(TakingBack, a_failure_is_reported_as_that_of_a_removal_and_keeps_the_list) {
  openWithLists();
  allow("x.example");
  http().answer("DELETE", "/children/c1/policy/allow/x.example", 404);
  added()[0].undo();
  app.settle();
  expectAlert("Resource not found");
  EXPECT_EQ(policy().allowedDomains(), (Names{"a.example", "x.example"}));
  EXPECT_EQ(offers(), Names());
}

TEST_F(TakingBack, two_additions_have_ten_seconds_each) {
  openWithLists();
  allow("x.example");
  app.advance(4s);
  block("y.example");
  EXPECT_EQ(offers(), (Names{"Allowed x.example", "Blocked y.example"}));
  app.advance(6s);
  EXPECT_EQ(offers(), Names{"Blocked y.example"});
  app.advance(3900ms);
  EXPECT_EQ(offers(), Names{"Blocked y.example"});
  app.advance(100ms);
  EXPECT_EQ(offers(), Names());
}

TEST_F(TakingBack, the_first_of_two_additions_is_taken_back_alone) {
  openWithLists();
  allow("x.example");
  block("y.example");
  added()[0].undo();
  app.settle();
  EXPECT_EQ(offers(), Names{"Blocked y.example"});
  EXPECT_EQ(policy().allowedDomains(), Names{"a.example"});
  EXPECT_EQ(policy().blockedDomains(), (Names{"b.example", "y.example"}));
}

TEST_F(TakingBack, a_site_that_is_removed_in_its_list_is_no_longer_offered) {
  openWithLists();
  allow("x.example");
  policy().allowedRows[1].remove();
  app.settle();
  EXPECT_EQ(offers(), Names());
}

TEST_F(TakingBack, a_change_of_one_list_keeps_the_offers_of_the_other) {
  answerPolicy("DELETE", "/block/b.example", makePolicy(false, {"a.example"}, {}));
  openWithLists();
  allow("x.example");
  policy().blockedRows[0].remove();
  app.settle();
  EXPECT_EQ(offers(), Names{"Allowed x.example"});
}

TEST_F(TakingBack, leaving_the_page_ends_it) {
  openWithLists();
  allow("x.example");
  const auto row = added().share("1");
  screen->disappear();
  EXPECT_EQ(offers(), Names());
  row->undo();
  app.advance(1min);
  EXPECT_EQ(removals(), 0U);
}

TEST_F(TakingBack, an_answer_after_leaving_the_page_offers_nothing) {
  openWithLists();
  http().setLatency(3s);
  policy().newDomain = std::string("x.example");
  policy().addAllowedSite();
  screen->disappear();
  app.advance(4s);
  EXPECT_EQ(offers(), Names());
}

TEST_F(TakingBack, a_page_that_is_gone_leaves_no_timer_behind) {
  openWithLists();
  allow("x.example");
  const auto row = added().share("1");
  screen.reset();
  row->undo();
  app.advance(1min);
  EXPECT_EQ(removals(), 0U);
}

}  // namespace
}  // namespace quillmar
