#include "identity/login_view.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "client/network_error.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

using Names = std::vector<std::string>;
using Kind = TransportError::Kind;

const std::string signedIn =
    R"({"token":"t1","parent_id":"p1","email":"service@example.com","name":"Ann Lee"})";

struct Login : testing::Test {
  explicit Login(const std::function<void(TestApplication&)>& prepare = {}) {
    if (prepare) {
      prepare(app);
      app.restart();
    }
  }

  LoginView& screen() { return app.screen<LoginView>(); }
  KeychainService& keychain() { return *app.environment().keychainService(); }
  std::optional<std::string> savedEmail() { return keychain().load(KeychainService::emailKey); }
  std::optional<std::string> savedPassword() { return keychain().load(KeychainService::passwordKey); }
  bool isLoggedIn() { return app.environment().authState()->isLoggedIn(); }
  std::size_t logins() { return app.machine.http.count("POST", "/auth/login"); }
  std::string sentBody() { return *app.machine.http.requests("POST", "/auth/login").back().body; }

  static void save(TestApplication& app, const std::string& password = "saved") {
    const KeychainService keychain(app.machine.secureItems);
    keychain.save(KeychainService::emailKey, "ann@example.com");
    keychain.save(KeychainService::passwordKey, password);
  }
  void type(const std::string& email, const std::string& password) {
    screen().email = email;
    screen().password = password;
  }
  void answer(int status, const std::string& body) {
    app.machine.http.answer("POST", "/auth/login", status, body);
  }
  void signIn() {
    EXPECT_TRUE(screen().signIn());
    app.settle();
  }
  void signInWithBiometrics() {
    EXPECT_TRUE(screen().signInWithBiometrics());
    app.settle();
  }

  TestApplication app{asParent()};
};

struct SavedLogin : Login {
  SavedLogin() : Login([](TestApplication& app) { save(app); }) {}
};

TEST_F(Login, begins_empty_and_sends_nothing) {
  EXPECT_EQ(screen().email(), "");
  EXPECT_EQ(screen().password(), "");
  EXPECT_FALSE(screen().rememberMe());
  EXPECT_FALSE(screen().hasSavedCredentials());
  EXPECT_FALSE(screen().isLoading());
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_FALSE(screen().showRegister());
  EXPECT_FALSE(screen().showJoinFamily());
  EXPECT_FALSE(screen().showsBiometricButton());
  app.advance(std::chrono::hours(1));
  EXPECT_TRUE(app.machine.http.requests().empty());
  EXPECT_TRUE(app.machine.biometrics.prompts.empty());
}

TEST_F(Login, the_entry_animation_runs_from_its_beginning_to_rest) {
  const LoginView unseen(app.environment(), {});
  EXPECT_EQ(unseen.logoScale(), 0.5);
  EXPECT_EQ(unseen.logoOpacity(), 0.0);
  EXPECT_EQ(unseen.formOpacity(), 0.0);
  EXPECT_EQ(unseen.formOffset(), 30.0);
  EXPECT_EQ(screen().logoScale(), 1.0);
  EXPECT_EQ(screen().logoOpacity(), 1.0);
  EXPECT_EQ(screen().formOpacity(), 1.0);
  EXPECT_EQ(screen().formOffset(), 0.0);
}

TEST_F(Login, the_form_requires_only_an_at_sign_and_a_password) {
  struct Row {
    std::string email, password;
    bool valid;
  };
  for (const auto& row : std::vector<Row>{{"", "secret", false},
                                          {"ann.example.com", "a long password", false},
                                          {"ann@example.com", "", false},
                                          {"@", "x", true},
                                          {" @ ", " ", true},
                                          {"ann@example.com", "👨‍👩‍👧", true}}) {
    type(row.email, row.password);
    EXPECT_EQ(screen().isFormValid(), row.valid) << row.email;
    EXPECT_EQ(screen().signIn.isEnabled(), row.valid) << row.email;
  }
}

