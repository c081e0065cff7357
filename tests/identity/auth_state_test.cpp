#include "identity/auth_state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "client/network_service.h"
#include "client/records/account.h"
#include "platform/common/sqlite_settings_store.h"
#include "testing/fake_platform.h"
#include "testing/temporary_directory.h"

namespace quillmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;
using Kind = TransportError::Kind;

const std::string token = "secret-token";
const std::string renewed = "secret-renewed";

const std::string foundToken = "[AuthState] loadState - token found, length: 12, isLoggedIn: true";
const std::string noStamp = "[AuthState] No token timestamp found, attempting refresh";

std::string refreshedBody() {
  return R"({"token":")" + renewed + R"(","parent_id":"p2","email":"new@example.org","name":"New Name"})";
}

AuthResponse answer() {
  return {.token = token,
          .parentId = "p1",
          .email = "zoe@example.org",
          .phone = "+61400000000",
          .name = "Zoe Lee",
          .region = "singapore",
          .dohServerId = "s",
          .dohBaseURL = "https://doh.example"};
}

class AuthStateTest : public testing::Test {
 protected:
  AuthStateTest() { settings.set(settings::region, "australia"); }
  void TearDown() override {
    for (const auto& line : platform.log.printed()) {
      EXPECT_EQ(line.find("secret-"), std::string::npos) << line;
    }
  }

  // Launches the application.
  void launch() { state = std::make_unique<AuthState>(settings, dispatch, platform.log, service); }
  void storeSession() {
    settings.set(settings::authToken, token);
    settings.set(settings::parentId, "p1");
    settings.set(settings::parentEmail, "zoe@example.org");
    settings.set(settings::parentName, "Zoe Lee");
  }
  void storeSessionAged(Duration age) {
    storeSession();
    settings.set(settings::authTokenTimestamp, dispatch.now() - age);
  }
  void expectLaunchToFindNoStamp() {
    launch();
    EXPECT_EQ(state->tokenSavedAt(), std::nullopt);
    EXPECT_EQ(refreshes(), 1);
    EXPECT_THAT(lines(), ElementsAre(foundToken, noStamp));
  }
  void launchSignedIn() {
    storeSessionAged(1h);
    launch();
    platform.log.clear();
  }
  void settle() { ASSERT_TRUE(dispatch.settle()); }
  std::size_t refreshes() const { return platform.http.count("POST", "/auth/refresh"); }
  // The log lines of the session; those of the service are tested elsewhere.
  std::vector<std::string> lines() const {
    auto all = platform.log.printed();
    std::erase_if(all, [](const std::string& line) { return !line.starts_with("[AuthState] "); });
    return all;
  }
  void expectSignedOut() const {
    EXPECT_FALSE(state->isLoggedIn());
    EXPECT_EQ(state->parentId(), "");
    EXPECT_EQ(state->email(), "");
    EXPECT_EQ(state->name(), "");
    EXPECT_EQ(state->familyId(), "");
  }

  FakePlatform platform;
  MemorySettingsStore& settings = platform.settings;
  VirtualDispatch& dispatch = platform.dispatch;
  std::shared_ptr<NetworkService> service = NetworkService::make(
      platform.http, settings, platform.log, platform.dispatch, Deployments::all("https://api.example"));
  std::unique_ptr<AuthState> state;
};

// Restoring.

TEST_F(AuthStateTest, without_a_token_nothing_changes) {
  settings.set(settings::parentId, "p1");
  settings.set(settings::familyId, "f1");
  settings.set(settings::authTokenTimestamp, dispatch.now());
  const auto before = settings.all();
  launch();
  settle();
  expectSignedOut();
  EXPECT_EQ(state->tokenSavedAt(), std::nullopt);
  EXPECT_EQ(settings.all(), before);
  EXPECT_EQ(refreshes(), 0);
  EXPECT_THAT(platform.log.printed(),
              ElementsAre("[AuthState] loadState - no token found, isLoggedIn: false"));
}

