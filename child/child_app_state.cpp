#include "child/child_app_state.h"

#include "platform/settings.h"

namespace quillmar {

ChildAppState::ChildAppState(SettingsStore& settings, const Dispatch& dispatch)
    : ObservableObject("ChildAppState"), settings_(settings), dispatch_(dispatch) {
  loadState();
}

void ChildAppState::loadState() {
  isEnrolled = settings_.read(settings::childIsEnrolled).value_or(false);
  deviceID = settings_.read(settings::childDeviceID).value_or("");
  dohEndpoint = settings_.read(settings::childDohEndpoint).value_or("");
  dohBaseUrl = settings_.read(settings::childDohBaseUrl).value_or("");
}

void ChildAppState::saveEnrollment(const std::string& newDeviceID, const std::string& newEndpoint,
                                   const std::optional<std::string>& newBaseUrl,
                                   const std::optional<std::string>& apiBaseUrl) {
  deviceID = newDeviceID;
  dohEndpoint = newEndpoint;
  isEnrolled = true;
  // One write: a killed process must not leave a half-enrolled device.
  settings_.writeTogether([&] {
    settings_.write(settings::childIsEnrolled, true);
    settings_.write(settings::childDeviceID, newDeviceID);
    settings_.write(settings::childDohEndpoint, newEndpoint);
    if (newBaseUrl) {
      dohBaseUrl = *newBaseUrl;
      settings_.write(settings::childDohBaseUrl, *newBaseUrl);
    }
    if (apiBaseUrl) {
      settings_.write(settings::apiBaseURL, *apiBaseUrl);
    }
  });
}

void ChildAppState::updateEndpoint(const std::optional<std::string>& newEndpoint,
                                   const std::optional<std::string>& newBaseUrl) {
  if (newEndpoint) {
    dohEndpoint = *newEndpoint;
    settings_.write(settings::childDohEndpoint, *newEndpoint);
  }
  if (newBaseUrl) {
    dohBaseUrl = *newBaseUrl;
    settings_.write(settings::childDohBaseUrl, *newBaseUrl);
  }
  isConnectedToServer = true;
  lastCheckinTime = dispatch_.now();
}

void ChildAppState::resetEnrollment() {
  isEnrolled = false;
  deviceID = std::string();
  dohEndpoint = std::string();
  dohBaseUrl = std::string();
  isConnectedToServer = false;
  lastCheckinTime = std::optional<Date>();
  isDohConfigured = false;
  dohConfigWarning = std::string();
  settings_.writeTogether([this] { settings::forget(settings_, Reset::withEnrollment); });
}

}  // namespace quillmar
