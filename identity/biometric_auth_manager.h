#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>

#include "foundation/observable.h"
#include "foundation/result.h"
#include "foundation/secret.h"
#include "identity/biometric_error.h"
#include "identity/keychain_service.h"
#include "platform/biometric_check.h"
#include "platform/dispatch.h"

namespace quillmar {

enum class BiometricType { none, touchID, faceID };

template <>
inline constexpr std::array rawNames<BiometricType> = rawCases<BiometricType>(
    {{BiometricType::none, "none"}, {BiometricType::touchID, "touchID"}, {BiometricType::faceID, "faceID"}});

struct SavedCredentials {
  std::string email;
  Secret password;
  friend bool operator==(const SavedCredentials&, const SavedCredentials&) = default;
};

// Returns the remembered credentials after a fingerprint or face check. The service does not know of it: the
// caller still has to log in with the credentials.
class BiometricAuthManager final : public ObservableObject {
 public:
  using BiometricType = quillmar::BiometricType;
  // Every error is a BiometricError.
  using Completion = std::function<void(const Result<SavedCredentials>&)>;

  BiometricAuthManager(BiometricCheck& check, Dispatch& dispatch, const KeychainService& keychain);

  // Asked once, when this object is made: a finger enrolled later is noticed only after a restart.
  Published<BiometricType> biometricType{*this, "biometricType", BiometricType::none};
  Published<bool> isBiometricAvailable{*this, "isBiometricAvailable", false};

  void checkBiometricAvailability();
  // Completes at once if there are no credentials or no sensor, else on the main queue. Never deletes the
  // credentials.
  void authenticate(Completion completion);

 private:
  std::optional<SavedCredentials> loadCredentials() const;
  Result<SavedCredentials> credentialsOrError() const;

  BiometricCheck& check_;
  Dispatch& dispatch_;
  const KeychainService keychain_;
  const Subscription answer_;
};

}  // namespace quillmar