TEST_F(AuthStateTest, an_empty_token_counts_as_missing) {
  storeSessionAged(1h);
  settings.set(settings::authToken, "");
  launch();
  settle();
  expectSignedOut();
  EXPECT_EQ(state->tokenSavedAt(), std::nullopt);
  EXPECT_EQ(settings.string(settings::parentId), "p1");
  EXPECT_EQ(refreshes(), 0);
  EXPECT_THAT(lines(), ElementsAre("[AuthState] loadState - no token found, isLoggedIn: false"));
}

TEST_F(AuthStateTest, a_token_that_is_not_text_counts_as_missing) {
  settings.set(settings::authToken, true);
  launch();
  EXPECT_FALSE(state->isLoggedIn());
}

TEST_F(AuthStateTest, a_stored_session_is_restored_without_a_write) {
  storeSessionAged(1h);
  settings.set(settings::familyId, "f1");
  const int writes = settings.writes();
  launch();
  EXPECT_TRUE(state->isLoggedIn());
  EXPECT_EQ(state->parentId(), "p1");
  EXPECT_EQ(state->email(), "zoe@example.org");
  EXPECT_EQ(state->name(), "Zoe Lee");
  EXPECT_EQ(state->familyId(), "f1");
  EXPECT_EQ(state->tokenSavedAt(), dispatch.now() - 1h);
  EXPECT_EQ(settings.writes(), writes);
  EXPECT_EQ(settings.synchronizations(), 0);
  EXPECT_THAT(lines(), ElementsAre(foundToken, "[AuthState] Token is 1 hours old, no refresh needed"));
}

TEST_F(AuthStateTest, missing_values_are_empty) {
  settings.set(settings::authToken, token);
  settings.set(settings::authTokenTimestamp, dispatch.now());
  launch();
  EXPECT_TRUE(state->isLoggedIn());
  EXPECT_EQ(state->parentId(), "");
  EXPECT_EQ(state->email(), "");
  EXPECT_EQ(state->name(), "");
  EXPECT_EQ(state->familyId(), "");
}

TEST_F(AuthStateTest, the_length_of_a_token_counts_characters) {
  settings.set(settings::authToken, "né👨‍👩‍👧");
  launch();
  EXPECT_EQ(lines().front(), "[AuthState] loadState - token found, length: 3, isLoggedIn: true");
}

TEST_F(AuthStateTest, a_session_without_a_time_stamp_is_refreshed_at_once) {
  storeSession();
  expectLaunchToFindNoStamp();
}

TEST_F(AuthStateTest, an_invalid_time_stamp_counts_as_missing) {
  storeSession();
  settings.set(settings::authTokenTimestamp, "2016-10-08T22:31:00Z");
  expectLaunchToFindNoStamp();
}

// Age of the token.

TEST_F(AuthStateTest, a_signed_out_session_is_not_checked) {
  launch();
  platform.log.clear();
  state->refreshTokenIfNeeded();
  settle();
  EXPECT_THAT(platform.log.printed(), IsEmpty());
  EXPECT_EQ(refreshes(), 0);
}

struct Age {
  Duration age;
  std::string_view line;
  std::size_t refreshes;
};

class TokenAgeTest : public AuthStateTest, public testing::WithParamInterface<Age> {};

TEST_P(TokenAgeTest, decides_whether_the_token_is_refreshed) {
  storeSessionAged(GetParam().age);
  launch();
  EXPECT_THAT(lines(), ElementsAre(foundToken, GetParam().line));
  EXPECT_EQ(refreshes(), GetParam().refreshes);
}

INSTANTIATE_TEST_SUITE_P(
    Ages, TokenAgeTest,
    testing::Values(Age{0ms, "[AuthState] Token is 0 hours old, no refresh needed", 0},
                    Age{3599999ms, "[AuthState] Token is 0 hours old, no refresh needed", 0},
                    Age{3600000ms, "[AuthState] Token is 1 hours old, no refresh needed", 0},
                    Age{43199999ms, "[AuthState] Token is 11 hours old, no refresh needed", 0},
                    Age{43200000ms, "[AuthState] Token is 12 hours old, no refresh needed", 0},
                    Age{43200001ms, "[AuthState] Token is 12 hours old, refreshing proactively", 1},
                    Age{46799999ms, "[AuthState] Token is 12 hours old, refreshing proactively", 1},
                    Age{240h, "[AuthState] Token is 240 hours old, refreshing proactively", 1},
                    // A clock that was set back.
                    Age{-1ms, "[AuthState] Token is 0 hours old, no refresh needed", 0},
                    Age{-5399999ms, "[AuthState] Token is -1 hours old, no refresh needed", 0},
                    Age{-240h, "[AuthState] Token is -240 hours old, no refresh needed", 0}));

