#pragma once

#include <string>
#include <string_view>
#include <tuple>

#include "foundation/date.h"
#include "platform/settings_store.h"

// The catalogue of everything that an installation keeps in its settings store, a row each. There is no
// version and no migration: an absent key was never set, and each reader has its own fallback.
namespace quillmar::settings {

inline constexpr Setting<std::string> authToken{"authToken", Reset::atLogout};
inline constexpr Setting<std::string> parentId{"parentId", Reset::atLogout};
inline constexpr Setting<std::string> parentEmail{"parentEmail", Reset::atLogout};
inline constexpr Setting<std::string> parentName{"parentName", Reset::atLogout};
inline constexpr Setting<std::string> familyId{"familyId"};  // read, never written
inline constexpr Setting<Date> authTokenTimestamp{"authTokenTimestamp"};
inline constexpr Setting<std::string> appearanceMode{"appearanceMode"};
inline constexpr Setting<std::string> deviceRole{"com.quillmar.deviceRole"};
inline constexpr Setting<std::string> region{"com.quillmar.region"};
inline constexpr Setting<std::string> apiBaseURL{"com.quillmar.apiBaseURL"};
inline constexpr Setting<bool> childIsEnrolled{"child_isEnrolled", Reset::withEnrollment};
inline constexpr Setting<std::string> childDeviceID{"child_deviceID", Reset::withEnrollment};
inline constexpr Setting<std::string> childDohEndpoint{"child_dohEndpoint", Reset::withEnrollment};
inline constexpr Setting<std::string> childDohBaseUrl{"child_dohBaseUrl", Reset::withEnrollment};

inline constexpr std::tuple catalogue{
    authToken,  parentId, parentEmail, parentName,      familyId,      authTokenTimestamp, appearanceMode,
    deviceRole, region,   apiBaseURL,  childIsEnrolled, childDeviceID, childDohEndpoint,   childDohBaseUrl};

// Calls `visit(setting)` for each row, in their order.
template <class Visitor>
constexpr void forEach(Visitor&& visit) {
  std::apply([&](const auto&... settings) { (visit(settings), ...); }, catalogue);
}

// Removes what `occasion` takes away.
inline void forget(SettingsStore& store, Reset occasion) {
  forEach([&](const auto& setting) {
    if (setting.reset == occasion) {
      store.remove(setting.key);
    }
  });
}

}  // namespace quillmar::settings
