// What is left of a password or a token in freed memory.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>

#include "console/delete_account_sheet.h"
#include "console/device_list_view.h"
#include "console/settings_view.h"
#include "family/join_family_view.h"
#include "identity/login_view.h"
#include "identity/register_view.h"
#include "platform/common/sqlite_settings_store.h"
#include "testing/freed_memory.h"
#include "testing/recording_log.h"
#include "testing/temporary_directory.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

const std::string secret = "correct-horse-battery-staple-9";

// The requests that the fake session records stay until a test's end.
struct Secrets : testing::Test {
  // Letter by letter, as a person does.
  static void type(Member& field) {
    for (std::size_t length = 1; length <= secret.size(); ++length) {
      EXPECT_TRUE(field.input(secret.substr(0, length)));
    }
  }
  void answer(std::string_view method, std::string_view path, int status, const std::string& body = "{}") {
    app.machine.http.answer(method, path, status, body);
  }
  static int leftBy(const std::function<void()>& work) { return freedBlocksWith(secret, work); }

  const std::string session = R"({"token":"t1","parent_id":"p1","email":"ann@example.com","name":"Ann Lee"})";
  TestApplication app{asParent()};
};

TEST_F(Secrets, none_is_left_by_signing_in) {
  answer("POST", "/auth/login", 401);
  answer("POST", "/auth/login", 200, session);
  EXPECT_EQ(leftBy([&] {
              auto& screen = app.screen<LoginView>();
              screen.email = "ann@example.com";
              type(screen.password);
              EXPECT_TRUE(screen.signIn());
              app.settle();
              EXPECT_TRUE(screen.errorAlert.isShown());
              screen.rememberMe = true;
              EXPECT_TRUE(screen.signIn());
              app.settle();
            }),
            0);
  EXPECT_EQ(app.find<LoginView>(), nullptr);
}

TEST_F(Secrets, none_is_left_by_signing_in_with_a_finger) {
  const KeychainService keychain(app.machine.secureItems);
  keychain.save(KeychainService::emailKey, "ann@example.com");
  keychain.save(KeychainService::passwordKey, secret);
  answer("POST", "/auth/login", 200, session);
  EXPECT_EQ(leftBy([&] {
              app.restart();
              EXPECT_TRUE(app.screen<LoginView>().signInWithBiometrics());
              app.settle();
            }),
            0);
  EXPECT_EQ(app.find<LoginView>(), nullptr);
}

TEST_F(Secrets, none_is_left_by_registering) {
  answer("POST", "/auth/register", 200, session);
  EXPECT_EQ(leftBy([&] {
              app.screen<LoginView>().signUp();
              auto& screen = app.screen<RegisterView>();
              screen.name = "Ann Lee";
              screen.email = "ann@example.com";
              screen.phone = "+61 412 345 678";
              type(screen.password);
              type(screen.confirmPassword);
              EXPECT_EQ(screen.strength(), 4);
              EXPECT_TRUE(screen.createAccount());
              app.settle();
            }),
            0);
  EXPECT_EQ(app.find<RegisterView>(), nullptr);
}

TEST_F(Secrets, none_is_left_by_joining_a_family) {
  answer("GET", "/family/invite/AB12CD", 200, R"({"valid":true})");
  answer(
      "POST", "/family/join", 200,
      R"({"message":"m","token":"t1","parent_id":"p1","family_id":"f1","family_name":"F","role":"member"})");
  EXPECT_EQ(leftBy([&] {
              app.screen<LoginView>().joinFamily();
              auto& screen = app.screen<JoinFamilyView>();
              screen.inviteCode = "AB12CD";
              EXPECT_TRUE(screen.validateCode());
              app.settle();
              screen.displayName = "Bob";
              screen.email = "bob@example.com";
              type(screen.password);
              type(screen.confirmPassword);
              EXPECT_TRUE(screen.join());
              app.settle();
            }),
            0);
  EXPECT_EQ(app.find<JoinFamilyView>(), nullptr);
}

// The first answer has the request kept and sent once more.
TEST_F(Secrets, none_is_left_by_deleting_the_account) {
  app.environment().authState()->login("t1", "p1", "ann@example.com", "Ann Lee");
  app.settle();
  app.screen<DeviceListView>().showSettings = true;
  answer("DELETE", "/auth/account", 401);
  answer("POST", "/auth/refresh", 200, session);
  answer("DELETE", "/auth/account", 200);
  EXPECT_EQ(leftBy([&] {
              auto& screen = app.screen<SettingsView>();
              screen.deleteAccount();
              EXPECT_TRUE(screen.deletionConfirmation.confirm());
              auto& sheet = app.screen<DeleteAccountSheet>();
              type(sheet.deleteAccountPassword);
              EXPECT_TRUE(sheet.deleteMyAccount());
              app.settle();
            }),
            0);
  EXPECT_EQ(app.machine.http.count("DELETE", "/auth/account"), 2U);
  EXPECT_NE(app.find<LoginView>(), nullptr);
}

TEST_F(Secrets, none_is_left_of_a_token_that_was_stored) {
  const TemporaryDirectory directory;
  RecordingLog log;
  const std::string renewed = secret + "-renewed";
  EXPECT_EQ(leftBy([&] {
              {
                SqliteSettingsStore store(directory.path(), log);
                store.write(settings::authToken, secret);
                store.write(settings::authToken, secret);
                store.write(settings::authToken, renewed);
                store.remove(settings::authToken);
                store.write(settings::authToken, secret);
              }
              SqliteSettingsStore(directory.path(), log).remove(settings::authToken);
            }),
            0);
}

}  // namespace
}  // namespace quillmar
