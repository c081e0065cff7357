#include "identity/biometric_auth_manager.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/hop.h"

namespace quillmar {
namespace {

using Case = BiometricError::Case;

constexpr std::string_view reason = "Log in to Quillmar";

BiometricType typeOf(int sensor) {
  switch (sensor) {
    case 1:
      return BiometricType::touchID;
    case 2:
      return BiometricType::faceID;
    default:
      return BiometricType::none;
  }
}

struct Meaning {
  int code;
  Case error;
};

// The platform's error codes.
constexpr auto meanings = std::to_array<Meaning>({{-8, Case::lockout},
                                                  {-7, Case::notEnrolled},
                                                  {-6, Case::notAvailable},
                                                  {-3, Case::userFallback},
                                                  {-2, Case::userCancelled}});

BiometricError errorOf(std::optional<int> code) {
  const auto* const known = std::ranges::find_if(meanings, [&](const Meaning& m) { return m.code == code; });
  return {known == meanings.end() ? Case::failed : known->error};
}

}  // namespace

BiometricAuthManager::BiometricAuthManager(BiometricCheck& check, Dispatch& dispatch,
                                           const KeychainService& keychain)
    : ObservableObject("BiometricAuthManager"),
      check_(check),
      dispatch_(dispatch),
      keychain_(keychain),
      answer_(check.observeAnswer([this] { checkBiometricAvailability(); })) {
  checkBiometricAvailability();
}

void BiometricAuthManager::checkBiometricAvailability() {
  isBiometricAvailable = check_.canEvaluate();
  biometricType = isBiometricAvailable() ? typeOf(check_.biometryType()) : BiometricType::none;
}

void BiometricAuthManager::authenticate(Completion completion) {
  if (!loadCredentials()) {
    completion(Error(BiometricError{Case::noCredentialsStored}));
    return;
  }
  if (!check_.canEvaluate()) {
    completion(Error(BiometricError{Case::notAvailable}));
    return;
  }
  auto finish = [this, completion = std::move(completion)](const BiometricReply& reply) {
    completion(reply.success ? credentialsOrError() : Error(errorOf(reply.code)));
  };
  check_.evaluate(reason, hoppingToMain(dispatch_, weakly(std::move(finish))));
}

std::optional<SavedCredentials> BiometricAuthManager::loadCredentials() const {
  auto email = keychain_.load(KeychainService::emailKey);
  auto password = keychain_.load(KeychainService::passwordKey);
  if (!email || !password) {
    return std::nullopt;
  }
  return SavedCredentials{*std::move(email), *std::move(password)};
}

// They may have been removed during the prompt.
Result<SavedCredentials> BiometricAuthManager::credentialsOrError() const {
  auto credentials = loadCredentials();
  return credentials ? Result<SavedCredentials>(*std::move(credentials))
                     : Error(BiometricError{Case::noCredentialsStored});
}

}  // namespace quillmar