TEST_F(Login, an_invalid_form_sends_nothing) {
  type("ann.example.com", "secret");
  EXPECT_FALSE(screen().signIn());
  app.settle();
  EXPECT_EQ(logins(), 0U);
}

TEST_F(Login, sends_the_input_to_the_chosen_region) {
  type(" ann@example.com ", " pass word ");
  answer(200, signedIn);
  signIn();
  EXPECT_EQ(app.machine.http.requests().front().url, "https://au.example/api/v1/auth/login");
  EXPECT_EQ(sentBody(), R"({"email":" ann@example.com ","password":" pass word "})");
  EXPECT_TRUE(isLoggedIn());
  EXPECT_EQ(app.environment().authState()->email(), "service@example.com");
  EXPECT_EQ(app.screenNames().front(), "DeviceListView");
}

TEST_F(Login, a_blank_token_and_a_name_of_emoji_make_a_session) {
  type("ann@example.com", "secret");
  answer(
      200,
      R"({"token":" ","parent_id":"","email":"","name":"👨‍👩‍👧👩‍👩‍👦👨‍👨‍👦"})");
  signIn();
  EXPECT_TRUE(isLoggedIn());
  EXPECT_EQ(app.environment().authState()->initials(), "👨‍👩‍👧👩‍👩‍👦");
  app.restart();
  EXPECT_TRUE(isLoggedIn());
  EXPECT_EQ(app.screenNames().front(), "DeviceListView");
}

TEST_F(Login, ends_before_the_input_is_remembered_or_forgotten) {
  for (const bool remembers : {true, false}) {
    TestApplication other(asParent());
    auto& login = other.screen<LoginView>();
    std::vector<bool> running;
    other.machine.secureItems.watchWrites([&] { running.push_back(login.isLoading()); });
    other.machine.http.answer("POST", "/auth/login", 200, signedIn);
    login.email = std::string("ann@example.com");
    login.password = std::string("secret");
    login.rememberMe = remembers;
    const auto held = other.find<LoginView>();
    login.signIn();
    other.settle();
    EXPECT_GE(running.size(), 2U);
    EXPECT_EQ(std::ranges::count(running, true), 0) << remembers;
  }
}

TEST_F(Login, only_one_sign_in_runs_at_a_time) {
  app.machine.http.hold();
  type("ann@example.com", "secret");
  screen().errorAlert.message = std::string("before");
  signIn();
  EXPECT_TRUE(screen().isLoading());
  EXPECT_EQ(screen().errorAlert.message(), "");
  EXPECT_FALSE(screen().signIn());
  EXPECT_FALSE(screen().signInWithBiometrics());
  app.settle();
  EXPECT_EQ(logins(), 1U);
}

TEST_F(Login, a_refusal_shows_its_message_and_keeps_the_fields) {
  struct Row {
    int status;
    std::string body;
    std::string message;
  };
  for (const auto& row :
       std::vector<Row>{{500, R"({"error":"Try later"})", "Try later"},
                        {401, R"({"error":"Bad"})", "Please log in again"},
                        {403, "{}", "Access denied"},
                        {200, "<html>",
                         "The data couldn’t be read because it isn’t in "
                         "the correct format."},
                        {200, R"({"token":"t"})", "The data couldn’t be read because it is missing."}}) {
    type("ann@example.com", "wrong");
    screen().rememberMe = true;
    answer(row.status, row.body);
    signIn();
    EXPECT_FALSE(screen().isLoading());
    EXPECT_TRUE(screen().errorAlert.isShown());
    EXPECT_EQ(screen().errorAlert.message(), row.message);
    EXPECT_EQ(screen().email(), "ann@example.com");
    EXPECT_EQ(screen().password(), "wrong");
    EXPECT_FALSE(isLoggedIn());
    EXPECT_EQ(savedEmail(), std::nullopt);
    EXPECT_TRUE(screen().errorAlert.dismiss());
    EXPECT_FALSE(screen().errorAlert.isShown());
  }
}

