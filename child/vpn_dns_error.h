#pragma once

#include <string>

namespace quillmar {

struct VPNDNSError {
  enum class Case {
    invalidEndpoint,
    saveFailed,
    loadFailed,
    removeFailed,
    connectionFailed,
    notConfigured,
    notSupported,
  };

  Case which = Case::notConfigured;
  std::string payload;  // the platform's message, or the reason; empty for the last two cases

  std::string errorDescription() const;
  std::string localizedDescription() const { return errorDescription(); }
  friend bool operator==(const VPNDNSError&, const VPNDNSError&) = default;
};

}  // namespace quillmar
