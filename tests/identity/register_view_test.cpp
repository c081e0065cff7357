#include "identity/register_view.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/session/role_manager.h"
#include "client/network_error.h"
#include "identity/login_view.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

using Names = std::vector<std::string>;

const std::string registered =
    R"({"token":"t1","parent_id":"p1","email":"service@example.com","name":"Ann Lee"})";

struct Registration : testing::Test {
  Registration() { app.screen<LoginView>().signUp(); }

  RegisterView& screen() { return app.screen<RegisterView>(); }
  void fill() {
    screen().name = std::string("Ann Lee");
    screen().email = std::string("ann@example.com");
    screen().phone = std::string("+61 412 345 678");
    screen().password = std::string("secret");
    screen().confirmPassword = std::string("secret");
  }
  void create() {
    EXPECT_TRUE(screen().createAccount());
    app.settle();
  }
  void answer(int status, const std::string& body) {
    app.machine.http.answer("POST", "/auth/register", status, body);
  }
  std::size_t registrations() { return app.machine.http.count("POST", "/auth/register"); }
  std::string sentBody() { return *app.machine.http.requests("POST", "/auth/register").back().body; }

  TestApplication app{asParent()};
};

TEST_F(Registration, begins_empty_with_the_button_disabled) {
  for (const Member* field : std::initializer_list<const Member*>{
           &screen().name, &screen().email, &screen().phone, &screen().password, &screen().confirmPassword}) {
    EXPECT_EQ(field->value(), Value("")) << field->name();
  }
  EXPECT_FALSE(screen().isLoading());
  EXPECT_FALSE(screen().errorAlert.isShown());
  EXPECT_FALSE(screen().showsStrength());
  EXPECT_FALSE(screen().showsMismatch());
  EXPECT_FALSE(screen().createAccount());
  app.settle();
  EXPECT_EQ(registrations(), 0U);
}

TEST_F(Registration, the_entry_animation_runs_from_its_beginning_to_rest) {
  const RegisterView unseen(app.environment());
  EXPECT_EQ(unseen.headerOpacity(), 0.0);
  EXPECT_EQ(unseen.formOpacity(), 0.0);
  EXPECT_EQ(unseen.formOffset(), 30.0);
  EXPECT_EQ(screen().headerOpacity(), 1.0);
  EXPECT_EQ(screen().formOpacity(), 1.0);
  EXPECT_EQ(screen().formOffset(), 0.0);
}

TEST_F(Registration, each_rule_alone_disables_the_button) {
  fill();
  EXPECT_TRUE(screen().createAccount.isEnabled());
  struct Row {
    Member& field;
    std::string bad;
  };
  for (const auto& row :
       std::vector<Row>{{screen().name, ""},
                        {screen().email, ""},
                        {screen().email, "ann.example.com"},
                        {screen().phone, ""},
                        {screen().phone, "041234567"},
                        {screen().phone, "👨‍👩‍👧👨‍👩‍👧👨‍👩‍👧"},
                        {screen().password, "secre"},
                        {screen().confirmPassword, ""},
                        {screen().confirmPassword, "Secret"},
                        {screen().confirmPassword, "secret "}}) {
    const Value good = row.field.value();
    EXPECT_TRUE(row.field.input(row.bad));
    EXPECT_FALSE(screen().isFormValid()) << row.field.name() << ": " << row.bad;
    EXPECT_FALSE(screen().createAccount.isEnabled());
    EXPECT_TRUE(row.field.input(good));
  }
  EXPECT_TRUE(screen().isFormValid());
}

TEST_F(Registration, any_ten_characters_are_a_phone_number_and_blanks_a_name) {
  fill();
  for (const std::string phone : {"0123456789", "+ + + + + ", "callmelater"}) {
    screen().phone = phone;
    EXPECT_TRUE(screen().isFormValid()) << phone;
  }
  screen().name = std::string(" ");
  screen().email = std::string("@");
  EXPECT_TRUE(screen().isFormValid());
}

TEST_F(Registration, a_five_character_password_is_too_short_however_strong) {
  fill();
  screen().password = std::string("ab1!c");
  screen().confirmPassword = std::string("ab1!c");
  EXPECT_EQ(screen().strengthLabel(), "Fair");
  EXPECT_FALSE(screen().createAccount.isEnabled());
}