TEST_F(Login, a_failed_connection_or_a_missing_region_shows_the_alert) {
  type("ann@example.com", "secret");
  app.machine.http.fail("POST", "/auth/login", Kind::notConnectedToInternet);
  signIn();
  EXPECT_EQ(screen().errorAlert.message(), "The Internet connection appears to be offline.");
  screen().errorAlert.dismiss();
  app.machine.settings.remove(settings::region);
  screen().signIn();
  EXPECT_TRUE(screen().isLoading()) << "the answer comes by the main queue";
  app.settle();
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_EQ(screen().errorAlert.message(), NetworkError::noRegionConfigured().localizedDescription());
}

TEST_F(Login, a_ticked_box_saves_the_fields_as_they_are_when_the_answer_arrives) {
  app.machine.http.hold();
  type("ann@example.com", "secret");
  screen().rememberMe = true;
  answer(200, signedIn);
  signIn();
  EXPECT_EQ(savedEmail(), std::nullopt) << "nothing is stored before the answer";
  type("ann@example.org", "secret2");
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_EQ(savedEmail(), "ann@example.org");
  EXPECT_EQ(savedPassword(), "secret2");
}

TEST_F(Login, a_failing_store_is_ignored) {
  app.machine.secureItems.setLocked(true);
  type("ann@example.com", "secret");
  screen().rememberMe = true;
  answer(200, signedIn);
  signIn();
  EXPECT_TRUE(isLoggedIn());
}

TEST_F(SavedLogin, fills_in_the_address_and_the_tick_but_never_the_password) {
  EXPECT_EQ(screen().email(), "ann@example.com");
  EXPECT_EQ(screen().password(), "");
  EXPECT_TRUE(screen().rememberMe());
  EXPECT_TRUE(screen().hasSavedCredentials());
  EXPECT_TRUE(screen().signInWithBiometrics.isEnabled());
}

TEST_F(SavedLogin, an_address_alone_fills_the_field_without_a_button) {
  keychain().deleteItem(KeychainService::passwordKey);
  app.restart();
  EXPECT_EQ(screen().email(), "ann@example.com");
  EXPECT_TRUE(screen().rememberMe());
  EXPECT_FALSE(screen().hasSavedCredentials());
  EXPECT_FALSE(screen().signInWithBiometrics.isEnabled());
}

TEST_F(SavedLogin, a_saved_password_alone_fills_in_nothing) {
  keychain().deleteItem(KeychainService::emailKey);
  app.restart();
  EXPECT_EQ(screen().email(), "");
  EXPECT_FALSE(screen().rememberMe());
  EXPECT_FALSE(screen().hasSavedCredentials());
}

TEST_F(SavedLogin, a_locked_store_fills_in_nothing) {
  app.machine.secureItems.setLocked(true);
  app.restart();
  EXPECT_EQ(screen().email(), "");
  EXPECT_FALSE(screen().hasSavedCredentials());
}

TEST_F(SavedLogin, toggling_the_box_stores_nothing) {
  screen().rememberMe = false;
  app.settle();
  EXPECT_EQ(savedEmail(), "ann@example.com");
  EXPECT_EQ(savedPassword(), "saved");
}

TEST_F(SavedLogin, signing_in_with_the_box_unticked_removes_the_saved_login) {
  screen().rememberMe = false;
  screen().password = std::string("typed");
  answer(200, signedIn);
  signIn();
  EXPECT_TRUE(isLoggedIn());
  EXPECT_TRUE(app.machine.secureItems.items().empty());
  app.environment().authState()->logout();
  app.settle();
  EXPECT_FALSE(screen().showsBiometricButton());
  EXPECT_EQ(screen().email(), "");
}

