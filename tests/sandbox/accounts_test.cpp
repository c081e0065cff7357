#include <dlfcn.h>

#include <atomic>
#include <fstream>
#include <set>
#include <sstream>

#include "tests/sandbox/support/household.h"

namespace {

std::atomic<int> passwordsChecked = 0;

}  // namespace

// Replaces libsodium's function, counts the calls and forwards them.
extern "C" int crypto_pwhash_str_verify(const char* hash, const char* typed, unsigned long long length) {
  using Verify = int (*)(const char*, const char*, unsigned long long);
  static const auto real = reinterpret_cast<Verify>(dlsym(RTLD_NEXT, "crypto_pwhash_str_verify"));
  ++passwordsChecked;
  return real(hash, typed, length);
}

namespace quillmar::sandbox::test {
namespace {

using namespace std::chrono_literals;

int passwordChecks() { return passwordsChecked; }

class AccountsTest : public ServiceTest {
 protected:
  Reply registering(const Json& changes = Json::object()) {
    Json body{
        {"email", "ann@example.com"}, {"password", password}, {"phone", "+61 412 345 678"}, {"name", "Ann"}};
    body.update(changes);
    return ask("POST", "/auth/register", {}, body.dump());
  }
  Reply loggingIn(const std::string& email, const std::string& typed) {
    return ask("POST", "/auth/login", {}, Json{{"email", email}, {"password", typed}}.dump());
  }
  int statusOfAnyCall(const std::string& token) { return ask("GET", "/children", token).status; }
  Reply refreshing(const std::string& token) { return ask("POST", "/auth/refresh", token); }
};

TEST_F(AccountsTest, an_email_in_use_is_refused_whatever_its_case) {
  EXPECT_EQ(registering().status, 201);
  const auto again = registering({{"email", "ANN@Example.com"}, {"name", "Another"}});
  EXPECT_EQ(again.status, 409);
  EXPECT_EQ(again.error(), "There is an account with this e-mail address already.");
  EXPECT_EQ(loggingIn("ann@example.com", password).json().at("name"), "Ann");
}

TEST_F(AccountsTest, invalid_values_of_an_account_are_refused) {
  for (const Json& changes : std::vector<Json>{{{"email", "ann"}},
                                               {{"email", "@example.com"}},
                                               {{"email", "ann@"}},
                                               {{"email", "an n@example.com"}},
                                               {{"password", "five5"}},
                                               {{"password", "ééééé"}},
                                               {{"name", "  "}},
                                               {{"phone", ""}},
                                               {{"region", "atlantis"}},
                                               {{"name", std::string(3000, 'n')}}}) {
    const auto reply = registering(changes);
    EXPECT_EQ(reply.status, 422) << changes;
    EXPECT_TRUE(reply.error().ends_with('.')) << changes;
  }
  EXPECT_EQ(registering().status, 201) << "none of them took the address";
}

TEST_F(AccountsTest, a_new_account_is_the_primary_parent_of_a_family_of_its_own) {
  const auto answer = registering({{"name", "Ann Marie Fielding"}, {"region", "newzealand"}}).json();
  EXPECT_EQ(answer.at("region"), "newzealand");
  EXPECT_EQ(answer.at("doh_base_url"), service().secureUrl() + "/dns-query");
  const auto family = given("GET", "/family", answer.at("token"));
  EXPECT_EQ(family.at("is_primary"), true);
  EXPECT_EQ(family.at("family").at("name"), "Fielding Family");
  EXPECT_EQ(family.at("family").at("primary_parent_id"), answer.at("parent_id"));
  EXPECT_EQ(family.at("members").size(), 1U);
}

TEST_F(AccountsTest, values_missing_at_registration_are_null) {
  EXPECT_EQ(registering().json().at("region"), nullptr);
}

TEST_F(AccountsTest, a_wrong_password_and_an_unknown_email_get_the_same_answer) {
  givenAccount("ann@example.com");
  const auto wrong = loggingIn("ann@example.com", "wrong horse");
  const auto unknown = loggingIn("bob@example.com", password);
  EXPECT_EQ(wrong.status, 401);
  EXPECT_EQ(unknown.status, 401);
  EXPECT_EQ(wrong.body, unknown.body);
}

TEST_F(AccountsTest, a_password_is_checked_for_an_unknown_email_too) {
  givenAccount("ann@example.com");
  loggingIn("ann@example.com", "wrong horse");
  const int before = passwordChecks();
  loggingIn("ann@example.com", "wrong horse");
  const int forKnown = passwordChecks() - before;
  EXPECT_EQ(forKnown, 1);
  loggingIn("bob@example.com", "wrong horse");
  EXPECT_EQ(passwordChecks() - before, 2 * forKnown);
}

TEST_F(AccountsTest, after_five_wrong_passwords_each_further_one_causes_a_pause_of_half_a_minute) {
  givenAccount("ann@example.com");
  givenAccount("eve@example.com");
  // With and without an account.
  for (const auto* email : {"ann@example.com", "nobody@example.com"}) {
    for (int i = 0; i < 5; ++i) EXPECT_EQ(loggingIn(email, "wrong horse").status, 401);
    const auto refused = loggingIn(email, password);
    EXPECT_EQ(refused.status, 429);
    EXPECT_EQ(refused.error(), "There were too many wrong passwords. Please wait a moment and try again.");
  }
  EXPECT_EQ(loggingIn("ANN@example.com", password).status, 429);
  EXPECT_EQ(loggingIn("eve@example.com", password).status, 200) << "others are let in";
  advance(30s - 1ms);
  EXPECT_EQ(loggingIn("ann@example.com", password).status, 429);
  advance(1ms);
  EXPECT_EQ(loggingIn("ann@example.com", "wrong horse").status, 401);
  EXPECT_EQ(loggingIn("ann@example.com", password).status, 429);
  advance(30s);
  EXPECT_EQ(loggingIn("ann@example.com", password).status, 200);
  EXPECT_EQ(loggingIn("ann@example.com", "wrong horse").status, 401) << "the count began anew";
  EXPECT_EQ(loggingIn("ann@example.com", password).status, 200);
}

TEST_F(AccountsTest, a_password_is_compared_as_typed) {
  givenAccount("ann@example.com");
  EXPECT_EQ(loggingIn("ann@example.com", std::string{password} + " ").status, 401);
  EXPECT_EQ(loggingIn("ann@example.com", password).status, 200);
}

TEST_F(AccountsTest, a_token_is_valid_for_exactly_24_hours) {
  const auto token = givenAccount("ann@example.com");
  advance(24h - 1ms);
  EXPECT_EQ(statusOfAnyCall(token), 200);
  advance(1ms);
  EXPECT_EQ(statusOfAnyCall(token), 401);
}

TEST_F(AccountsTest, for_7_more_days_only_a_refresh_accepts_it) {
  const auto token = givenAccount("ann@example.com");
  advance(24h * 8 - 1ms);
  EXPECT_EQ(statusOfAnyCall(token), 401);
  const auto refreshed = refreshing(token);
  EXPECT_EQ(refreshed.status, 200);
  EXPECT_EQ(refreshed.json().at("email"), "ann@example.com");
  EXPECT_NE(refreshed.json().at("token"), token);
  EXPECT_EQ(statusOfAnyCall(refreshed.json().at("token")), 200);
  EXPECT_EQ(statusOfAnyCall(token), 401);
}

TEST_F(AccountsTest, after_its_grace_period_a_token_is_refused) {
  const auto token = givenAccount("ann@example.com");
  advance(24h * 8);
  EXPECT_EQ(refreshing(token).status, 401);
}

TEST_F(AccountsTest, a_refresh_does_not_invalidate_the_old_token) {
  const auto token = givenAccount("ann@example.com");
  advance(13h);
  const std::string fresh = refreshing(token).json().at("token");
  EXPECT_EQ(statusOfAnyCall(token), 200);
  advance(12h);
  EXPECT_EQ(statusOfAnyCall(token), 401);
  EXPECT_EQ(statusOfAnyCall(fresh), 200);
}

TEST_F(AccountsTest, only_a_bearer_token_is_accepted) {
  const auto token = givenAccount("ann@example.com");
  for (const std::string& header :
       {"Authorization: " + token, "Authorization: Basic " + token, "Authorization: Bearer  " + token,
        "Authorization: Bearer " + token + "0"}) {
    EXPECT_EQ(ask("GET", "/children", {}, {}, {"--header", header}).status, 401) << header;
  }
}

TEST_F(AccountsTest, deleting_the_account_requires_the_password) {
  const auto token = givenAccount("ann@example.com");
  const auto refused = ask("DELETE", "/auth/account", token, R"({"password":"wrong horse"})");
  EXPECT_EQ(refused.status, 401);
  EXPECT_EQ(statusOfAnyCall(token), 200);
}

TEST_F(AccountsTest, the_password_is_no_easier_to_guess_by_deletions_than_by_logins) {
  const auto ann = givenAccount("ann@example.com");
  const auto eve = givenAccount("eve@example.com");
  const auto deleting = [&](const std::string& token, const std::string& word) {
    return ask("DELETE", "/auth/account", token, Json{{"password", word}}.dump());
  };
  for (int i = 0; i < 3; ++i) EXPECT_EQ(deleting(ann, "wrong horse").status, 401);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(loggingIn("ANN@example.com", "wrong horse").status, 401);

  const auto refused = deleting(ann, password);
  EXPECT_EQ(refused.status, 429);
  EXPECT_EQ(refused.error(), "There were too many wrong passwords. Please wait a moment and try again.");
  EXPECT_EQ(statusOfAnyCall(ann), 200) << "the account is still there";
  EXPECT_EQ(loggingIn("ann@example.com", password).status, 429);
  EXPECT_EQ(deleting(eve, password).status, 204) << "others may";
  advance(30s);
  EXPECT_EQ(deleting(ann, password).status, 204);
}

TEST_F(AccountsTest, deleting_the_primary_account_deletes_everything) {
  const auto ann = givenAccount("ann@example.com");
  const auto other =
      given("POST", "/auth/login", {}, {{"email", "ann@example.com"}, {"password", password}}).at("token");
  const auto ben = givenMember(ann, "ben@example.com");
  const auto child = givenChild(ann);
  const auto device = givenDevice(ann, child);

  EXPECT_EQ(ask("DELETE", "/auth/account", ann, R"({"password":"correct horse"})").status, 204);

  EXPECT_EQ(statusOfAnyCall(ann), 401);
  EXPECT_EQ(statusOfAnyCall(other), 401);
  EXPECT_EQ(refreshing(ann).status, 401);
  EXPECT_EQ(loggingIn("ann@example.com", password).status, 401);
  EXPECT_EQ(
      ask("POST", "/device/checkin", {}, Json{{"device_id", device}, {"device_type", "ios"}}.dump()).status,
      404);
  const auto left = given("GET", "/family", ben);
  EXPECT_EQ(left.at("family"), nullptr);
  EXPECT_EQ(left.at("members"), Json::array());
  EXPECT_EQ(left.at("is_primary"), false);
  EXPECT_EQ(registering().status, 201) << "the address is free again";
}

TEST_F(AccountsTest, deleting_a_members_account_leaves_the_family_its_devices) {
  const auto ann = givenAccount("ann@example.com");
  const auto ben = givenMember(ann, "ben@example.com");
  const auto device = givenDevice(ben);
  const auto annsId = given("POST", "/auth/refresh", ann).at("parent_id");

  EXPECT_EQ(ask("DELETE", "/auth/account", ben, R"({"password":"correct horse"})").status, 204);

  const auto devices = given("GET", "/children", ann).at("unassigned_devices");
  ASSERT_EQ(devices.size(), 1U);
  EXPECT_EQ(devices[0].at("id"), device);
  EXPECT_EQ(devices[0].at("parent_id"), annsId);
  EXPECT_EQ(given("GET", "/family", ann).at("members").size(), 1U);
}

TEST_F(AccountsTest, passwords_and_tokens_are_not_stored) {
  const std::filesystem::path data = testing::TempDir() + "quillmar-secrets";
  std::filesystem::remove_all(data);
  restart({.data = data});
  const auto first = givenAccount("ann@example.com");
  const auto second = givenAccount("bob@example.com");
  std::string written;
  for (const auto& file : std::filesystem::directory_iterator{data}) {
    std::ostringstream contents;
    contents << std::ifstream{file.path(), std::ios::binary}.rdbuf();
    written += contents.str();
  }
  EXPECT_THAT(written, testing::HasSubstr("ann@example.com"));
  EXPECT_THAT(written, testing::HasSubstr("$argon2id$"));
  for (const std::string& secret : {std::string{password}, first, second}) {
    EXPECT_EQ(written.find(secret), std::string::npos);
  }
  std::set<std::string> hashes;
  for (auto at = written.find("$argon2id$"); at != std::string::npos;
       at = written.find("$argon2id$", at + 1)) {
    hashes.insert(written.substr(at, 97));
  }
  EXPECT_EQ(hashes.size(), 2U) << "the same password under two salts";
  restart({});
  std::filesystem::remove_all(data);
}

}  // namespace
}  // namespace quillmar::sandbox::test
