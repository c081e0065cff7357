#include "tests/sandbox/support/household.h"

namespace quillmar::sandbox::test {
namespace {

// The same rules for devices and children; the tests run over both.
class PoliciesTest : public ServiceTest, public testing::WithParamInterface<std::string> {
 protected:
  PoliciesTest() : ann_{givenAccount("ann@example.com")} {
    const auto child = givenChild(ann_);
    owner_ = GetParam() == "child" ? "/children/" + child : "/devices/" + givenDevice(ann_);
  }

  Json policy() {
    const auto shown = given("GET", GetParam() == "child" ? owner_ : owner_ + "/policy", ann_);
    return GetParam() == "child" ? shown.at("policy") : shown;
  }
  Reply adding(const std::string& list, const std::string& domain) {
    return ask("POST", owner_ + "/policy/" + list, ann_, Json{{"domain", domain}}.dump());
  }
  Reply removing(const std::string& list, const std::string& encodedDomain) {
    return ask("DELETE", owner_ + "/policy/" + list + "/" + encodedDomain, ann_);
  }

  std::string ann_;
  std::string owner_;
};

TEST_P(PoliciesTest, the_toggle_and_the_mode_are_kept_as_sent) {
  for (const auto& [blocked, mode] : std::vector<std::pair<bool, std::string>>{
           {true, "whitelist"}, {false, "whitelist"}, {true, "blacklist"}}) {
    const auto reply =
        ask("PUT", owner_ + "/policy", ann_, Json{{"is_blocked", blocked}, {"block_mode", mode}}.dump());
    EXPECT_EQ(reply.json().at("is_blocked"), blocked);
    EXPECT_EQ(reply.json().at("block_mode"), mode);
    EXPECT_EQ(policy(), reply.json());
  }
}

TEST_P(PoliciesTest, an_unknown_mode_is_refused) {
  const auto before = policy();
  EXPECT_EQ(ask("PUT", owner_ + "/policy", ann_, R"({"is_blocked":true,"block_mode":"greylist"})").status,
            422);
  EXPECT_EQ(policy(), before);
}

TEST_P(PoliciesTest, a_list_keeps_its_order_and_has_no_duplicates) {
  for (const std::string domain : {"zebra.example", "ant.example", "ZEBRA.example.", "cat.example"}) {
    EXPECT_LT(adding("block", domain).status, 300);
  }
  EXPECT_EQ(policy().at("blocked_domains"), (Json{"zebra.example", "ant.example", "cat.example"}));
  EXPECT_EQ(policy().at("allowed_domains"), Json::array());
}

TEST_P(PoliciesTest, one_site_may_stand_in_both_lists) {
  adding("block", "both.example");
  adding("allow", "both.example");
  EXPECT_LT(removing("block", "both.example").status, 300);
  EXPECT_EQ(policy().at("blocked_domains"), Json::array());
  EXPECT_EQ(policy().at("allowed_domains"), Json::array({"both.example"}));
}

TEST_P(PoliciesTest, an_invalid_site_name_is_refused_with_an_explanation) {
  for (const std::string text :
       {"", " ", "https://example.com", "example.com/path", "exa mple.com", "example..com", ".example.com",
        "-x.example", "x-.example", "ex\nample.com", "münchen.example"}) {
    const auto reply = adding("block", text);
    EXPECT_EQ(reply.status, 422) << text;
    EXPECT_THAT(reply.error(), testing::HasSubstr("example.com")) << text;
  }
  EXPECT_EQ(adding("block", std::string(64, 'x') + ".example").status, 422);
  EXPECT_LT(adding("block", std::string(63, 'x') + ".example").status, 300);
  EXPECT_EQ(policy().at("blocked_domains").size(), 1U);
}

TEST_P(PoliciesTest, names_without_a_dot_and_with_an_underscore_are_valid) {
  for (const std::string name : {"localhost", "_dmarc.example", "127.0.0.1"}) {
    EXPECT_LT(adding("allow", name).status, 300) << name;
  }
  EXPECT_EQ(policy().at("allowed_domains").size(), 3U);
}

TEST_P(PoliciesTest, an_entry_that_is_not_in_the_list_cannot_be_removed) {
  adding("allow", "there.example");
  EXPECT_EQ(removing("block", "there.example").status, 404);
  EXPECT_EQ(removing("allow", "not.there.example").status, 404);
  EXPECT_EQ(removing("allow", "not%20there").status, 404);
  EXPECT_EQ(removing("allow", "there%2Eexample").status, GetParam() == "child" ? 200 : 204)
      << "encoded it is the same";
}

TEST_P(PoliciesTest, a_change_of_a_list_updates_the_policys_time) {
  const auto before = policy().at("updated_at");
  advance(std::chrono::seconds{1});
  adding("block", "new.example");
  EXPECT_GT(policy().at("updated_at"), before);
}

INSTANTIATE_TEST_SUITE_P(Owners, PoliciesTest, testing::Values("child", "device"),
                         [](const auto& parameter) { return parameter.param; });

}  // namespace
}  // namespace quillmar::sandbox::test