TEST_F(SavedLogin, after_a_logout_the_address_is_filled_in) {
  screen().password = std::string("typed");
  answer(200, signedIn);
  signIn();
  app.environment().authState()->logout();
  app.settle();
  EXPECT_EQ(screen().email(), "ann@example.com");
  EXPECT_EQ(screen().password(), "");
  EXPECT_TRUE(screen().rememberMe());
  EXPECT_TRUE(screen().showsBiometricButton());
  EXPECT_EQ(savedPassword(), "typed");
}

TEST_F(SavedLogin, the_button_names_the_sensor) {
  struct Row {
    int type;
    std::string title, icon;
  };
  for (const auto& row : std::vector<Row>{{1, "Sign in with Touch ID", "touchid"},
                                          {2, "Sign in with Face ID", "faceid"},
                                          {7, "Sign in with Biometric", "touchid"}}) {
    app.machine.biometrics.type = row.type;
    app.restart();
    EXPECT_TRUE(screen().showsBiometricButton());
    EXPECT_EQ(screen().biometricTitle(), row.title);
    EXPECT_EQ(screen().biometricIcon(), row.icon);
  }
}

TEST_F(SavedLogin, without_a_usable_sensor_there_is_no_button_but_the_address_is_filled_in) {
  app.machine.biometrics.available = false;
  app.restart();
  EXPECT_TRUE(screen().hasSavedCredentials());
  EXPECT_FALSE(screen().showsBiometricButton());
  EXPECT_FALSE(screen().signInWithBiometrics());
  EXPECT_EQ(screen().email(), "ann@example.com");
}

TEST_F(SavedLogin, a_successful_check_signs_in_with_the_saved_login_and_keeps_it) {
  screen().rememberMe = false;
  type("other@example.com", "typed");
  answer(200, signedIn);
  signInWithBiometrics();
  EXPECT_EQ(sentBody(), R"({"email":"ann@example.com","password":"saved"})");
  EXPECT_TRUE(isLoggedIn());
  EXPECT_EQ(savedEmail(), "ann@example.com");
  EXPECT_EQ(savedPassword(), "saved");
}

TEST_F(SavedLogin, is_loading_from_the_prompt_to_the_answer) {
  app.machine.biometrics.holding = true;
  app.machine.http.hold();
  screen().errorAlert.message = std::string("before");
  signInWithBiometrics();
  EXPECT_TRUE(screen().isLoading());
  EXPECT_EQ(screen().errorAlert.message(), "");
  EXPECT_FALSE(screen().signInWithBiometrics());
  screen().password = std::string("typed");
  EXPECT_FALSE(screen().signIn());
  app.machine.biometrics.reply({.success = true, .code = std::nullopt});
  app.settle();
  EXPECT_TRUE(screen().isLoading());
  EXPECT_EQ(logins(), 1U);
  app.machine.http.complete(0, httpAnswer(401));
  app.settle();
  EXPECT_FALSE(screen().isLoading());
}

TEST_F(SavedLogin, a_cancelled_prompt_shows_no_alert) {
  app.machine.biometrics.answer = {.success = false, .code = -2};
  signInWithBiometrics();
  EXPECT_FALSE(screen().isLoading());
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_EQ(screen().errorAlert.message(), "");
  EXPECT_EQ(logins(), 0U);
}

TEST_F(SavedLogin, every_other_prompt_error_is_shown) {
  struct Row {
    std::optional<int> code;
    std::string message;
  };
  for (const auto& row : std::vector<Row>{
           {-3, "Please enter your password"},
           {-6, "Biometric authentication is not available on this device"},
           {-7, "No biometric data is enrolled. Please set up Face ID or Touch ID in Settings."},
           {-8, "Biometric authentication is locked. Please try again later or use your password."},
           {-1, "Authentication failed"},
           {std::nullopt, "Authentication failed"}}) {
    app.machine.biometrics.answer = {.success = false, .code = row.code};
    signInWithBiometrics();
    EXPECT_FALSE(screen().isLoading());
    EXPECT_TRUE(screen().errorAlert.isShown());
    EXPECT_EQ(screen().errorAlert.message(), row.message);
    screen().errorAlert.dismiss();
  }
  EXPECT_EQ(logins(), 0U);
}

