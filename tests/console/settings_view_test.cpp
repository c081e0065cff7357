#include "console/settings_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "console/device_list_view.h"
#include "identity/keychain_service.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

using Names = std::vector<std::string>;
using Kind = TransportError::Kind;

StoredSettings asSignedInParent() {
  auto stored = asParent();
  stored.insert({{settings::authToken, std::string("t1")},
                 {settings::parentId, std::string("p1")},
                 {settings::parentEmail, std::string("ann@example.com")},
                 {settings::parentName, std::string("Ann Marie Lee")},
                 {settings::authTokenTimestamp, VirtualDispatch::defaultStart}});
  return stored;
}

struct Settings : testing::Test {
  Settings() {
    app.settle();
    app.screen<DeviceListView>().showSettings = true;
    app.settle();
    app.machine.http.forgetRequests();
  }

  SettingsView& screen() { return app.screen<SettingsView>(); }
  DeleteAccountSheet& sheet() { return app.screen<DeleteAccountSheet>(); }
  void openPasswordSheet(const std::string& password = {}) {
    screen().deleteAccount();
    EXPECT_TRUE(screen().deletionConfirmation.confirm());
    screen().deleteAccountPassword = password;
  }
  void answer(int status, const std::string& body = "{}") {
    app.machine.http.answer("DELETE", "/auth/account", status, body);
  }
  void deleteWith(const std::string& password) {
    screen().deleteAccountPassword = password;
    EXPECT_TRUE(sheet().deleteMyAccount());
    app.settle();
  }
  std::size_t deletions() { return app.machine.http.count("DELETE", "/auth/account"); }
  AppearanceManager& appearance() { return *app.environment().appearanceManager(); }

  TestApplication app{asSignedInParent()};
};

TEST_F(Settings, shows_the_signed_in_parent) {
  EXPECT_EQ(screen().initials(), "AM");
  EXPECT_EQ(screen().displayName(), "Ann Marie Lee");
  EXPECT_EQ(screen().email(), "ann@example.com");
  app.environment().authState()->name =
      std::string("👨‍👩‍👧 👩‍👩‍👦 👨‍👨‍👦");
  EXPECT_EQ(screen().initials(), "👨‍👩‍👧👩‍👩‍👦");
  app.environment().authState()->name = std::string();
  EXPECT_EQ(screen().displayName(), "ann@example.com");
  EXPECT_EQ(screen().initials(), "AN");
}

TEST_F(Settings, follows_changes_of_the_session) {
  int heard = 0;
  const auto listening = screen().observe([&](const Member& /*any*/) { ++heard; });
  app.environment().authState()->name = std::string("Bob");
  EXPECT_EQ(heard, 1);
}

TEST_F(Settings, opens_the_family) {
  EXPECT_TRUE(screen().openFamilyMembers());
  EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", "SettingsView", "FamilyMembersView"}));
  app.settle();
  EXPECT_EQ(app.machine.http.count("GET", "/family"), 1U);
}

TEST_F(Settings, lists_the_appearances_in_order_with_the_current_one_marked) {
  ASSERT_EQ(screen().appearanceRows.size(), 3U);
  const std::vector<std::pair<std::string, std::string>> rows{
      {"System", "circle.lefthalf.filled"}, {"Light", "sun.max.fill"}, {"Dark", "moon.fill"}};
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(screen().appearanceRows[i].title(), rows[i].first);
    EXPECT_EQ(screen().appearanceRows[i].icon(), rows[i].second);
    EXPECT_EQ(screen().appearanceRows[i].isSelected(), i == 0);
  }
}

