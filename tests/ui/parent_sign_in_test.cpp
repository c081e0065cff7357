#include <gtest/gtest.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <string>

#include "identity/auth_state.h"
#include "testing/ui/parent_stage.h"

namespace quillmar::ui {
namespace {

constexpr auto account = R"({"token":"t1","parent_id":"p1","email":"ann@example.com","name":"Ann Lee"})";

struct ParentSignIn : testing::Test {
  UiStage stage{{.stored = asParent()}};

  LoginView& login() { return stage.application.screen<LoginView>(); }
  ScriptedHttpSession& http() { return stage.application.machine.http; }
  std::size_t logins() { return http().count("POST", "/auth/login"); }
  bool isSignedIn() { return stage.application.environment().authState()->isLoggedIn(); }
  void fillIn() {
    login().email = std::string("ann@example.com");
    login().password = std::string("secret");
    stage.settle();
  }
};

TEST_F(ParentSignIn, tab_moves_in_reading_order) {
  fillIn();
  for (const auto* name : {"Email", "Password", "Show password", "Remember me", "Sign In", "Sign Up",
                           "Join Existing Family", "Email"}) {
    EXPECT_EQ(stage.focusedName(), name);
    stage.press(Qt::Key_Tab);
  }
  stage.press(Qt::Key_Backtab);
  stage.press(Qt::Key_Backtab);
  EXPECT_EQ(stage.focusedName(), "Join Existing Family");
}

TEST_F(ParentSignIn, works_by_keyboard_only) {
  http().answer("POST", "/auth/login", 200, account);
  stage.type("ann@example.com");
  EXPECT_EQ(login().email(), "ann@example.com");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(stage.focusedName(), "Password");
  stage.type("secret");
  stage.tabTo("Remember me");
  stage.press(Qt::Key_Space);
  EXPECT_TRUE(login().rememberMe());
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(login().rememberMe());
  EXPECT_EQ(logins(), 0U);

  stage.press(Qt::Key_Backtab);
  stage.press(Qt::Key_Backtab);
  EXPECT_EQ(stage.focusedName(), "Password");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(logins(), 1U);
  EXPECT_TRUE(isSignedIn());
  EXPECT_TRUE(stage.shows("My Family"));
  EXPECT_FALSE(stage.shows("Remember me"));
}

TEST_F(ParentSignIn, states_whether_a_box_is_ticked) {
  auto* const box = stage.control("Remember me");
  ASSERT_NE(box, nullptr);
  EXPECT_FALSE(box->property("checked").toBool());
  stage.click("Remember me");
  EXPECT_TRUE(login().rememberMe());
  EXPECT_TRUE(box->property("checked").toBool());
}

TEST_F(ParentSignIn, a_disabled_button_is_skipped_and_does_nothing) {
  login().email = std::string("ann");
  login().password = std::string("secret");
  stage.settle();
  stage.click("Sign In");
  EXPECT_EQ(logins(), 0U);
  stage.tabTo("Remember me");
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "Sign Up");

