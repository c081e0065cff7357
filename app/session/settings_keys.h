#pragma once

#include <array>
#include <string_view>

#include "client/network_service.h"

// The catalogue of everything that an installation keeps in its settings store. There is no version and no
// migration: an absent key was never set, and each reader has its own fallback.
namespace quillmar::settings {

enum class ValueType { string, boolean, date };

inline constexpr std::string_view authToken = NetworkService::authTokenKey;
inline constexpr std::string_view parentId = NetworkService::parentIdKey;
inline constexpr std::string_view parentEmail = NetworkService::parentEmailKey;
inline constexpr std::string_view parentName = NetworkService::parentNameKey;
inline constexpr std::string_view familyId = "familyId";  // read, never written
inline constexpr std::string_view authTokenTimestamp = "authTokenTimestamp";
inline constexpr std::string_view appearanceMode = "appearanceMode";
inline constexpr std::string_view deviceRole = "com.quillmar.deviceRole";
inline constexpr std::string_view region = NetworkService::regionKey;
inline constexpr std::string_view apiBaseURL = NetworkService::apiURLKey;
inline constexpr std::string_view childIsEnrolled = "child_isEnrolled";
inline constexpr std::string_view childDeviceID = "child_deviceID";
inline constexpr std::string_view childDohEndpoint = "child_dohEndpoint";
inline constexpr std::string_view childDohBaseUrl = "child_dohBaseUrl";

struct Entry {
  std::string_view key;
  ValueType type;
};

inline constexpr auto catalogue = std::to_array<Entry>({
    {authToken, ValueType::string},
    {parentId, ValueType::string},
    {parentEmail, ValueType::string},
    {parentName, ValueType::string},
    {familyId, ValueType::string},
    {authTokenTimestamp, ValueType::date},
    {appearanceMode, ValueType::string},
    {deviceRole, ValueType::string},
    {region, ValueType::string},
    {apiBaseURL, ValueType::string},
    {childIsEnrolled, ValueType::boolean},
    {childDeviceID, ValueType::string},
    {childDohEndpoint, ValueType::string},
    {childDohBaseUrl, ValueType::string},
});

}  // namespace quillmar::settings
