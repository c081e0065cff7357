#include "family/join_family_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "client/network_error.h"
#include "identity/login_view.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

using Names = std::vector<std::string>;
using Kind = TransportError::Kind;

const std::string valid =
    R"({"valid":true,"family_name":"The Lees","invited_by_name":"Ann Lee","expires_at":"2016-10-09T22:31:00Z"})";
const std::string joined =
    R"({"message":"Welcome","token":"t1","parent_id":"p2","family_id":"f1","family_name":"The Lees",)"
    R"("role":"member"})";
const std::string codePath = "/family/invite/AB12CD";

struct Joining : testing::Test {
  Joining() { app.screen<LoginView>().joinFamily(); }

  JoinFamilyView& screen() { return app.screen<JoinFamilyView>(); }
  QRScannerView& scanner() { return app.screen<QRScannerView>(); }
  void scan(const std::string& text) {
    // A copy: the callback dismisses the scanner.
    const auto onScan = scanner().onScan;
    onScan(text);
  }
  void validate(const std::string& answer = valid, int status = 200) {
    app.machine.http.answer("GET", codePath, status, answer);
    screen().inviteCode = std::string("ab12cd");
    EXPECT_TRUE(screen().validateCode());
    app.settle();
  }
  void fill() {
    screen().displayName = std::string("Bob");
    screen().email = std::string("bob@example.com");
    screen().password = std::string("secret");
    screen().confirmPassword = std::string("secret");
  }
  void join() {
    EXPECT_TRUE(screen().join());
    app.settle();
  }
  std::size_t checks() { return app.machine.http.requests().size(); }

  TestApplication app{asParent()};
};

TEST_F(Joining, begins_at_the_code_and_sends_nothing) {
  EXPECT_EQ(screen().stage(), JoinFamilyStage::code);
  EXPECT_EQ(screen().inviteCode(), "");
  EXPECT_EQ(screen().validationResult(), std::nullopt);
  EXPECT_EQ(screen().warning(), std::nullopt);
  EXPECT_FALSE(screen().isValidating());
  EXPECT_FALSE(screen().isJoining());
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_FALSE(screen().showScanner());
  EXPECT_FALSE(screen().validateCode());
  EXPECT_FALSE(screen().changeCode());
  EXPECT_FALSE(screen().join());
  app.advance(std::chrono::hours(1));
  EXPECT_EQ(checks(), 0U);
}

TEST_F(Joining, typed_letters_are_shown_and_sent_in_upper_case) {
  validate();
  EXPECT_EQ(screen().inviteCode(), "AB12CD");
  EXPECT_EQ(app.machine.http.calls(), Names{"GET " + codePath});
  EXPECT_EQ(header(app.machine.http.requests().front(), "Authorization"), std::nullopt);
}

TEST_F(Joining, any_text_becomes_upper_case_and_is_otherwise_unchanged) {
  struct Row {
    std::string typed, shown;
  };
  for (const auto& row : std::vector<Row>{{" ab 12\n", " AB 12\n"},
                                          {"straße", "STRASSE"},
                                          {"ŉ", "ʼN"},
                                          {"👨‍👩‍👧é", "👨‍👩‍👧É"},
                                          {std::string(1'000'000, 'a'), std::string(1'000'000, 'A')}}) {
    screen().inviteCode = row.typed;
    EXPECT_EQ(screen().inviteCode(), row.shown);
  }
}

TEST_F(Joining, at_least_six_characters_can_be_checked) {
  struct Row {
    std::string code;
    bool enabled;
  };
  for (const auto& row : std::vector<Row>{{"", false},
                                          {"AB12C", false},
                                          {"👨‍👩‍👧👨‍👩‍👧👨‍👩‍👧", false},
                                          {"AB12CD", true},
                                          {"AB12CDE", true},
                                          {"ééééé", false},
                                          {"éééééé", true},
                                          {std::string(1'000'000, 'A'), true}}) {
    screen().inviteCode = row.code;
    EXPECT_EQ(screen().validateCode.isEnabled(), row.enabled) << row.code.substr(0, 20);
  }
}

