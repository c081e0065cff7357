#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/session/environment.h"
#include "client/records/account.h"
#include "foundation/record.h"
#include "foundation/result.h"
#include "foundation/secret.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

struct StrengthBar {
  std::string color;
  double opacity = 1;
};

template <>
inline constexpr auto wire<StrengthBar> = record(required("color", &StrengthBar::color),
                                                 required("opacity", &StrengthBar::opacity));

// From 0 to 4: one point each for 6 characters, 8 characters, a digit, and a symbol or punctuation mark.
int passwordStrength(std::string_view password);

// Registers a parent, which also signs in. The login is not remembered.
class RegisterView final : public ScreenModel {
 public:
  explicit RegisterView(Environment& environment);

  Input<std::string> name{*this, "name"};
  Input<std::string> email{*this, "email"};
  Input<std::string> phone{*this, "phone"};
  Input<Secret> password{*this, "password"};
  Input<Secret> confirmPassword{*this, "confirmPassword"};
  Published<bool> isLoading{*this, "isLoading", false};
  ErrorAlert errorAlert{*this};
  // The entry animation.
  Published<double> headerOpacity{*this, "headerOpacity", 0.0};
  Derived<double> headerOffset{*this, "headerOffset",
                               [this] { return (1.0 - headerOpacity()) * entryOffset; }};
  Published<double> formOpacity{*this, "formOpacity", 0.0};
  Published<double> formOffset{*this, "formOffset", entryOffset};

  Derived<bool> isFormValid{*this, "isFormValid", [this] { return computeIsFormValid(); }};
  Derived<int> strength{*this, "strength", [this] { return passwordStrength(password().text()); }};
  Derived<bool> showsStrength{*this, "showsStrength", [this] { return !password().empty(); }};
  Derived<std::string> strengthLabel{*this, "strengthLabel", [this] { return computeStrengthLabel(); }};
  Derived<std::string> strengthColor{*this, "strengthColor", [this] { return computeStrengthColor(); }};
  Derived<std::vector<StrengthBar>> strengthBars{*this, "strengthBars",
                                                 [this] { return computeStrengthBars(); }};
  Derived<bool> showsMismatch{*this, "showsMismatch", [this] {
                                return !confirmPassword().empty() && confirmPassword() != password();
                              }};

  Text title{*this, "title", "Create Account"};
  Text subtitle{*this, "subtitle", "Start protecting your family today"};
  Text nameTitle{*this, "nameTitle", "Full Name"};
  Text namePlaceholder{*this, "namePlaceholder", "Enter your name"};
  Text emailTitle{*this, "emailTitle", "Email Address"};
  Text emailPlaceholder{*this, "emailPlaceholder", "name@example.com"};
  Text phoneTitle{*this, "phoneTitle", "Phone Number"};
  Text phonePlaceholder{*this, "phonePlaceholder", "+61 412 345 678"};
  Text phoneHint{*this, "phoneHint", "Used for account recovery"};
  Text passwordTitle{*this, "passwordTitle", "Password"};
  Text passwordPlaceholder{*this, "passwordPlaceholder", "At least 6 characters"};
  Text confirmPasswordTitle{*this, "confirmPasswordTitle", "Confirm Password"};
  Text confirmPasswordPlaceholder{*this, "confirmPasswordPlaceholder", "Re-enter your password"};
  Text mismatchIcon{*this, "mismatchIcon", "exclamationmark.triangle.fill"};
  Text mismatchText{*this, "mismatchText", "Passwords do not match"};
  Text createAccountTitle{*this, "createAccountTitle", "Create Account"};
  Text termsText{*this, "termsText",
                 "By creating an account, you agree to our Terms of Service and Privacy Policy"};

  Action<> close{*this, "close", [this] { dismiss(); }};
  Action<> createAccount{*this, "createAccount", [this] { startRegistration(); },
                         [this] { return isFormValid() && !isLoading(); }};
  KeyCommands keys{*this, {{Command::back, close}}};

 private:
  static constexpr double entryOffset = 30;

  void onAppear() override;
  bool computeIsFormValid() const;
  std::string computeStrengthLabel() const;
  std::string computeStrengthColor() const;
  std::vector<StrengthBar> computeStrengthBars() const;
  RegisterRequest account() const;
  void startRegistration();
  void handleRegistration(const Result<AuthResponse>& result);

  Environment& environment_;
};

}  // namespace quillmar
