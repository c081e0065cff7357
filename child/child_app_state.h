#pragma once

#include <optional>
#include <string>

#include "foundation/observable.h"
#include "platform/dispatch.h"
#include "platform/settings_store.h"

namespace quillmar {

// The stored state of a child's device. Loads, saves, updates and resets; makes no decisions.
class ChildAppState final : public ObservableObject {
 public:
  ChildAppState(SettingsStore& settings, const Dispatch& dispatch);

  Published<bool> isEnrolled{*this, "isEnrolled", false};
  Published<std::string> deviceID{*this, "deviceID"};
  Published<std::string> dohEndpoint{*this, "dohEndpoint"};
  // As the service reports it; stored and shown, never used for requests.
  Published<std::string> dohBaseUrl{*this, "dohBaseUrl"};
  // The outcome of the last check-in; false from launch until one succeeds.
  Published<bool> isConnectedToServer{*this, "isConnectedToServer", false};
  // By this device's clock.
  Published<std::optional<Date>> lastCheckinTime{*this, "lastCheckinTime"};
  // True only if the tunnel was connected at the last check.
  Published<bool> isDohConfigured{*this, "isDohConfigured", false};
  // Empty: no warning.
  Published<std::string> dohConfigWarning{*this, "dohConfigWarning"};

  void loadState();
  // Observers see `isEnrolled` before anything is stored, and before the base URL is set.
  void saveEnrollment(const std::string& deviceID, const std::string& dohEndpoint,
                      const std::optional<std::string>& dohBaseUrl,
                      const std::optional<std::string>& apiBaseUrl);
  // Called after each successful check-in. An empty text counts as present.
  void updateEndpoint(const std::optional<std::string>& dohEndpoint,
                      const std::optional<std::string>& dohBaseUrl);
  // A reset keeps the service's root, the role and the tunnel's configuration.
  void resetEnrollment();

 private:
  SettingsStore& settings_;
  const Dispatch& dispatch_;
};

}  // namespace quillmar