TEST_F(SavedLogin, missing_credentials_are_reported_without_a_prompt) {
  keychain().deleteItem(KeychainService::passwordKey);
  screen().signInWithBiometrics();
  EXPECT_FALSE(screen().errorAlert.isShown()) << "not before the main queue's turn";
  app.settle();
  EXPECT_EQ(screen().errorAlert.message(), "No saved credentials found");
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_TRUE(app.machine.biometrics.prompts.empty());
}

TEST_F(SavedLogin, an_outdated_saved_password_is_reported_and_kept) {
  answer(401, "{}");
  signInWithBiometrics();
  EXPECT_FALSE(screen().isLoading());
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_EQ(screen().errorAlert.message(), "Please log in again");
  EXPECT_EQ(savedPassword(), "saved");
  EXPECT_TRUE(screen().signInWithBiometrics.isEnabled());
}

TEST_F(Login, the_two_links_open_their_sheets) {
  screen().signUp();
  EXPECT_TRUE(screen().showRegister());
  EXPECT_EQ(app.screenNames(), (Names{"LoginView", "RegisterView"}));
  screen().showRegister = false;
  screen().joinFamily();
  EXPECT_TRUE(screen().showJoinFamily());
  EXPECT_EQ(app.screenNames(), (Names{"LoginView", "JoinFamilyView"}));
}

TEST_F(Login, returning_from_a_sheet_is_not_a_new_appearance) {
  type("ann@example.com", "secret");
  screen().signUp();
  save(app);
  screen().showRegister = false;
  EXPECT_FALSE(screen().hasSavedCredentials());
  EXPECT_EQ(screen().password(), "secret");
}

TEST_F(Login, an_answer_for_a_destroyed_screen_is_dropped) {
  app.machine.http.hold();
  type("ann@example.com", "secret");
  screen().rememberMe = true;
  signIn();
  app.environment().authState()->login("t2", "p2", "bob@example.com", "Bob");
  app.settle();
  ASSERT_EQ(app.find<LoginView>(), nullptr);
  app.machine.http.complete(0, httpAnswer(200, signedIn));
  app.settle();
  EXPECT_EQ(app.environment().authState()->email(), "bob@example.com");
  EXPECT_EQ(savedEmail(), std::nullopt);
}

TEST_F(Login, the_texts_are_exact) {
  const auto& texts = screen();
  EXPECT_EQ(texts.logo(), "QuillmarLogo");
  EXPECT_EQ(texts.title(), "Quillmar");
  EXPECT_EQ(texts.subtitle(), "Parent Dashboard");
  EXPECT_EQ(texts.tagline(), "Protect your family's digital life");
  EXPECT_EQ(texts.emailTitle(), "Email");
  EXPECT_EQ(texts.passwordTitle(), "Password");
  EXPECT_EQ(texts.passwordPlaceholder(), "Enter your password");
  EXPECT_EQ(texts.rememberMeTitle(), "Remember me");
  EXPECT_EQ(texts.signInTitle(), "Sign In");
  EXPECT_EQ(texts.orText(), "or");
  EXPECT_EQ(texts.signUpQuestion(), "Don't have an account?");
  EXPECT_EQ(texts.signUpTitle(), "Sign Up");
  EXPECT_EQ(texts.joinFamilyQuestion(), "Have an invite code from another parent?");
  EXPECT_EQ(texts.joinFamilyTitle(), "Join Existing Family");
  EXPECT_EQ(texts.errorAlert.title(), "Error");
  EXPECT_EQ(texts.errorAlert.okTitle(), "OK");
}

}  // namespace
}  // namespace quillmar
