#include "child/child_app_state.h"

namespace quillmar {

ChildAppState::ChildAppState(SettingsStore& settings, const Dispatch& dispatch)
    : ObservableObject("ChildAppState"), settings_(settings), dispatch_(dispatch) {
  loadState();
}

void ChildAppState::loadState() {
  isEnrolled = settings_.boolean(settings::childIsEnrolled);
  deviceID = settings_.string(settings::childDeviceID).value_or("");
  dohEndpoint = settings_.string(settings::childDohEndpoint).value_or("");
  dohBaseUrl = settings_.string(settings::childDohBaseUrl).value_or("");
}

void ChildAppState::saveEnrollment(const std::string& newDeviceID, const std::string& newEndpoint,
                                   const std::optional<std::string>& newBaseUrl,
                                   const std::optional<std::string>& apiBaseUrl) {
  deviceID = newDeviceID;
  dohEndpoint = newEndpoint;
  isEnrolled = true;
  // A process that is killed leaves a device that is enrolled or not, never half of it.
  settings_.writeTogether([&] {
    settings_.set(settings::childIsEnrolled, true);
    settings_.set(settings::childDeviceID, newDeviceID);
    settings_.set(settings::childDohEndpoint, newEndpoint);
    if (newBaseUrl) {
      dohBaseUrl = *newBaseUrl;
      settings_.set(settings::childDohBaseUrl, *newBaseUrl);
    }
    if (apiBaseUrl) {
      settings_.set(settings::apiBaseURL, *apiBaseUrl);
    }
  });
}

void ChildAppState::updateEndpoint(const std::optional<std::string>& newEndpoint,
                                   const std::optional<std::string>& newBaseUrl) {
  if (newEndpoint) {
    dohEndpoint = *newEndpoint;
    settings_.set(settings::childDohEndpoint, *newEndpoint);
  }
  if (newBaseUrl) {
    dohBaseUrl = *newBaseUrl;
    settings_.set(settings::childDohBaseUrl, *newBaseUrl);
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
  settings_.writeTogether([this] {
    for (const auto key : {settings::childIsEnrolled, settings::childDeviceID, settings::childDohEndpoint,
                           settings::childDohBaseUrl}) {
      settings_.remove(key);
    }
  });
}

}  // namespace quillmar