TEST_F(Registration, the_meter_counts_four_points) {
  struct Row {
    std::string password;
    int strength;
    std::string label, color;
  };
  for (const auto& row :
       std::vector<Row>{{"a", 0, "Weak", "brandRed"},
                        {"abcdef", 1, "Weak", "brandRed"},
                        {"abc1", 1, "Weak", "brandRed"},
                        {"a1!", 2, "Fair", "brandOrange"},
                        {"abcdefg", 1, "Weak", "brandRed"},
                        {"abcdefgh", 2, "Fair", "brandOrange"},
                        {"abcdefg1", 3, "Good", "systemOrange"},
                        {"abcdefg-", 3, "Good", "systemOrange"},
                        {"abcdefg+", 3, "Good", "systemOrange"},
                        {"abcdef1!", 4, "Strong", "brandGreen"},
                        {"٣abcdef€", 4, "Strong", "brandGreen"},
                        {"abcdefg ", 2, "Fair", "brandOrange"},
                        {"éèàùçêîô", 2, "Fair", "brandOrange"},
                        // Three emoji families: one character each, all symbols.
                        {"👨‍👩‍👧👨‍👩‍👧👨‍👩‍👧", 1, "Weak", "brandRed"}}) {
    screen().password = row.password;
    EXPECT_TRUE(screen().showsStrength());
    EXPECT_EQ(screen().strength(), row.strength) << row.password;
    EXPECT_EQ(screen().strengthLabel(), row.label) << row.password;
    EXPECT_EQ(screen().strengthColor(), row.color) << row.password;
  }
}

TEST_F(Registration, one_bar_is_coloured_per_point) {
  const std::vector<std::string> passwords{"a", "abcdef", "abcdefgh", "abcdefg1", "abcdef1!"};
  for (std::size_t points = 0; points < passwords.size(); ++points) {
    screen().password = passwords[points];
    const auto bars = screen().strengthBars();
    ASSERT_EQ(bars.size(), 4U);
    for (std::size_t i = 0; i < bars.size(); ++i) {
      const StrengthBar grey{"statusOffline", 0.3};
      EXPECT_EQ(bars[i], i < points ? (StrengthBar{screen().strengthColor(), 1.0}) : grey);
    }
  }
}

TEST_F(Registration, a_mismatch_is_shown_only_after_something_was_repeated) {
  screen().password = std::string("secret");
  EXPECT_FALSE(screen().showsMismatch());
  screen().confirmPassword = std::string("s");
  EXPECT_TRUE(screen().showsMismatch());
  screen().confirmPassword = std::string("secret");
  EXPECT_FALSE(screen().showsMismatch());
  screen().password = std::string();
  EXPECT_TRUE(screen().showsMismatch());
}

TEST_F(Registration, sends_the_input_with_the_region) {
  fill();
  screen().name = std::string(" Ann ");
  answer(200, registered);
  create();
  EXPECT_EQ(sentBody(), R"({"email":"ann@example.com","password":"secret","phone":"+61 412 345 678",)"
                        R"("name":" Ann ","region":"australia"})");
}

TEST_F(Registration, every_region_is_sent_by_its_raw_value) {
  fill();
  const std::vector<std::pair<Region, std::string>> words{
      {Region::australia, "australia"}, {Region::newzealand, "newzealand"}, {Region::singapore, "singapore"}};
  for (const auto& [region, word] : words) {
    app.environment().roleManager()->selectedRegion = region;
    create();
    EXPECT_TRUE(sentBody().ends_with(R"("region":")" + word + R"("})")) << sentBody();
  }
  app.environment().roleManager()->selectedRegion = std::nullopt;
  create();
  EXPECT_EQ(sentBody().find("region"), std::string::npos);
}

TEST_F(Registration, a_success_signs_in_and_shows_the_dashboard_without_saving_a_login) {
  fill();
  answer(200, registered);
  create();
  EXPECT_TRUE(app.environment().authState()->isLoggedIn());
  EXPECT_EQ(app.environment().authState()->email(), "service@example.com");
  EXPECT_TRUE(app.environment().authState()->tokenSavedAt().has_value());
  EXPECT_EQ(app.screenNames().front(), "DeviceListView");
  EXPECT_EQ(app.find<RegisterView>(), nullptr);
  EXPECT_TRUE(app.machine.secureItems.items().empty());
}

