#include "child/protection_actions.h"

#include "child/background_service.h"
#include "child/child_app_state.h"

namespace quillmar {

void enableProtection(Environment& environment) {
  auto& service = *environment.backgroundService();
  service.hasAttemptedDNSConfig = false;
  service.applyVPNDNSConfig();
}

void reconnectTunnel(Environment& environment) {
  environment.vpnManager()->connectVPN([](const std::optional<VPNDNSError>& /*the fields tell*/) {});
}

void forceSync(Environment& environment) {
  environment.backgroundService()->performCheckin();
  environment.backgroundService()->checkVPNStatus();
}

void resetEnrollment(Environment& environment) {
  environment.backgroundService()->stop();
  environment.childAppState()->resetEnrollment();
}

}  // namespace quillmar
