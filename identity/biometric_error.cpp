#include "identity/biometric_error.h"

namespace quillmar {

std::string BiometricError::errorDescription() const {
  switch (which) {
    case Case::notAvailable:
      return "Biometric authentication is not available on this device";
    case Case::notEnrolled:
      return "No biometric data is enrolled. Please set up Face ID or Touch ID in Settings.";
    case Case::userCancelled:
      return "Authentication was cancelled";
    case Case::userFallback:
      return "Please enter your password";
    case Case::lockout:
      return "Biometric authentication is locked. Please try again later or use your password.";
    case Case::failed:
      return "Authentication failed";
    case Case::noCredentialsStored:
      return "No saved credentials found";
  }
  return {};
}

}  // namespace quillmar
