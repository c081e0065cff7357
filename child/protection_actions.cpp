#include "child/protection_actions.h"

#include "child/background_service.h"

namespace quillmar {

void enableProtection(Environment& environment) {
  auto& service = *environment.backgroundService();
  service.hasAttemptedDNSConfig = false;
  service.applyVPNDNSConfig();
}

void reconnectTunnel(Environment& environment) {
  environment.vpnManager()->connectVPN([](const std::optional<VPNDNSError>& /*the fields tell*/) {});
}

}  // namespace quillmar
