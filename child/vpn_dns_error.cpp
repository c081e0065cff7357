#include "child/vpn_dns_error.h"

namespace quillmar {

std::string VPNDNSError::errorDescription() const {
  switch (which) {
    case Case::invalidEndpoint:
      return "Invalid DNS endpoint: " + payload;
    case Case::saveFailed:
      return "Failed to save VPN configuration: " + payload;
    case Case::loadFailed:
      return "Failed to load VPN configuration: " + payload;
    case Case::removeFailed:
      return "Failed to remove VPN configuration: " + payload;
    case Case::connectionFailed:
      return "VPN connection failed: " + payload;
    case Case::notConfigured:
      return "VPN is not configured";
    case Case::notSupported:
      return "VPN configuration is not supported on this device";
  }
  return {};
}

}  // namespace quillmar
