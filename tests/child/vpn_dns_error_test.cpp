#include "child/vpn_dns_error.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

namespace quillmar {
namespace {

TEST(VPNDNSError, every_case_has_its_message) {
  using Case = VPNDNSError::Case;
  const auto sentences = std::to_array<std::pair<VPNDNSError, std::string>>({
      {{Case::invalidEndpoint, "why"}, "Invalid DNS endpoint: why"},
      {{Case::saveFailed, "why"}, "Failed to save VPN configuration: why"},
      {{Case::loadFailed, "why"}, "Failed to load VPN configuration: why"},
      {{Case::removeFailed, "why"}, "Failed to remove VPN configuration: why"},
      {{Case::connectionFailed, "why"}, "VPN connection failed: why"},
      {{Case::notConfigured, {}}, "VPN is not configured"},
      {{Case::notSupported, {}}, "VPN configuration is not supported on this device"},
  });
  for (const auto& [error, sentence] : sentences) {
    EXPECT_EQ(error.errorDescription(), sentence);
    EXPECT_EQ(error.localizedDescription(), sentence);
  }
}

}  // namespace
}  // namespace quillmar
