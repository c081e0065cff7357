#include "child/background_service.h"

#include <utility>

#include "client/network_service.h"
#include "client/records/checkin.h"
#include "platform/hop.h"

namespace quillmar {
namespace {

// The tunnel's fields are evaluated this long after a refresh starts, finished or not.
constexpr auto refreshGrace = std::chrono::milliseconds(300);

std::string warningFor(const VPNDNSError& error) {
  switch (error.which) {
    case VPNDNSError::Case::saveFailed:
    case VPNDNSError::Case::connectionFailed:
      return error.errorDescription();
    case VPNDNSError::Case::notConfigured:
      return "Please tap 'Enable DNS Protection' to get started.";
    default:
      return "VPN setup failed. " + error.errorDescription();
  }
}

std::optional<Error> errorIn(const Result<CheckinResponse>& checkin) {
  if (!checkin.ok()) {
    return checkin.error();
  }
  return checkin.value().status == "ok" ? std::nullopt
                                        : std::optional<Error>(NetworkError::invalidResponse());
}

}  // namespace

BackgroundService::BackgroundService(Dispatch& dispatch, Log& log, std::shared_ptr<NetworkService> service,
                                     std::shared_ptr<VPNDNSManager> vpnManager)
    : ObservableObject("BackgroundService"),
      dispatch_(dispatch),
      log_(log),
      service_(std::move(service)),
      vpnManager_(std::move(vpnManager)) {}

void BackgroundService::start(const std::shared_ptr<ChildAppState>& childAppState) {
  childAppState_ = childAppState;
  stop();
  startCheckinTimer();
  startVPNStatusTimer();
  performCheckin();
  applyVPNDNSConfig();
  checkVPNStatus();
}

void BackgroundService::stop() {
  checkinTimer_.reset();
  vpnStatusTimer_.reset();
}

void BackgroundService::startCheckinTimer() {
  checkinTimer_ = dispatch_.scheduleRepeating(checkinInterval, weakly([this] { performCheckin(); }));
}

void BackgroundService::startVPNStatusTimer() {
  vpnStatusTimer_ = dispatch_.scheduleRepeating(vpnStatusCheckInterval, weakly([this] { checkVPNStatus(); }));
}

std::shared_ptr<ChildAppState> BackgroundService::enrolledState() const {
  auto state = childAppState_.lock();
  return state && state->isEnrolled() ? state : nullptr;
}

void BackgroundService::performCheckin() {
  if (const auto state = enrolledState()) {
    service_->checkin(state->deviceID(), std::string(childDeviceType),
                      hoppingToMain(dispatch_, weakly([this](const Result<CheckinResponse>& result) {
                                      handleCheckinResult(result);
                                    })));
  }
}

void BackgroundService::handleCheckinResult(const Result<CheckinResponse>& result) {
  const auto state = childAppState_.lock();
  checkinError_ = errorIn(result);
  if (checkinError_) {
    if (state) {
      state->isConnectedToServer = false;
    }
    return;
  }
  const CheckinResponse& answer = result.value();
  const std::string formerEndpoint = state ? state->dohEndpoint() : std::string();
  if (state) {
    state->updateEndpoint(answer.dohEndpoint, answer.dohBaseUrl);
  }
  if (answer.dohEndpoint && !answer.dohEndpoint->empty() && *answer.dohEndpoint != formerEndpoint) {
    applyVPNDNSConfig();
  }
}

void BackgroundService::applyVPNDNSConfig() {
  const auto state = enrolledState();
  if (!state) {
    return;
  }
  const std::string endpoint = state->dohEndpoint();
  if (endpoint.empty()) {
    log_.print("[BackgroundService] No DoH endpoint available to configure");
    return;
  }
  hasAttemptedDNSConfig = true;
  log_.print("[BackgroundService] Applying VPN DNS configuration for endpoint: " + endpoint);
  vpnManager_->configureVPN(endpoint,
                            hoppingToMain(dispatch_, weakly([this](const std::optional<VPNDNSError>& error) {
                                            handleConfigResult(error);
                                          })));
}

void BackgroundService::handleConfigResult(const std::optional<VPNDNSError>& error) {
  if (error) {
    log_.print("[BackgroundService] VPN DNS configuration failed: " + error->errorDescription());
    report(false, warningFor(*error));
    return;
  }
  log_.print("[BackgroundService] VPN DNS configuration applied successfully");
  if (vpnManager_->isConnected()) {
    report(true, "");
  } else if (vpnManager_->isConfigured()) {
    report(false, "VPN configured, connecting...");
  }
}

void BackgroundService::checkVPNStatus() {
  const auto state = enrolledState();
  if (!state) {
    return;
  }
  if (state->dohEndpoint().empty()) {
    dispatch_.main().async(
        weakly([this] { report(false, "No DoH endpoint configured. Please wait for server sync."); }));
    return;
  }
  vpnManager_->loadExistingConfig();
  dispatch_.main().asyncAfter(refreshGrace, weakly([this] { evaluateVPNStatus(); }));
}

void BackgroundService::evaluateVPNStatus() {
  if (childAppState_.expired()) {
    return;
  }
  if (vpnManager_->isConnected()) {
    report(true, "");
  } else if (vpnManager_->isConnecting()) {
    report(false, "Connecting to VPN...");
  } else if (vpnManager_->isConfigured()) {
    report(false, "VPN disconnected. Reconnecting...");
    vpnManager_->connectVPN([](const std::optional<VPNDNSError>& /*the next check sees*/) {});
  } else if (!hasAttemptedDNSConfig()) {
    applyVPNDNSConfig();
  } else {
    report(false, "DNS protection not enabled. Please tap the Enable button.");
  }
}

void BackgroundService::report(bool isDohConfigured, const std::string& warning) {
  if (const auto state = childAppState_.lock()) {
    state->isDohConfigured = isDohConfigured;
    state->dohConfigWarning = warning;
  }
}

}  // namespace quillmar
