#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/journeys/people.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;
using Names = std::vector<std::string>;

// A parent's session over hours and days.
struct SessionJourney : testing::Test {
  SessionJourney() {
    parent.chooseRole();
    parent.app().setScenePhase(ScenePhase::active);
    parent.signUp("Ann Fielding", "ann@example.com");
    parent.addChild("Mia");
  }

  void sleep(Duration duration) {
    parent.app().setScenePhase(ScenePhase::background);
    time.advance(duration);
    service->clearRequests();
  }
  void wake() {
    parent.app().setScenePhase(ScenePhase::active);
    time.settle();
  }
  std::ptrdiff_t refreshes() const { return service.count("POST", "/api/v1/auth/refresh"); }

  void signOut() {
    parent.press(parent.dashboard().logout);
    parent.press(parent.dashboard().logoutConfirmation.confirm);
    EXPECT_EQ(parent.screenNames(), Names{"LoginView"});
  }
  void signIn(const std::string& password, bool remember = false) {
    auto& login = parent.screen<LoginView>();
    login.email = std::string("ann@example.com");
    login.password = password;
    login.rememberMe = remember;
    parent.press(login.signIn);
  }
  void expectSignedIn() {
    EXPECT_EQ(parent.screenNames(), Names{"DeviceListView"});
    ASSERT_EQ(parent.dashboard().cards.size(), 1U);
    EXPECT_EQ(parent.card().name(), "Mia");
  }

  SharedTime time;
  RealService service{time.clock()};
  Parent parent{service, time};
};

TEST_F(SessionJourney, a_short_suspend_keeps_the_token) {
  const std::string token = parent.setting("authToken");
  sleep(12h);
  wake();
  EXPECT_EQ(refreshes(), 0);
  EXPECT_EQ(parent.setting("authToken"), token);
}

TEST_F(SessionJourney, after_a_night_the_token_is_refreshed_before_any_call_fails) {
  const std::string token = parent.setting("authToken");
  sleep(12h + 1s);
  EXPECT_THAT(service->requests(), IsEmpty());
  wake();
  EXPECT_EQ(refreshes(), 1);
  EXPECT_NE(parent.setting("authToken"), token);
  EXPECT_EQ(parent.machine.settings.date("authTokenTimestamp"), parent.machine.dispatch.now());
  time.advance(30s);
  EXPECT_EQ(refreshes(), 1);
  expectSignedIn();
}

TEST_F(SessionJourney, after_a_week_an_expired_token_can_still_be_refreshed) {
  sleep(24h * 7);
  parent.restart();
  time.settle();
  EXPECT_GE(refreshes(), 1) << "the first load may wait for it, or find the token expired by itself";
  expectSignedIn();
}

TEST_F(SessionJourney, after_nine_days_a_new_sign_in_is_needed_but_the_session_is_kept) {
  const std::string token = parent.setting("authToken");
  sleep(24h * 9);
  wake();
  parent.press(parent.dashboard().loadChildren);
  EXPECT_EQ(parent.screenNames(), Names{"DeviceListView"});
  EXPECT_EQ(parent.dashboard().content(), DashboardContent::empty);
  EXPECT_EQ(parent.setting("authToken"), token);

  signOut();
  signIn(Parent::password);
  expectSignedIn();
}

TEST_F(SessionJourney, signing_out_removes_the_account_and_sends_nothing_more) {
  parent.press(parent.dashboard().logout);
  parent.press(parent.dashboard().logoutConfirmation.cancel);
  expectSignedIn();
  signOut();
  for (const auto* key : {"authToken", "parentId", "parentEmail", "parentName"}) {
    EXPECT_FALSE(parent.machine.settings.object(key)) << key;
  }
  service->clearRequests();
  time.advance(2min);
  EXPECT_THAT(service->requests(), IsEmpty());

  signIn("wrong horse");
  EXPECT_TRUE(parent.screen<LoginView>().errorAlert.isShown());
  EXPECT_EQ(parent.screen<LoginView>().email(), "ann@example.com") << "what was typed stays";
  parent.press(parent.screen<LoginView>().errorAlert.dismiss);
  signIn(Parent::password);
  expectSignedIn();
}

TEST_F(SessionJourney, a_remembered_sign_in_works_by_face_and_is_removed_by_the_next_sign_in) {
  signOut();
  EXPECT_FALSE(parent.screen<LoginView>().showsBiometricButton());
  signIn(Parent::password, true);
  expectSignedIn();
  signOut();
  parent.restart();
  time.settle();
  EXPECT_TRUE(parent.screen<LoginView>().showsBiometricButton());

  parent.machine.biometrics.answer = {.success = false, .code = std::nullopt};
  service->clearRequests();
  parent.press(parent.screen<LoginView>().signInWithBiometrics);
  EXPECT_THAT(service->requests(), IsEmpty()) << "nothing is sent for a stranger";
  EXPECT_EQ(parent.screenNames(), Names{"LoginView"});
  parent.screen<LoginView>().errorAlert.dismiss();

  parent.machine.biometrics.answer = {.success = true, .code = std::nullopt};
  parent.press(parent.screen<LoginView>().signInWithBiometrics);
  expectSignedIn();

  signOut();
  signIn(Parent::password, false);
  signOut();
  EXPECT_FALSE(parent.screen<LoginView>().showsBiometricButton());
}

}  // namespace
}  // namespace quillmar