TEST_F(Registration, the_session_is_open_before_the_sheet_is_dismissed) {
  Names steps;
  const auto session = app.environment().authState()->isLoggedIn.onChange([&] {
    EXPECT_TRUE(app.find<LoginView>()->showRegister());
    steps.emplace_back("session");
  });
  const auto login = app.find<LoginView>();
  const auto sheet = login->observe([&](const Member& member) {
    if (member.name() == "showRegister") {
      steps.emplace_back("gone");
    }
  });
  fill();
  answer(200, registered);
  create();
  EXPECT_EQ(steps, (Names{"session", "gone"}));
}

TEST_F(Registration, a_refusal_shows_its_message_and_keeps_the_form) {
  struct Row {
    int status;
    std::string body;
    std::string message;
  };
  fill();
  for (const auto& row :
       std::vector<Row>{{409, R"({"error":"Email already registered"})", "Email already registered"},
                        {500, "<html>", "Unknown error"},
                        {200, "", "The data couldn’t be read because it isn’t in the correct format."}}) {
    answer(row.status, row.body);
    screen().errorAlert.message = std::string("before");
    create();
    EXPECT_FALSE(screen().isLoading());
    EXPECT_TRUE(screen().errorAlert.isShown());
    EXPECT_EQ(screen().errorAlert.message(), row.message) << row.body;
    EXPECT_EQ(screen().name(), "Ann Lee");
    EXPECT_EQ(screen().password(), "secret");
    EXPECT_EQ(screen().confirmPassword(), "secret");
    EXPECT_FALSE(app.environment().authState()->isLoggedIn());
    EXPECT_TRUE(screen().errorAlert.dismiss());
    EXPECT_FALSE(screen().errorAlert.isShown());
  }
}

TEST_F(Registration, without_a_stored_region_the_clients_error_is_shown) {
  fill();
  app.machine.settings.remove(settings::region);
  create();
  EXPECT_EQ(registrations(), 0U);
  EXPECT_TRUE(screen().errorAlert.isShown());
  EXPECT_EQ(screen().errorAlert.message(), NetworkError::noRegionConfigured().localizedDescription());
}

TEST_F(Registration, only_one_registration_runs_at_a_time) {
  app.machine.http.hold();
  fill();
  screen().errorAlert.message = std::string("before");
  create();
  EXPECT_TRUE(screen().isLoading());
  EXPECT_EQ(screen().errorAlert.message(), "");
  EXPECT_FALSE(screen().createAccount());
  app.settle();
  EXPECT_EQ(registrations(), 1U);
}

TEST_F(Registration, an_answer_after_the_sheet_was_dismissed_is_dropped) {
  app.machine.http.hold();
  fill();
  answer(200, registered);
  create();
  app.screen<LoginView>().showRegister = false;
  app.machine.http.releaseAll();
  app.settle();
  EXPECT_FALSE(app.environment().authState()->isLoggedIn());
  EXPECT_EQ(app.screenNames(), Names{"LoginView"});
}

TEST_F(Registration, the_texts_are_exact) {
  const auto& texts = screen();
  EXPECT_EQ(texts.title(), "Create Account");
  EXPECT_EQ(texts.subtitle(), "Start protecting your family today");
  EXPECT_EQ(texts.nameTitle(), "Full Name");
  EXPECT_EQ(texts.namePlaceholder(), "Enter your name");
  EXPECT_EQ(texts.emailTitle(), "Email Address");
  EXPECT_EQ(texts.phoneTitle(), "Phone Number");
  EXPECT_EQ(texts.phonePlaceholder(), "+61 412 345 678");
  EXPECT_EQ(texts.phoneHint(), "Used for account recovery");
  EXPECT_EQ(texts.passwordTitle(), "Password");
  EXPECT_EQ(texts.passwordPlaceholder(), "At least 6 characters");
  EXPECT_EQ(texts.confirmPasswordTitle(), "Confirm Password");
  EXPECT_EQ(texts.confirmPasswordPlaceholder(), "Re-enter your password");
  EXPECT_EQ(texts.mismatchText(), "Passwords do not match");
  EXPECT_EQ(texts.createAccountTitle(), "Create Account");
  EXPECT_EQ(texts.termsText(),
            "By creating an account, you agree to our Terms of Service and Privacy Policy");
}

}  // namespace
}  // namespace quillmar
