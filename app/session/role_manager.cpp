#include "app/session/role_manager.h"

#include <string>

namespace quillmar {
namespace {

struct RegionFace {
  Region region;
  std::string_view name;
  std::string_view flag;
};

constexpr auto regionFaces = std::to_array<RegionFace>({
    {Region::australia, "Australia", "🇦🇺"},
    {Region::newzealand, "New Zealand", "🇳🇿"},
    {Region::singapore, "Singapore", "🇸🇬"},
});

const RegionFace& face(Region region) {
  for (const auto& known : regionFaces) {
    if (known.region == region) {
      return known;
    }
  }
  return regionFaces.front();
}

}  // namespace

std::string_view displayName(Region region) { return face(region).name; }
std::string_view flag(Region region) { return face(region).flag; }

RoleManager::RoleManager(SettingsStore& settings) : ObservableObject("RoleManager"), settings_(settings) {
  loadRole();
  loadRegion();
}

void RoleManager::setRole(DeviceRole role) {
  if (role == DeviceRole::unset || currentRole() != DeviceRole::unset) {
    return;
  }
  currentRole = role;
  saveRole();
}

void RoleManager::saveRegion() {
  if (selectedRegion()) {
    settings_.write(settings::region, std::string(rawValue(*selectedRegion())));
  }
}

void RoleManager::loadRole() {
  const auto stored = settings_.read(settings::deviceRole);
  currentRole = stored ? fromRawValue<DeviceRole>(*stored).value_or(DeviceRole::unset) : DeviceRole::unset;
}

void RoleManager::saveRole() { settings_.write(settings::deviceRole, std::string(rawValue(currentRole()))); }

void RoleManager::loadRegion() {
  const auto stored = settings_.read(settings::region);
  if (const auto region = stored ? fromRawValue<Region>(*stored) : std::nullopt) {
    selectedRegion = region;
  }
}

}  // namespace quillmar
