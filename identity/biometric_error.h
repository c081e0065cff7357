#pragma once

#include <string>

namespace quillmar {

// Why a biometric sign-in returned no credentials.
struct BiometricError {
  enum class Case {
    notAvailable,
    notEnrolled,
    userCancelled,
    userFallback,
    lockout,
    failed,
    noCredentialsStored
  };

  Case which = Case::failed;

  std::string errorDescription() const;
  std::string localizedDescription() const { return errorDescription(); }
  friend bool operator==(const BiometricError&, const BiometricError&) = default;
};

}  // namespace quillmar