TEST_F(AuthStateTest, a_token_ages_while_the_application_runs) {
  storeSessionAged(0ms);
  launch();
  ASSERT_TRUE(dispatch.advance(12h));
  state->refreshTokenIfNeeded();
  EXPECT_EQ(refreshes(), 0);
  ASSERT_TRUE(dispatch.advance(1ms));
  EXPECT_EQ(refreshes(), 0);
  state->refreshTokenIfNeeded();
  EXPECT_EQ(refreshes(), 1);
}

TEST_F(AuthStateTest, a_successful_refresh_is_saved_like_a_login_and_restarts_the_twelve_hours) {
  storeSessionAged(13h);
  platform.http.answer("POST", "/auth/refresh", 200, refreshedBody());
  launch();
  settle();
  EXPECT_TRUE(state->isLoggedIn());
  EXPECT_EQ(state->parentId(), "p2");
  EXPECT_EQ(state->email(), "new@example.org");
  EXPECT_EQ(state->name(), "New Name");
  EXPECT_EQ(state->tokenSavedAt(), dispatch.now());
  EXPECT_EQ(settings.string(settings::authToken), renewed);
  EXPECT_EQ(settings.string(settings::parentId), "p2");
  EXPECT_EQ(settings.date(settings::authTokenTimestamp), dispatch.now());
  EXPECT_THAT(lines(), ElementsAre(foundToken, "[AuthState] Token is 13 hours old, refreshing proactively",
                                   "[AuthState] Token refresh successful",
                                   "[AuthState] saveLogin - token saved, length: 14"));
  state->refreshTokenIfNeeded();
  EXPECT_EQ(lines().back(), "[AuthState] Token is 0 hours old, no refresh needed");
  EXPECT_EQ(refreshes(), 1);
}

TEST_F(AuthStateTest, a_refresh_is_published_on_the_main_thread_in_a_later_turn) {
  storeSession();
  platform.http.answer("POST", "/auth/refresh", 200, refreshedBody());
  launch();
  bool onMain = false;
  const auto subscription = state->observe([&](const Member&) { onMain = dispatch.isMainThread(); });
  EXPECT_EQ(state->parentId(), "p1");
  settle();
  EXPECT_EQ(state->parentId(), "p2");
  EXPECT_TRUE(onMain);
}

struct RefreshEnd {
  std::string name;
  DataTaskResult answer;
  std::vector<std::string> lines;
};

class FailedRefreshTest : public AuthStateTest, public testing::WithParamInterface<RefreshEnd> {};

TEST_P(FailedRefreshTest, changes_nothing) {
  storeSessionAged(13h);
  settings.set(settings::familyId, "f1");
  platform.http.answer("POST", "/auth/refresh", GetParam().answer);
  const auto before = settings.all();
  const int writes = settings.writes();
  launch();
  int changes = 0;
  const auto subscription = state->observe([&](const Member&) { ++changes; });
  platform.log.clear();
  settle();
  EXPECT_EQ(lines(), GetParam().lines);
  EXPECT_EQ(changes, 0);
  EXPECT_TRUE(state->isLoggedIn());
  EXPECT_EQ(state->parentId(), "p1");
  EXPECT_EQ(state->tokenSavedAt(), dispatch.now() - 13h);
  EXPECT_EQ(settings.all(), before);
  EXPECT_EQ(settings.writes(), writes);
}

TEST_P(FailedRefreshTest, is_retried_at_the_next_check) {
  storeSessionAged(13h);
  platform.http.answerAlways("POST", "/auth/refresh", GetParam().answer);
  launch();
  settle();
  state->refreshTokenIfNeeded();
  settle();
  EXPECT_EQ(refreshes(), 2);
}