TEST_F(Joining, a_pasted_code_is_not_trimmed_and_its_failure_is_a_warning) {
  screen().inviteCode = std::string(" ab12cd ");
  screen().validateCode();
  app.settle();
  EXPECT_EQ(screen().stage(), JoinFamilyStage::code);
  EXPECT_EQ(screen().warning(), NetworkError::invalidResponse().localizedDescription());
  EXPECT_EQ(screen().inviteCode(), " AB12CD ");
  EXPECT_FALSE(screen().errorAlert.isShown());
}

TEST_F(Joining, a_huge_code_is_sent_to_the_service) {
  const std::string code(1'000'000, 'A');
  app.machine.http.answer("GET", "/family/invite/" + code, 200, R"({"valid":false})");
  screen().inviteCode = code;
  screen().validateCode();
  app.settle();
  EXPECT_EQ(screen().warning(), "Invalid invite code");
}

TEST_F(Joining, during_a_check_there_is_no_second_check_and_no_old_result) {
  validate(R"({"valid":false,"error":"Expired"})");
  EXPECT_EQ(screen().warning(), "Expired");
  app.machine.http.hold();
  screen().validateCode();
  EXPECT_TRUE(screen().isValidating());
  EXPECT_EQ(screen().validationResult(), std::nullopt);
  EXPECT_EQ(screen().warning(), std::nullopt);
  EXPECT_FALSE(screen().validateCode());
  app.settle();
  EXPECT_EQ(checks(), 2U);
  app.machine.http.complete(0, httpAnswer(200, valid));
  app.settle();
  EXPECT_FALSE(screen().isValidating());
  EXPECT_EQ(screen().stage(), JoinFamilyStage::account);
}

TEST_F(Joining, typing_keeps_the_warning_of_the_last_check) {
  validate(R"({"valid":false,"error":"Expired"})");
  screen().inviteCode = std::string("zz");
  EXPECT_EQ(screen().warning(), "Expired");
}

TEST_F(Joining, an_invalid_code_shows_the_reason) {
  validate(R"({"valid":false,"error":"This invite has expired"})");
  EXPECT_EQ(screen().stage(), JoinFamilyStage::code);
  EXPECT_EQ(screen().warning(), "This invite has expired");
  validate(R"({"valid":false})");
  EXPECT_EQ(screen().warning(), "Invalid invite code");
  validate(R"({"valid":false,"error":""})");
  EXPECT_EQ(screen().warning(), "");
  EXPECT_EQ(screen().familyLine(), std::nullopt);
  EXPECT_FALSE(screen().errorAlert.isShown());
}

TEST_F(Joining, a_failed_check_is_shown_like_an_invalid_code_without_an_alert) {
  app.machine.http.fail("GET", codePath, Kind::notConnectedToInternet);
  screen().inviteCode = std::string("AB12CD");
  screen().validateCode();
  app.settle();
  EXPECT_EQ(screen().stage(), JoinFamilyStage::code);
  EXPECT_FALSE(screen().isValidating());
  EXPECT_EQ(screen().warning(), "The Internet connection appears to be offline.");
  ValidateInviteResponse failure;
  failure.error = "The Internet connection appears to be offline.";
  EXPECT_EQ(screen().validationResult(), failure);
  EXPECT_FALSE(screen().errorAlert.isShown());
  validate("<html>", 502);
  EXPECT_EQ(screen().warning(), "The data couldn’t be read because it isn’t in the correct format.");
}

TEST_F(Joining, a_valid_code_shows_the_family_and_the_inviter) {
  validate();
  EXPECT_EQ(screen().stage(), JoinFamilyStage::account);
  EXPECT_EQ(screen().warning(), std::nullopt);
  EXPECT_EQ(screen().familyLine(), "Join: The Lees");
  EXPECT_EQ(screen().inviterLine(), "Invited by: Ann Lee");
  EXPECT_FALSE(screen().validateCode());
  EXPECT_FALSE(screen().scanQRCode());
}

TEST_F(Joining, lines_without_a_value_from_the_service_are_hidden) {
  validate(R"({"valid":true})");
  EXPECT_EQ(screen().stage(), JoinFamilyStage::account);
  EXPECT_EQ(screen().familyLine(), std::nullopt);
  EXPECT_EQ(screen().inviterLine(), std::nullopt);
}

