#pragma once

#include <functional>
#include <memory>
#include <string>

#include "app/session/environment.h"
#include "client/records/account.h"
#include "foundation/result.h"
#include "foundation/secret.h"
#include "identity/auth_state.h"
#include "identity/biometric_auth_manager.h"
#include "identity/keychain_service.h"
#include "identity/register_view.h"
#include "presentation/error_alert.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

// The sign-in screen of a parent. It does not navigate: the root screen follows the session.
class LoginView final : public ScreenModel {
 public:
  // Injected, since the screen for joining a family is in another folder.
  using MakeJoinFamily = std::function<std::shared_ptr<ScreenModel>()>;

  LoginView(Environment& environment, MakeJoinFamily makeJoinFamily);

  Input<std::string> email{*this, "email"};
  Input<Secret> password{*this, "password"};
  Published<bool> isLoading{*this, "isLoading", false};
  ErrorAlert errorAlert{*this};
  Sheet<RegisterView> showRegister{*this, "showRegister",
                                   [this] { return std::make_shared<RegisterView>(environment_); }};
  Sheet<ScreenModel> showJoinFamily{*this, "showJoinFamily", [this] { return makeJoinFamily_(); }};
  // Stored values change only at the next sign-in by password.
  Input<bool> rememberMe{*this, "rememberMe", false};
  Published<bool> hasSavedCredentials{*this, "hasSavedCredentials", false};
  // The entry animation.
  Published<double> logoScale{*this, "logoScale", 0.5};
  Published<double> logoOpacity{*this, "logoOpacity", 0.0};
  Published<double> formOpacity{*this, "formOpacity", 0.0};
  Published<double> formOffset{*this, "formOffset", 30.0};

  Derived<bool> isFormValid{*this, "isFormValid", [this] { return computeIsFormValid(); }};
  Derived<bool> showsBiometricButton{*this, "showsBiometricButton", [this] {
                                       return hasSavedCredentials() && biometrics_->isBiometricAvailable();
                                     }};
  Derived<std::string> biometricTitle{*this, "biometricTitle", [this] { return computeBiometricTitle(); }};
  Derived<std::string> biometricIcon{*this, "biometricIcon", [this] {
                                       const bool isFace =
                                           biometrics_->biometricType() == BiometricType::faceID;
                                       return std::string(isFace ? "faceid" : "touchid");
                                     }};

  Text logo{*this, "logo", "QuillmarLogo"};
  Text title{*this, "title", "Quillmar"};
  Text subtitle{*this, "subtitle", "Parent Dashboard"};
  Text tagline{*this, "tagline", "Protect your family's digital life"};
  Text emailTitle{*this, "emailTitle", "Email"};
  Text emailPlaceholder{*this, "emailPlaceholder", "name@example.com"};
  Text passwordTitle{*this, "passwordTitle", "Password"};
  Text passwordPlaceholder{*this, "passwordPlaceholder", "Enter your password"};
  Text rememberMeTitle{*this, "rememberMeTitle", "Remember me"};
  Text signInTitle{*this, "signInTitle", "Sign In"};
  Text orText{*this, "orText", "or"};
  Text signUpQuestion{*this, "signUpQuestion", "Don't have an account?"};
  Text signUpTitle{*this, "signUpTitle", "Sign Up"};
  Text joinFamilyQuestion{*this, "joinFamilyQuestion", "Have an invite code from another parent?"};
  Text joinFamilyTitle{*this, "joinFamilyTitle", "Join Existing Family"};

  Action<> signIn{*this, "signIn", [this] { startSignIn(); },
                  [this] { return isFormValid() && !isLoading(); }};
  Action<> signInWithBiometrics{*this, "signInWithBiometrics", [this] { startBiometricSignIn(); },
                                [this] { return showsBiometricButton() && !isLoading(); }};
  Action<> signUp{*this, "signUp", [this] { showRegister = true; }};
  KeyCommands keys{*this, {}};
  Action<> joinFamily{*this, "joinFamily", [this] { showJoinFamily = true; }};

 private:
  void onAppear() override;
  void playEntryAnimation();
  void recallSavedLogin();
  bool computeIsFormValid() const;
  std::string computeBiometricTitle() const;

  void beginSignIn();
  void startSignIn();
  void handleSignIn(const Result<AuthResponse>& result);
  void rememberOrForget();
  void startBiometricSignIn();
  void handleCredentials(const Result<SavedCredentials>& credentials);
  void openSession(const Result<AuthResponse>& result);

  Environment& environment_;
  const MakeJoinFamily makeJoinFamily_;
  Dispatch& dispatch_;
  const std::shared_ptr<KeychainService> keychain_;
  const std::shared_ptr<BiometricAuthManager> biometrics_;
};

}  // namespace quillmar