INSTANTIATE_TEST_SUITE_P(
    Ends, FailedRefreshTest,
    testing::Values(
        RefreshEnd{"a_refusal",
                   httpAnswer(401),
                   {"[AuthState] Token refresh failed: Please log in again",
                    "[AuthState] Token expired beyond grace period, user needs to re-login"}},
        RefreshEnd{"a_ban", httpAnswer(403), {"[AuthState] Token refresh failed: Access denied"}},
        RefreshEnd{"a_failing_service",
                   httpAnswer(500, R"({"error":"Please log in again"})"),
                   {"[AuthState] Token refresh failed: Please log in again"}},
        RefreshEnd{"a_transport_error",
                   transportFailure(Kind::timedOut),
                   {"[AuthState] Token refresh failed: The request timed out."}},
        RefreshEnd{"an_answer_without_the_account",
                   httpAnswer(200, R"({"token":"secret-renewed"})"),
                   {"[AuthState] Token refresh failed: The data couldn’t be read because it is missing."}}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(AuthStateTest, a_refresh_without_a_region_fails_like_any_other) {
  storeSessionAged(13h);
  settings.remove(settings::region);
  launch();
  EXPECT_THAT(lines(), ElementsAre(foundToken, "[AuthState] Token is 13 hours old, refreshing proactively"));
  settle();
  EXPECT_EQ(lines().back(),
            "[AuthState] Token refresh failed: No region configured. Please select a region first.");
  EXPECT_TRUE(state->isLoggedIn());
}

TEST_F(AuthStateTest, a_check_ignores_a_running_refresh_and_saves_each_success) {
  storeSession();
  platform.http.answer("POST", "/auth/refresh", 200, refreshedBody());
  launch();
  state->refreshTokenIfNeeded();
  settle();
  EXPECT_EQ(refreshes(), 1);
  const auto all = lines();
  EXPECT_EQ(std::ranges::count(all, noStamp), 2);
  EXPECT_EQ(std::ranges::count(all, "[AuthState] saveLogin - token saved, length: 14"), 2);
}

TEST_F(AuthStateTest, a_refresh_that_ends_after_the_session_object_is_destroyed_is_only_logged) {
  storeSessionAged(13h);
  platform.http.answer("POST", "/auth/refresh", 200, refreshedBody());
  launch();
  state.reset();
  platform.log.clear();
  settle();
  EXPECT_THAT(lines(), ElementsAre("[AuthState] Token refresh successful"));
  EXPECT_EQ(settings.string(settings::parentId), "p1");
  EXPECT_EQ(settings.date(settings::authTokenTimestamp), dispatch.now() - 13h);
}

// Signing in.

TEST_F(AuthStateTest, saving_a_login_stores_the_account_and_the_time) {
  launch();
  ASSERT_TRUE(dispatch.advance(5min));
  platform.log.clear();
  auto expected = settings.all();
  expected["authToken"] = token;
  expected["parentId"] = "p1";
  expected["parentEmail"] = "zoe@example.org";
  expected["parentName"] = "Zoe Lee";
  expected["authTokenTimestamp"] = dispatch.now();
  state->saveLogin(answer());
  EXPECT_TRUE(state->isLoggedIn());
  EXPECT_EQ(state->parentId(), "p1");
  EXPECT_EQ(state->email(), "zoe@example.org");
  EXPECT_EQ(state->name(), "Zoe Lee");
  EXPECT_EQ(state->tokenSavedAt(), dispatch.now());
  EXPECT_EQ(settings.all(), expected);
  EXPECT_EQ(settings.synchronizations(), 1);
  EXPECT_EQ(refreshes(), 0);
  EXPECT_THAT(platform.log.printed(), ElementsAre("[AuthState] saveLogin - token saved, length: 12"));
}

TEST_F(AuthStateTest, saving_a_login_publishes_in_a_fixed_order_before_storing) {
  launch();
  std::vector<std::string> announced;
  const auto subscription = state->observe([&](const Member& member) {
    announced.emplace_back(member.name());
    EXPECT_EQ(settings.string(settings::authToken), std::nullopt);
  });
  state->saveLogin(answer());
  EXPECT_THAT(announced, ElementsAre("isLoggedIn", "parentId", "email", "name"));
}

TEST_F(AuthStateTest, saving_a_login_does_not_change_the_family) {
  storeSessionAged(1h);
  settings.set(settings::familyId, "f1");
  launch();
  state->saveLogin(answer());
  EXPECT_EQ(state->familyId(), "f1");
  EXPECT_EQ(settings.string(settings::familyId), "f1");
}

TEST_F(AuthStateTest, saving_a_login_while_signed_in_changes_the_account_in_place) {
  launchSignedIn();
  AuthResponse other = answer();
  other.parentId = "p9";
  int switches = 0;
  const auto subscription = state->isLoggedIn.onChange([&] { ++switches; });
  state->saveLogin(other);
  EXPECT_EQ(state->parentId(), "p9");
  EXPECT_EQ(settings.string(settings::parentId), "p9");
  EXPECT_EQ(switches, 0);
}

TEST_F(AuthStateTest, joining_a_family_stores_no_time_stamp) {
  launch();
  platform.log.clear();
  auto expected = settings.all();
  expected["authToken"] = token;
  expected["parentId"] = "p1";
  expected["parentEmail"] = "zoe@example.org";
  expected["parentName"] = "Zoe Lee";
  std::vector<std::string> announced;
  const auto subscription =
      state->observe([&](const Member& member) { announced.emplace_back(member.name()); });
  state->login(token, "p1", "zoe@example.org", "Zoe Lee");
  EXPECT_TRUE(state->isLoggedIn());
  EXPECT_EQ(state->parentId(), "p1");
  EXPECT_EQ(state->email(), "zoe@example.org");
  EXPECT_EQ(state->name(), "Zoe Lee");
  EXPECT_EQ(state->tokenSavedAt(), std::nullopt);
  EXPECT_EQ(settings.all(), expected);
  EXPECT_EQ(settings.synchronizations(), 1);
  EXPECT_THAT(announced, ElementsAre("isLoggedIn", "parentId", "email", "name"));
  EXPECT_THAT(platform.log.printed(), ElementsAre("[AuthState] login - token saved, length: 12"));
}

TEST_F(AuthStateTest, the_first_check_after_joining_refreshes) {
  launch();
  state->login(token, "p1", "zoe@example.org", "Zoe Lee");
  state->refreshTokenIfNeeded();
  EXPECT_EQ(lines().back(), noStamp);
  EXPECT_EQ(refreshes(), 1);
}

TEST_F(AuthStateTest, joining_keeps_an_older_time_stamp_which_gives_the_tokens_age) {
  storeSessionAged(1h);
  launch();
  ASSERT_TRUE(dispatch.advance(12h));
  state->login(renewed, "p2", "new@example.org", "New Name");
  EXPECT_EQ(settings.date(settings::authTokenTimestamp), dispatch.now() - 13h);
  EXPECT_EQ(state->tokenSavedAt(), dispatch.now() - 13h);
  state->refreshTokenIfNeeded();
  EXPECT_EQ(lines().back(), "[AuthState] Token is 13 hours old, refreshing proactively");
}

// Signing out.

TEST_F(AuthStateTest, logging_out_clears_only_the_session) {
  storeSessionAged(1h);
  settings.set(settings::familyId, "f1");
  settings.set(settings::deviceRole, "parent");
  settings.set(settings::appearanceMode, "Dark");
  settings.set(settings::childDeviceID, "d1");
  launch();
  platform.log.clear();
  auto expected = settings.all();
  for (const auto* gone : {"authToken", "parentId", "parentEmail", "parentName"}) {
    expected.erase(gone);
  }
  state->logout();
  settle();
  expectSignedOut();
  EXPECT_EQ(state->tokenSavedAt(), dispatch.now() - 1h);
  EXPECT_EQ(settings.all(), expected);
  EXPECT_EQ(settings.synchronizations(), 0);
  EXPECT_THAT(platform.http.requests(), IsEmpty());
  EXPECT_THAT(platform.log.printed(), IsEmpty());
}

TEST_F(AuthStateTest, logging_out_keeps_the_remembered_login) {
  platform.secureItems.add("service", "account", "secret-password");
  launchSignedIn();
  const auto before = platform.secureItems.items();
  state->logout();
  EXPECT_EQ(platform.secureItems.items(), before);
}

TEST_F(AuthStateTest, logging_out_publishes_in_a_fixed_order_before_clearing) {
  launchSignedIn();
  std::vector<std::string> announced;
  const auto subscription = state->observe([&](const Member& member) {
    announced.emplace_back(member.name());
    EXPECT_EQ(settings.string(settings::authToken), token);
  });
  state->logout();
  EXPECT_THAT(announced, ElementsAre("isLoggedIn", "parentId", "email", "name", "familyId"));
}

TEST_F(AuthStateTest, a_launch_after_a_logout_has_no_session_although_the_time_stamp_is_stored) {
  launchSignedIn();
  state->logout();
  launch();
  settle();
  expectSignedOut();
  EXPECT_EQ(state->tokenSavedAt(), std::nullopt);
  EXPECT_TRUE(settings.date(settings::authTokenTimestamp).has_value());
  EXPECT_EQ(refreshes(), 0);
}

TEST_F(AuthStateTest, a_refresh_that_succeeds_after_a_logout_signs_in_again) {
  storeSessionAged(13h);
  platform.http.answer("POST", "/auth/refresh", 200, refreshedBody());
  launch();
  state->logout();
  settle();
  EXPECT_TRUE(state->isLoggedIn());
  EXPECT_EQ(state->parentId(), "p2");
}

// Initials and display name.

struct Name {
  std::string name;
  std::string email;
  std::string initials;
  std::string displayName;
};

class NameTest : public AuthStateTest, public testing::WithParamInterface<Name> {};

TEST_P(NameTest, gives_the_initials_and_the_display_name) {
  launch();
  state->login(token, "p1", GetParam().email, GetParam().name);
  EXPECT_EQ(state->initials(), GetParam().initials);
  EXPECT_EQ(state->displayName(), GetParam().displayName);
}

INSTANTIATE_TEST_SUITE_P(
    Names, NameTest,
    testing::Values(Name{"Ann", "zoe@example.org", "AN", "Ann"},
                    Name{"ann marie lee", "zoe@example.org", "AM", "ann marie lee"},
                    Name{"A", "zoe@example.org", "A", "A"},
                    Name{"", "zoe@example.org", "ZO", "zoe@example.org"},
                    // A blank name has no word, but is not empty.
                    Name{"   ", "zoe@example.org", "ZO", "   "}, Name{"", "z", "Z", "z"},
                    Name{"", "", "", ""}, Name{"  ann   lee  ", "z", "AL", "  ann   lee  "},
                    // Only the space separates words.
                    Name{"ann\tlee", "z", "AN", "ann\tlee"}, Name{"ann-lee", "z", "AN", "ann-lee"},
                    // Characters are grapheme clusters, and the upper case of a text may be longer.
                    Name{"e\xCC\x81va \U0001F468\u200D\U0001F469\u200D\U0001F467", "z",
                         "E\xCC\x81\U0001F468\u200D\U0001F469\u200D\U0001F467",
                         "e\xCC\x81va \U0001F468\u200D\U0001F469\u200D\U0001F467"},
                    Name{"ßen", "z", "SSE", "ßen"}));

TEST_F(AuthStateTest, the_key_of_the_time_stamp_is_fixed) {
  EXPECT_EQ(AuthState::tokenTimestampKey, "authTokenTimestamp");
}

// With settings on disk, as in an installation.
TEST(AuthStateOnDisk, a_logout_leaves_the_token_in_no_file) {
  const TemporaryDirectory directory;
  FakePlatform machine;
  SqliteSettingsStore disk(directory.path(), machine.log);
  const auto client = NetworkService::make(machine.http, disk, machine.log, machine.dispatch,
                                           Deployments::all("https://au.example"));
  AuthState state(disk, machine.dispatch, machine.log, client);
  const auto everything = [&directory] {
    std::ostringstream bytes;
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
      bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
    }
    return bytes.str();
  };
  state.saveLogin(answer());
  disk.synchronize();
  EXPECT_THAT(everything(), testing::HasSubstr(token));
  state.logout();
  EXPECT_THAT(everything(), testing::Not(testing::HasSubstr(token)));
}

}  // namespace
}  // namespace quillmar