TEST_F(Joining, changing_the_code_empties_it_and_keeps_the_account_fields) {
  validate();
  fill();
  screen().changeCode();
  EXPECT_EQ(screen().stage(), JoinFamilyStage::code);
  EXPECT_EQ(screen().validationResult(), std::nullopt);
  EXPECT_EQ(screen().inviteCode(), "");
  EXPECT_EQ(screen().displayName(), "Bob");
  EXPECT_EQ(screen().email(), "bob@example.com");
  EXPECT_EQ(screen().password(), "secret");
  EXPECT_EQ(screen().confirmPassword(), "secret");
}

TEST_F(Joining, each_rule_alone_disables_the_button) {
  fill();
  EXPECT_FALSE(screen().canJoin()) << "no code was checked";
  validate();
  EXPECT_TRUE(screen().join.isEnabled());
  struct Row {
    Member& field;
    std::string bad;
  };
  for (const auto& row : std::vector<Row>{{screen().displayName, ""},
                                          {screen().email, ""},
                                          {screen().password, "secre"},
                                          {screen().confirmPassword, "Secret"},
                                          {screen().confirmPassword, ""}}) {
    const Value good = row.field.value();
    EXPECT_TRUE(row.field.input(row.bad));
    EXPECT_FALSE(screen().canJoin()) << row.field.name() << ": " << row.bad;
    EXPECT_FALSE(screen().join());
    EXPECT_TRUE(row.field.input(good));
  }
  screen().email = std::string("no at sign");
  screen().displayName = std::string("👨‍👩‍👧👨‍👩‍👧👨‍👩‍👧");
  EXPECT_TRUE(screen().canJoin());
}

TEST_F(Joining, a_five_character_password_is_too_short_however_many_bytes_it_has) {
  fill();
  validate();
  const std::string five = "👨‍👩‍👧👨‍👩‍👧👨‍👩‍👧éé";
  screen().password = five;
  screen().confirmPassword = five;
  EXPECT_FALSE(screen().canJoin());
  screen().password = five + "!";
  screen().confirmPassword = five + "!";
  EXPECT_TRUE(screen().canJoin());
}

TEST_F(Joining, the_line_under_the_passwords_says_whether_they_match) {
  screen().password = std::string("secret");
  EXPECT_FALSE(screen().showsPasswordMatch());
  screen().confirmPassword = std::string("s");
  EXPECT_TRUE(screen().showsPasswordMatch());
  EXPECT_EQ(screen().passwordMatchText(), "Passwords don't match");
  EXPECT_EQ(screen().passwordMatchIcon(), "xmark.circle.fill");
  EXPECT_EQ(screen().passwordMatchColor(), "brandRed");
  screen().confirmPassword = std::string("secret");
  EXPECT_EQ(screen().passwordMatchText(), "Passwords match");
  EXPECT_EQ(screen().passwordMatchIcon(), "checkmark.circle.fill");
  EXPECT_EQ(screen().passwordMatchColor(), "brandGreen");
}

TEST_F(Joining, a_join_sends_the_input_and_signs_in) {
  validate();
  fill();
  screen().displayName = std::string(" Bob ");
  app.machine.http.answer("POST", "/family/join", 200, joined);
  join();
  const auto request = app.machine.http.requests("POST", "/family/join").front();
  EXPECT_EQ(
      *request.body,
      R"({"invite_code":"AB12CD","email":"bob@example.com","password":"secret","display_name":" Bob "})");
  EXPECT_EQ(header(request, "Authorization"), std::nullopt);
  const auto& session = *app.environment().authState();
  EXPECT_TRUE(session.isLoggedIn());
  EXPECT_EQ(session.parentId(), "p2");
  EXPECT_EQ(session.email(), "bob@example.com");
  EXPECT_EQ(session.name(), " Bob ");
  EXPECT_EQ(session.familyId(), "");
  EXPECT_EQ(app.machine.settings.string(settings::authToken), "t1");
  EXPECT_EQ(app.machine.settings.object(settings::authTokenTimestamp), std::nullopt);
  EXPECT_EQ(app.screenNames().front(), "DeviceListView");
  EXPECT_EQ(app.find<JoinFamilyView>(), nullptr);
  EXPECT_TRUE(app.machine.secureItems.items().empty());
}

