#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "foundation/observable.h"
#include "platform/settings.h"
#include "platform/settings_store.h"

namespace quillmar {

enum class DeviceRole { parent, child, unset };

template <>
inline constexpr std::array rawNames<DeviceRole> = rawCases<DeviceRole>({{DeviceRole::parent, "parent"},
                                                                         {DeviceRole::child, "child"},
                                                                         {DeviceRole::unset, "unset"}});

// The deployment that a parent's installation uses.
enum class Region { australia, newzealand, singapore };

template <>
inline constexpr std::array rawNames<Region> = rawCases<Region>({{Region::australia, "australia"},
                                                                 {Region::newzealand, "newzealand"},
                                                                 {Region::singapore, "singapore"}});

std::string_view displayName(Region region);
std::string_view flag(Region region);

// Whether this installation is a parent's or a child's. The role is chosen once and never changes.
class RoleManager final : public ObservableObject {
 public:
  using Region = quillmar::Region;

  static constexpr std::string_view roleKey = settings::deviceRole;
  static constexpr std::string_view regionKey = settings::region;

  explicit RoleManager(SettingsStore& settings);

  Published<DeviceRole> currentRole{*this, "currentRole", DeviceRole::unset};
  Published<std::optional<Region>> selectedRegion{*this, "selectedRegion"};
  // The parent role is chosen, the region is not; never stored.
  Published<bool> pendingParentSelection{*this, "pendingParentSelection", false};

  // Only has an effect while there is no role. `unset` can't be set.
  void setRole(DeviceRole role);
  void saveRegion();

 private:
  void loadRole();
  void saveRole();
  void loadRegion();

  SettingsStore& settings_;
};

}  // namespace quillmar
