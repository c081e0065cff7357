#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "child/child_app_state.h"
#include "child/vpn_dns_manager.h"
#include "foundation/error.h"
#include "foundation/observable.h"
#include "platform/dispatch.h"
#include "platform/log.h"

namespace quillmar {

class NetworkService;
struct CheckinResponse;

// The background work of an enrolled child's device. Every minute it checks in with the service and stores a
// changed endpoint. Every 15 seconds it compares the tunnel with its expected state and repairs it. Nothing
// else writes `isDohConfigured` and `dohConfigWarning`. Front ends see its state as two derived values.
class BackgroundService final : public ObservableObject {
 public:
  static constexpr std::chrono::seconds checkinInterval{60};
  static constexpr std::chrono::seconds vpnStatusCheckInterval{15};

  BackgroundService(Dispatch& dispatch, Log& log, std::shared_ptr<NetworkService> service,
                    std::shared_ptr<VPNDNSManager> vpnManager);

  // A configuration was attempted, and no action of the user has requested a new attempt.
  Published<bool> hasAttemptedDNSConfig{*this, "hasAttemptedDNSConfig", false};
  Derived<bool> isCheckinTimerRunning{*this, "isCheckinTimerRunning",
                                      [this] { return checkinTimer_ != nullptr; }};
  Derived<bool> isVPNStatusTimerRunning{*this, "isVPNStatusTimerRunning",
                                        [this] { return vpnStatusTimer_ != nullptr; }};

  // Why the last check-in failed; nullopt if it succeeded.
  const std::optional<Error>& checkinError() const { return checkinError_; }

  void start(const std::shared_ptr<ChildAppState>& childAppState);
  void stop();
  void performCheckin();
  void checkVPNStatus();
  void applyVPNDNSConfig();

 private:
  // The state if it exists and is enrolled, else null; every step needs it.
  std::shared_ptr<ChildAppState> enrolledState() const;
  void startCheckinTimer();
  void startVPNStatusTimer();
  void handleCheckinResult(const Result<CheckinResponse>& result);
  void handleConfigResult(const std::optional<VPNDNSError>& error);
  void evaluateVPNStatus();
  void report(bool isDohConfigured, const std::string& warning);

  Dispatch& dispatch_;
  Log& log_;
  const std::shared_ptr<NetworkService> service_;
  const std::shared_ptr<VPNDNSManager> vpnManager_;
  std::unique_ptr<Timer> checkinTimer_;
  std::unique_ptr<Timer> vpnStatusTimer_;
  std::weak_ptr<ChildAppState> childAppState_;
  std::optional<Error> checkinError_;
};

// The type that every child's device reports, whatever hardware it is.
inline constexpr std::string_view childDeviceType = "ios";

}  // namespace quillmar