  stage.tabTo("Password");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(logins(), 0U);
}

class KeyTest : public ParentSignIn, public testing::WithParamInterface<Qt::Key> {};

TEST_P(KeyTest, a_focused_button_that_is_disabled_does_nothing) {
  fillIn();
  stage.tabTo("Sign In");
  login().password = std::string();
  stage.settle();
  stage.press(GetParam());
  EXPECT_EQ(logins(), 0U);

  fillIn();
  EXPECT_EQ(stage.focusedName(), "Sign In") << "the keyboard's place is lost";
  http().hold();
  stage.press(GetParam());
  EXPECT_EQ(logins(), 1U);
  stage.press(GetParam());
  stage.click("Sign Up");
  stage.press(Qt::Key_Escape);
  stage.press(GetParam());
  EXPECT_EQ(logins(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Keys, KeyTest, testing::Values(Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter));

class SignInAlertTest : public ParentSignIn, public testing::WithParamInterface<Qt::Key> {};

TEST_P(SignInAlertTest, returns_the_focus_to_the_control_it_came_from) {
  fillIn();
  for (const auto* origin : {"Password", "Sign In"}) {
    http().answer("POST", "/auth/login", 500, R"({"error":"Busy, try later"})");
    stage.tabTo(origin);
    stage.press(Qt::Key_Return);
    ASSERT_TRUE(stage.shows("Busy, try later"));
    EXPECT_EQ(stage.focusedName(), "OK");
    stage.press(Qt::Key_Tab);
    EXPECT_EQ(stage.focusedName(), "OK") << "the keyboard left the alert";
    stage.press(GetParam());
    EXPECT_FALSE(stage.shows("Busy, try later"));
    EXPECT_FALSE(login().errorAlert.isShown());
    EXPECT_EQ(stage.focusedName(), origin);
    EXPECT_EQ(login().password(), "secret");
  }
}

INSTANTIATE_TEST_SUITE_P(Keys, SignInAlertTest,
                         testing::Values(Qt::Key_Escape, Qt::Key_Return, Qt::Key_Space));

TEST_F(ParentSignIn, the_password_is_hidden_until_it_is_asked_for) {
  fillIn();
  auto* const box = stage.control("Password");
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->property("displayText").toString(), QString(6, QChar(0x25CF)));
  stage.tabTo("Show password");
  stage.press(Qt::Key_Space);
  EXPECT_EQ(box->property("displayText").toString(), "secret");
  EXPECT_EQ(stage.focusedName(), "Hide password");
  stage.clickAt(middleOf(*stage.control("Hide password")));
  EXPECT_NE(box->property("displayText").toString(), "secret");
  EXPECT_EQ(login().password(), "secret");
}

struct Registration : ParentSignIn {
  Registration() {
    stage.tabTo("Sign Up");
    stage.press(Qt::Key_Return);
  }
  RegisterView& form() { return stage.application.screen<RegisterView>(); }
};

TEST_F(Registration, is_filled_in_field_by_field_and_sent_by_return) {
  http().answer("POST", "/auth/register", 200, account);
  EXPECT_EQ(stage.focusedName(), "Full Name");
  for (const auto* text : {"Ann Lee", "ann@example.com", "+61 412 345 678", "abcdefg8!", "abcdefg8!"}) {
    stage.type(text);
    stage.press(Qt::Key_Return);
  }
  ASSERT_EQ(http().count("POST", "/auth/register"), 1U);
  const std::string sent = *http().requests("POST", "/auth/register").back().body;
  EXPECT_NE(sent.find(R"("email":"ann@example.com")"), std::string::npos) << sent;
  EXPECT_NE(sent.find(R"("phone":"+61 412 345 678")"), std::string::npos) << sent;
  EXPECT_TRUE(isSignedIn());
  EXPECT_TRUE(stage.shows("My Family"));
}

TEST_F(Registration, reports_different_passwords_at_once) {
  form().name = std::string("Ann");
  stage.tabTo("Password");
  stage.type("abcdefg8!");
  stage.tabTo("Confirm Password");
  stage.type("a");
  EXPECT_TRUE(stage.shows("Passwords do not match"));
  stage.press(Qt::Key_Return);
  stage.click("Create Account");
  EXPECT_EQ(http().count("POST", "/auth/register"), 0U);
}

TEST_F(Registration, its_button_and_escape_close_it) {
  stage.type("Ann");
  stage.click("Close");
  EXPECT_FALSE(login().showRegister());
  EXPECT_FALSE(stage.shows("Full Name"));
  EXPECT_EQ(stage.focusedName(), "Sign Up");

  stage.press(Qt::Key_Return);
  ASSERT_TRUE(stage.shows("Full Name"));
  EXPECT_EQ(form().name(), "");
  stage.tabTo("Close");
  stage.press(Qt::Key_Space);
  EXPECT_FALSE(login().showRegister());

  stage.press(Qt::Key_Return);
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(login().showRegister());
  EXPECT_FALSE(stage.shows("Full Name"));
  EXPECT_EQ(stage.focusedName(), "Sign Up");
}

struct Joining : ParentSignIn {
  Joining() {
    stage.tabTo("Join Existing Family");
    stage.press(Qt::Key_Return);
  }
  JoinFamilyView& join() { return stage.application.screen<JoinFamilyView>(); }
  QString code() { return stage.focused()->property("text").toString(); }
  int cursor() { return stage.focused()->property("cursorPosition").toInt(); }
};

TEST_F(Joining, letters_become_upper_case_and_the_cursor_keeps_its_place) {
  ASSERT_EQ(stage.focusedName(), "Invite Code");
  stage.type("ab1");
  EXPECT_EQ(code(), "AB1");
  EXPECT_EQ(cursor(), 3);
  stage.press(Qt::Key_Home);
  stage.press(Qt::Key_Right);
  stage.type("xy");
  EXPECT_EQ(code(), "AXYB1");
  EXPECT_EQ(cursor(), 3);
  stage.press(Qt::Key_Backspace);
  EXPECT_EQ(code(), "AXB1");
  EXPECT_EQ(cursor(), 2);
  EXPECT_EQ(join().inviteCode(), "AXB1");
}

TEST_F(Joining, a_short_code_is_not_sent_and_a_valid_one_continues) {
  stage.type("ab12c");
  stage.press(Qt::Key_Return);
  stage.click("Validate Code");
  EXPECT_EQ(http().count("GET", "/family/invite/AB12C"), 0U);

  http().answer("GET", "/family/invite/AB12CD", 200, R"({"valid":true,"family_name":"The Wells Family"})");
  stage.type("d");
  stage.press(Qt::Key_Return);
  EXPECT_TRUE(stage.shows("Create Your Account"));
  EXPECT_EQ(stage.focusedName(), "Your Name");
}

TEST_F(Joining, a_valid_code_leads_to_the_top_of_the_next_step) {
  stage.application.machine.http.answer(
      "GET", "/family/invite/AB12CD", 200,
      R"({"valid":true,"family_name":"The Wells Family","invited_by_name":"Ann Wells"})");
  stage.type("ab12cd");
  stage.click("Validate Code");
  stage.settle();
  ASSERT_TRUE(stage.shows("Valid Invitation"));
  const double bar = stage.control("Cancel")->mapToScene({0, stage.control("Cancel")->height()}).y();
  EXPECT_GT(stage.find("Valid Invitation")->mapToScene({0, 0}).y(), bar + 40);
}

TEST_F(Joining, cancel_and_escape_close_it) {
  stage.click("Cancel");
  EXPECT_FALSE(login().showJoinFamily());
  EXPECT_EQ(stage.focusedName(), "Join Existing Family");
  stage.press(Qt::Key_Return);
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(login().showJoinFamily());
  EXPECT_FALSE(stage.shows("Invite Code"));
}

}  // namespace
}  // namespace quillmar::ui