TEST_F(Joining, after_a_join_the_next_token_check_refreshes) {
  validate();
  fill();
  app.machine.http.answer("POST", "/family/join", 200, joined);
  join();
  EXPECT_EQ(app.machine.http.count("POST", "/auth/refresh"), 0U);
  app.app().setScenePhase(ScenePhase::active);
  app.settle();
  EXPECT_EQ(app.machine.http.count("POST", "/auth/refresh"), 1U);
}

TEST_F(Joining, the_session_is_open_before_the_sheet_is_dismissed) {
  Names steps;
  const auto session = app.environment().authState()->isLoggedIn.onChange([&] {
    EXPECT_TRUE(app.find<LoginView>()->showJoinFamily());
    steps.emplace_back("session");
  });
  const auto login = app.find<LoginView>();
  const auto sheet = login->observe([&](const Member& member) {
    if (member.name() == "showJoinFamily") {
      steps.emplace_back("gone");
    }
  });
  validate();
  fill();
  app.machine.http.answer("POST", "/family/join", 200, joined);
  join();
  EXPECT_EQ(steps, (Names{"session", "gone"}));
}

TEST_F(Joining, a_refusal_shows_its_message_and_keeps_the_form) {
  struct Row {
    int status;
    std::string body;
    std::string message;
  };
  validate();
  fill();
  for (const auto& row :
       std::vector<Row>{{409, R"({"error":"x"})", "Email already registered"},
                        {400, R"({"error":"Invite used up"})", "Invite used up"},
                        {500, "<html>", "Failed to join family"},
                        {200, "[]", "The data couldn’t be read because it isn’t in the correct format."}}) {
    app.machine.http.answer("POST", "/family/join", row.status, row.body);
    join();
    EXPECT_FALSE(screen().isJoining());
    EXPECT_TRUE(screen().errorAlert.isShown());
    EXPECT_EQ(screen().errorAlert.message(), row.message);
    EXPECT_EQ(screen().stage(), JoinFamilyStage::account);
    EXPECT_EQ(screen().password(), "secret");
    EXPECT_FALSE(app.environment().authState()->isLoggedIn());
    EXPECT_TRUE(screen().errorAlert.dismiss());
    EXPECT_FALSE(screen().errorAlert.isShown());
  }
}

TEST_F(Joining, only_one_join_runs_at_a_time) {
  validate();
  fill();
  app.machine.http.hold();
  join();
  EXPECT_TRUE(screen().isJoining());
  EXPECT_FALSE(screen().join());
  app.settle();
  EXPECT_EQ(app.machine.http.count("POST", "/family/join"), 1U);
}

TEST_F(Joining, cancel_dismisses_the_sheet_and_a_late_answer_is_dropped) {
  validate();
  fill();
  app.machine.http.hold();
  join();
  screen().cancel();
  EXPECT_EQ(app.screenNames(), Names{"LoginView"});
  app.machine.http.complete(0, httpAnswer(200, joined));
  app.settle();
  EXPECT_FALSE(app.environment().authState()->isLoggedIn());
}

TEST_F(Joining, the_scanner_opens_and_is_dismissed_by_cancel) {
  screen().scanQRCode();
  EXPECT_EQ(app.screenNames(), (Names{"LoginView", "JoinFamilyView", "QRScannerView"}));
  app.advance(std::chrono::minutes(1));
  EXPECT_TRUE(app.find<QRScannerView>()) << "nothing is ever scanned";
  scanner().cancel();
  EXPECT_FALSE(screen().showScanner());
  EXPECT_EQ(screen().inviteCode(), "");
}

TEST_F(Joining, a_scanned_invitation_is_checked_at_once) {
  app.machine.http.answer("GET", codePath, 200, valid);
  screen().scanQRCode();
  scan("https://quillmar.example/join?code=ab12cd&x=1");
  EXPECT_FALSE(screen().showScanner());
  EXPECT_EQ(screen().inviteCode(), "AB12CD");
  app.settle();
  EXPECT_EQ(screen().stage(), JoinFamilyStage::account);
}

