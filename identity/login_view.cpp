#include "identity/login_view.h"

#include <utility>

#include "client/account_calls.h"
#include "client/network_service.h"
#include "platform/hop.h"

namespace quillmar {
namespace {

constexpr auto emailKey = KeychainService::emailKey;
constexpr auto passwordKey = KeychainService::passwordKey;

std::string_view sensorName(BiometricType type) {
  switch (type) {
    case BiometricType::touchID:
      return "Touch ID";
    case BiometricType::faceID:
      return "Face ID";
    case BiometricType::none:
      break;
  }
  return "Biometric";
}

}  // namespace

LoginView::LoginView(Environment& environment, MakeJoinFamily makeJoinFamily)
    : ScreenModel("LoginView"),
      environment_(environment),
      makeJoinFamily_(std::move(makeJoinFamily)),
      dispatch_(environment.platform().dispatch),
      keychain_(environment.keychainService()),
      biometrics_(environment.biometricAuthManager()) {
  follow(*biometrics_);
}

void LoginView::onAppear() {
  playEntryAnimation();
  recallSavedLogin();
}

void LoginView::playEntryAnimation() {
  logoScale = 1.0;
  logoOpacity = 1.0;
  formOpacity = 1.0;
  formOffset = 0.0;
}

void LoginView::recallSavedLogin() {
  hasSavedCredentials = keychain_->load(emailKey).has_value() && keychain_->load(passwordKey).has_value();
  if (const auto saved = keychain_->load(emailKey)) {
    email = *saved;
    rememberMe = true;
  }
}

bool LoginView::computeIsFormValid() const {
  return email().find('@') != std::string::npos && !password().empty();
}

std::string LoginView::computeBiometricTitle() const {
  return "Sign in with " + std::string(sensorName(biometrics_->biometricType()));
}

void LoginView::beginSignIn() {
  isLoading = true;
  errorAlert.message = std::string();
}

void LoginView::startSignIn() {
  beginSignIn();
  environment_.networkService()->send(
      calls::login, {email(), password()},
      hoppingToMain(dispatch_, weakly([this](const Result<AuthResponse>& result) { handleSignIn(result); })));
}

void LoginView::handleSignIn(const Result<AuthResponse>& result) {
  isLoading = false;
  if (result.ok()) {
    rememberOrForget();
  }
  openSession(result);
}

// Saves what was typed, not what the service returned. A failed save is ignored.
void LoginView::rememberOrForget() {
  if (rememberMe()) {
    keychain_->save(emailKey, email());
    keychain_->save(passwordKey, password().text());
  } else {
    keychain_->deleteItem(emailKey);
    keychain_->deleteItem(passwordKey);
  }
}

void LoginView::startBiometricSignIn() {
  beginSignIn();
  biometrics_->authenticate(hoppingToMain(
      dispatch_,
      weakly([this](const Result<SavedCredentials>& credentials) { handleCredentials(credentials); })));
}

void LoginView::handleCredentials(const Result<SavedCredentials>& credentials) {
  if (credentials.ok()) {
    environment_.networkService()->send(
        calls::login, {credentials.value().email, credentials.value().password},
        hoppingToMain(dispatch_, weakly([this](const Result<AuthResponse>& result) {
                        isLoading = false;
                        openSession(result);
                      })));
    return;
  }
  isLoading = false;
  if (credentials.error() != BiometricError{BiometricError::Case::userCancelled}) {
    errorAlert.show(credentials.error());
  }
}

void LoginView::openSession(const Result<AuthResponse>& result) {
  if (result.ok()) {
    environment_.authState()->saveLogin(result.value());
  } else {
    errorAlert.show(result.error());
  }
}

}  // namespace quillmar