TEST_F(Settings, a_tapped_appearance_is_set_stored_and_applied_at_once) {
  screen().appearanceRows.find("Dark")->select();
  EXPECT_EQ(appearance().currentMode(), AppearanceMode::dark);
  EXPECT_EQ(appearance().colorScheme(), ColorScheme::dark);
  EXPECT_EQ(app.machine.settings.string(settings::appearanceMode), "Dark");
  EXPECT_EQ(app.machine.windowStyle.styles.back(), UserInterfaceStyle::dark);
  EXPECT_FALSE(screen().appearanceRows.find("System")->isSelected());
  EXPECT_TRUE(screen().appearanceRows.find("Dark")->isSelected());
  screen().appearanceRows.find("System")->select();
  EXPECT_EQ(appearance().colorScheme(), std::nullopt);
  EXPECT_EQ(app.machine.settings.string(settings::appearanceMode), "System");
  EXPECT_EQ(app.machine.windowStyle.styles.back(), UserInterfaceStyle::unspecified);
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(Settings, an_appearance_chosen_elsewhere_moves_the_mark) {
  int heard = 0;
  const auto listening =
      screen().appearanceRows.find("Light")->observe([&](const Member& /*any*/) { ++heard; });
  appearance().cycleMode();
  EXPECT_TRUE(screen().appearanceRows.find("Light")->isSelected());
  EXPECT_GT(heard, 0);
}

TEST_F(Settings, deleting_the_account_asks_twice) {
  EXPECT_FALSE(screen().deletionConfirmation.confirm());
  EXPECT_FALSE(screen().performAccountDeletion());
  EXPECT_TRUE(screen().deleteAccount());
  EXPECT_TRUE(screen().deletionConfirmation.isShown());
  EXPECT_FALSE(screen().showDeleteAccountPassword());
  EXPECT_TRUE(screen().deletionConfirmation.cancel());
  EXPECT_FALSE(screen().deletionConfirmation.isShown());
  EXPECT_FALSE(screen().showDeleteAccountPassword());
  screen().deleteAccount();
  EXPECT_TRUE(screen().deletionConfirmation.confirm());
  EXPECT_FALSE(screen().deletionConfirmation.isShown());
  EXPECT_TRUE(screen().showDeleteAccountPassword());
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(Settings, deleting_requires_a_password) {
  openPasswordSheet();
  EXPECT_FALSE(sheet().deleteMyAccount());
  sheet().deleteAccountPassword.input(Value(" "));
  EXPECT_TRUE(sheet().deleteMyAccount.isEnabled()) << "a blank is a password";
  sheet().deleteAccountPassword.input(Value(""));
  EXPECT_FALSE(sheet().deleteMyAccount.isEnabled());
  app.settle();
  EXPECT_EQ(deletions(), 0U);
}

TEST_F(Settings, the_sheet_and_the_screen_share_the_password_field) {
  openPasswordSheet();
  int heard = 0;
  const auto listening = sheet().observe([&](const Member& /*any*/) { ++heard; });
  EXPECT_TRUE(sheet().deleteAccountPassword.input(Value("secret")));
  EXPECT_EQ(screen().deleteAccountPassword(), "secret");
  EXPECT_EQ(heard, 1);
  screen().deleteAccountPassword = std::string("other");
  EXPECT_EQ(sheet().deleteAccountPassword(), "other");
  EXPECT_EQ(sheet().deleteAccountPassword.value(), Value("other"));
  EXPECT_FALSE(sheet().deleteAccountPassword.input(Value(5)));
}

TEST_F(Settings, cancel_clears_the_password_and_dismisses_the_sheet) {
  openPasswordSheet("secret");
  EXPECT_TRUE(sheet().cancel());
  EXPECT_FALSE(screen().showDeleteAccountPassword());
  EXPECT_EQ(screen().deleteAccountPassword(), "");
  EXPECT_EQ(app.screenNames(), (Names{"DeviceListView", "SettingsView"}));
  EXPECT_EQ(deletions(), 0U);
}

TEST_F(Settings, the_password_is_sent_unchanged_and_once) {
  app.machine.http.hold();
  openPasswordSheet();
  screen().deleteAccountError = std::string("before");
  deleteWith(" sec ret ");
  EXPECT_TRUE(screen().isDeletingAccount());
  EXPECT_TRUE(sheet().isDeletingAccount());
  EXPECT_EQ(screen().deleteAccountError(), "");
  EXPECT_FALSE(sheet().deleteMyAccount());
  app.settle();
  EXPECT_EQ(deletions(), 1U);
  EXPECT_EQ(*app.machine.http.requests("DELETE", "/auth/account").front().body,
            R"({"password":" sec ret "})");
}

TEST_F(Settings, a_deleted_account_shows_the_login) {
  const KeychainService keychain(app.machine.secureItems);
  keychain.save(KeychainService::emailKey, "ann@example.com");
  openPasswordSheet();
  answer(200);
  deleteWith("secret");
  EXPECT_FALSE(app.environment().authState()->isLoggedIn());
  EXPECT_EQ(app.machine.settings.string(settings::authToken), std::nullopt);
  EXPECT_EQ(app.screenNames(), Names{"LoginView"});
  EXPECT_EQ(keychain.load(KeychainService::emailKey), "ann@example.com");
}

TEST_F(Settings, a_deletion_dismisses_the_sheet_then_ends_the_session_then_dismisses_the_screen) {
  Names steps;
  const auto settingsScreen = app.find<SettingsView>();
  const auto dashboard = app.find<DeviceListView>();
  const auto hearing = settingsScreen->observe([&](const Member& member) {
    if (member.name() == "showDeleteAccountPassword") {
      EXPECT_EQ(settingsScreen->deleteAccountPassword(), "");
      EXPECT_FALSE(settingsScreen->isDeletingAccount());
      steps.emplace_back("sheet");
    }
  });
  const auto session =
      app.environment().authState()->isLoggedIn.onChange([&] { steps.emplace_back("session"); });
  const auto gone = dashboard->observe([&](const Member& member) {
    if (member.name() == "showSettings") {
      steps.emplace_back("screen");
    }
  });
  openPasswordSheet();
  steps.clear();
  answer(200);
  deleteWith("secret");
  EXPECT_EQ(steps, (Names{"sheet", "session", "screen"}));
}

TEST_F(Settings, only_a_wrong_password_has_its_own_message) {
  struct Row {
    int status;
    std::string body;
    std::string message;
  };
  openPasswordSheet();
  for (const auto& row : std::vector<Row>{{403, R"({"error":"x"})", "Access denied"},
                                          {404, "{}", NetworkError::notFound().localizedDescription()},
                                          {500, R"({"error":"Try later"})", "Try later"},
                                          {500, "<html>", "Unknown error"}}) {
    answer(row.status, row.body);
    deleteWith("secret");
    EXPECT_EQ(screen().deleteAccountError(), row.message);
    EXPECT_TRUE(screen().showDeleteError());
    EXPECT_TRUE(screen().dismissDeleteError());
    EXPECT_FALSE(screen().showDeleteError());
  }
  app.machine.http.fail("DELETE", "/auth/account", Kind::notConnectedToInternet);
  deleteWith("secret");
  EXPECT_EQ(screen().deleteAccountError(), "The Internet connection appears to be offline.");
  app.machine.http.answerAlways("DELETE", "/auth/account", 401);
  app.machine.http.answerAlways("POST", "/auth/refresh", 401);
  deleteWith("wrong");
  EXPECT_EQ(screen().deleteAccountError(), "Incorrect password. Please try again.");
  EXPECT_TRUE(screen().showDeleteError());
}

TEST_F(Settings, a_failed_deletion_clears_the_field_and_keeps_the_sheet_and_the_session) {
  openPasswordSheet();
  answer(500);
  deleteWith("secret");
  EXPECT_FALSE(screen().isDeletingAccount());
  EXPECT_EQ(screen().deleteAccountPassword(), "");
  EXPECT_TRUE(screen().showDeleteAccountPassword());
  EXPECT_FALSE(sheet().deleteMyAccount());
  EXPECT_TRUE(app.environment().authState()->isLoggedIn());
  answer(200);
  deleteWith("secret");
  EXPECT_FALSE(app.environment().authState()->isLoggedIn()) << "at once again";
}

TEST_F(Settings, cancelling_the_sheet_does_not_cancel_the_request) {
  for (const int status : {500, 200}) {
    openPasswordSheet();
    app.machine.http.hold();
    deleteWith("secret");
    EXPECT_TRUE(sheet().cancel());
    EXPECT_TRUE(screen().isDeletingAccount());
    app.machine.http.complete(0, httpAnswer(status, R"({"error":"Try later"})"));
    app.settle();
    if (status == 500) {
      EXPECT_EQ(screen().deleteAccountError(), "Try later");
      EXPECT_TRUE(screen().showDeleteError());
      EXPECT_FALSE(screen().showDeleteAccountPassword());
    }
    app.machine.http.releaseAll();
  }
  EXPECT_FALSE(app.environment().authState()->isLoggedIn());
  EXPECT_EQ(app.screenNames(), Names{"LoginView"});
}

TEST_F(Settings, a_deleted_account_ends_its_session_even_after_the_screen_is_destroyed) {
  openPasswordSheet();
  app.machine.http.hold("DELETE", "/auth/account");
  answer(200);
  deleteWith("secret");
  app.screen<DeviceListView>().showSettings = false;
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_FALSE(app.environment().authState()->isLoggedIn());
}

struct AfterDeletion : Settings {
  // Deletes the account; `arrangeScreens` runs when the answer arrives, then a long time passes.
  void endAccount(const std::function<void()>& arrangeScreens) {
    openPasswordSheet();
    app.machine.http.hold("DELETE", "/auth/account");
    answer(200);
    deleteWith("secret");
    arrangeScreens();
    app.settle();
    app.machine.http.forgetRequests();
    app.machine.log.clear();
    app.machine.http.releaseAll();
    app.settle();
    app.advance(std::chrono::minutes(5));
  }
  void expectSilence() {
    EXPECT_EQ(app.screenNames(), Names{"LoginView"});
    EXPECT_EQ(app.machine.http.calls(), Names{});
    EXPECT_EQ(app.machine.log.printed(), Names{});
    EXPECT_EQ(app.machine.log.systemLines(), Names{});
  }
};

TEST_F(AfterDeletion, the_dashboard_behind_the_screen_sends_nothing) {
  endAccount([] {});
  expectSilence();
}

TEST_F(AfterDeletion, any_other_screen_shown_meanwhile_sends_nothing) {
  endAccount([this] { screen().openFamilyMembers(); });
  expectSilence();
}

TEST_F(AfterDeletion, a_screen_that_replaced_it_sends_nothing) {
  endAccount([this] {
    screen().done();
    app.screen<DeviceListView>().openHomeNetwork();
  });
  expectSilence();
}

TEST_F(Settings, a_failed_deletion_after_the_screen_is_destroyed_is_dropped) {
  openPasswordSheet();
  app.machine.http.hold("DELETE", "/auth/account");
  answer(500);
  deleteWith("secret");
  app.screen<DeviceListView>().showSettings = false;
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_TRUE(app.environment().authState()->isLoggedIn());
  EXPECT_EQ(app.screenNames(), Names{"DeviceListView"});
}

TEST_F(Settings, done_dismisses_the_screen) {
  EXPECT_TRUE(screen().done());
  EXPECT_EQ(app.screenNames(), Names{"DeviceListView"});
}

TEST_F(Settings, the_texts_are_exact) {
  const auto& texts = screen();
  EXPECT_EQ(texts.title(), "Settings");
  EXPECT_EQ(texts.doneTitle(), "Done");
  EXPECT_EQ(texts.accountSection(), "Account");
  EXPECT_EQ(texts.familySection(), "Family");
  EXPECT_EQ(texts.familyMembersTitle(), "Family Members");
  EXPECT_EQ(texts.appearanceSection(), "Appearance");
  EXPECT_EQ(texts.aboutSection(), "About");
  EXPECT_EQ(texts.versionTitle(), "Version");
  EXPECT_EQ(texts.version(), "1.0.0");
  EXPECT_EQ(texts.deletionSection(), "Account");
  EXPECT_EQ(texts.deletionFooter(),
            "Permanently deletes your account and all associated data including devices, policies, DNS logs, "
            "and family data. This action cannot be undone.");
  EXPECT_EQ(texts.deleteAccountTitle(), "Delete Account");
  EXPECT_EQ(texts.confirmationTitle(), "Delete Account?");
  EXPECT_EQ(texts.confirmationText(),
            "This will permanently delete your account and all associated data including devices, policies, "
            "DNS logs, and family data. This action cannot be undone.");
  EXPECT_EQ(texts.cancelTitle(), "Cancel");
  EXPECT_EQ(texts.continueTitle(), "Continue");
  EXPECT_EQ(texts.errorTitle(), "Error");
  EXPECT_EQ(texts.okTitle(), "OK");
  openPasswordSheet();
  EXPECT_EQ(sheet().title(), "Delete Account");
  EXPECT_EQ(sheet().cancelTitle(), "Cancel");
  EXPECT_EQ(sheet().heading(), "Confirm Account Deletion");
  EXPECT_EQ(sheet().explanation(),
            "Enter your password to permanently delete your account. This cannot be undone.");
  EXPECT_EQ(sheet().passwordPlaceholder(), "Password");
  EXPECT_EQ(sheet().deletingText(), "Deleting account...");
  EXPECT_EQ(sheet().deleteTitle(), "Delete My Account");
}

}  // namespace
}  // namespace quillmar