TEST_F(Joining, an_unrelated_scan_only_closes_the_scanner) {
  screen().inviteCode = std::string("TYPED");
  for (const std::string& text : {std::string("hello there"), std::string(), std::string(1'000'000, 'x')}) {
    screen().scanQRCode();
    scan(text);
    EXPECT_FALSE(screen().showScanner());
    EXPECT_EQ(screen().inviteCode(), "TYPED");
  }
  app.settle();
  EXPECT_EQ(checks(), 0U);
}

TEST_F(Joining, a_scanned_code_that_is_too_short_is_filled_in_and_not_checked) {
  for (const std::string code : {"", "AB"}) {
    screen().inviteCode = std::string("TYPED");
    screen().scanQRCode();
    scan("code=" + code);
    EXPECT_EQ(screen().inviteCode(), code);
  }
  app.settle();
  EXPECT_EQ(checks(), 0U);
}

TEST_F(Joining, a_scan_after_the_screen_is_destroyed_does_nothing) {
  screen().scanQRCode();
  const auto onScan = scanner().onScan;
  screen().cancel();
  onScan("code=AB12CD");
  app.settle();
  EXPECT_EQ(checks(), 0U);
}

TEST(JoiningByCode, a_given_code_becomes_upper_case_and_is_checked_on_appearing) {
  TestApplication app{asParent()};
  app.machine.http.answer("GET", codePath, 200, valid);
  const auto screen = std::make_shared<JoinFamilyView>(app.environment(), "ab12cd");
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty());
  screen->appear();
  EXPECT_EQ(screen->inviteCode(), "AB12CD");
  EXPECT_TRUE(screen->isValidating());
  app.settle();
  EXPECT_EQ(screen->stage(), JoinFamilyStage::account);
  EXPECT_EQ(screen->initialInviteCode, "ab12cd");
}

TEST(JoiningByCode, a_given_code_that_is_too_short_is_only_shown) {
  TestApplication app{asParent()};
  const auto screen = std::make_shared<JoinFamilyView>(app.environment(), "ab12c");
  screen->appear();
  app.settle();
  EXPECT_EQ(screen->inviteCode(), "AB12C");
  EXPECT_FALSE(screen->isValidating());
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(Joining, the_texts_are_exact) {
  const auto& texts = screen();
  EXPECT_EQ(texts.title(), "Join Family");
  EXPECT_EQ(texts.cancelTitle(), "Cancel");
  EXPECT_EQ(texts.heading(), "Join a Family");
  EXPECT_EQ(texts.explanation(), "Enter an invite code or scan a QR code from the primary parent");
  EXPECT_EQ(texts.inviteCodeTitle(), "Invite Code");
  EXPECT_EQ(texts.inviteCodePlaceholder(), "Enter 6-character code");
  EXPECT_EQ(texts.validateTitle(), "Validate Code");
  EXPECT_EQ(texts.orText(), "or");
  EXPECT_EQ(texts.scanTitle(), "Scan QR Code");
  EXPECT_EQ(texts.validTitle(), "Valid Invitation");
  EXPECT_EQ(texts.changeTitle(), "Change");
  EXPECT_EQ(texts.accountHeading(), "Create Your Account");
  EXPECT_EQ(texts.displayNameTitle(), "Your Name");
  EXPECT_EQ(texts.displayNamePlaceholder(), "How should we display you?");
  EXPECT_EQ(texts.emailTitle(), "Email");
  EXPECT_EQ(texts.passwordTitle(), "Password");
  EXPECT_EQ(texts.passwordPlaceholder(), "At least 6 characters");
  EXPECT_EQ(texts.confirmPasswordTitle(), "Confirm Password");
  EXPECT_EQ(texts.confirmPasswordPlaceholder(), "Re-enter password");
  EXPECT_EQ(texts.joinTitle(), "Join Family");
  screen().scanQRCode();
  EXPECT_EQ(scanner().title(), "Scan QR Code");
  EXPECT_EQ(scanner().cancelTitle(), "Cancel");
  EXPECT_EQ(scanner().panelTitle(), "QR Scanner");
  EXPECT_EQ(scanner().panelText(), "Point your camera at the QR code from the primary parent");
  EXPECT_EQ(scanner().manualText(), "Or enter the code manually");
}

}  // namespace
}  // namespace quillmar
