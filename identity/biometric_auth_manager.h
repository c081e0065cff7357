#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>

#include "foundation/observable.h"
#include "foundation/result.h"
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
  std::string password;
  friend bool operator==(const SavedCredentials&, const SavedCredentials&) = default;
};

// Hands out the remembered credentials after a check of a finger or a face. The service knows nothing of it:
// whoever gets the credentials still has to log in with them.
class BiometricAuthManager final : public ObservableObject {
 public:
  using BiometricType = quillmar::BiometricType;
  // Every error is a BiometricError.
  using Completion = std::function<void(const Result<SavedCredentials>&)>;

  BiometricAuthManager(BiometricCheck& check, Dispatch& dispatch, const KeychainService& keychain);

  // As the device answers when this object is made: a finger enrolled later is seen by the next start.
  Published<BiometricType> biometricType{*this, "biometricType", BiometricType::none};
  Published<bool> isBiometricAvailable{*this, "isBiometricAvailable", false};

  void checkBiometricAvailability();
  // Completes at once where nobody needs to be asked, since there are no credentials or no sensor; else on
  // the main queue. Never deletes the credentials.
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
