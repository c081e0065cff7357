#pragma once

#include <optional>
#include <string>

#include "foundation/observable.h"
#include "platform/dispatch.h"
#include "platform/settings_store.h"

namespace quillmar {

// What this installation knows about itself as a child's device. Loads, saves, updates and resets; decides
// nothing.
class ChildAppState final : public ObservableObject {
 public:
  ChildAppState(SettingsStore& settings, const Dispatch& dispatch);

  Published<bool> isEnrolled{*this, "isEnrolled", false};
  Published<std::string> deviceID{*this, "deviceID"};
  Published<std::string> dohEndpoint{*this, "dohEndpoint"};
  // As the service reports it; stored and shown, never used to make a request.
  Published<std::string> dohBaseUrl{*this, "dohBaseUrl"};
  // The outcome of the last check-in; false after a launch until one has succeeded.
  Published<bool> isConnectedToServer{*this, "isConnectedToServer", false};
  // By this device's clock.
  Published<std::optional<Date>> lastCheckinTime{*this, "lastCheckinTime"};
  // Only while the tunnel was last seen connected.
  Published<bool> isDohConfigured{*this, "isDohConfigured", false};
  // Empty: nothing to say about the protection.
  Published<std::string> dohConfigWarning{*this, "dohConfigWarning"};

  void loadState();
  // Observers see `isEnrolled` before anything is stored, and before the base URL has its value.
  void saveEnrollment(const std::string& deviceID, const std::string& dohEndpoint,
                      const std::optional<std::string>& dohBaseUrl,
                      const std::optional<std::string>& apiBaseUrl);
  // After each check-in that went well. An empty text counts as present.
  void updateEndpoint(const std::optional<std::string>& dohEndpoint,
                      const std::optional<std::string>& dohBaseUrl);
  // The root of the service, the role and the tunnel's configuration outlive a reset.
  void resetEnrollment();

 private:
  SettingsStore& settings_;
  const Dispatch& dispatch_;
};

}  // namespace quillmar
