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

// The deployment that a parent's installation talks to.
enum class Region { australia, newzealand, singapore };

template <>
inline constexpr std::array rawNames<Region> = rawCases<Region>({{Region::australia, "australia"},
                                                                 {Region::newzealand, "newzealand"},
                                                                 {Region::singapore, "singapore"}});

std::string_view displayName(Region region);
std::string_view flag(Region region);

// Which of the two programs this installation is. The role is chosen once and for good; nothing takes it
// back.
class RoleManager final : public ObservableObject {
 public:
  using Region = quillmar::Region;

  static constexpr std::string_view roleKey = settings::deviceRole;
  static constexpr std::string_view regionKey = settings::region;

  explicit RoleManager(SettingsStore& settings);

  Published<DeviceRole> currentRole{*this, "currentRole", DeviceRole::unset};
  Published<std::optional<Region>> selectedRegion{*this, "selectedRegion"};
  // The parent's role is picked and a region is still to be chosen; never stored.
  Published<bool> pendingParentSelection{*this, "pendingParentSelection", false};

  // Takes effect on an installation without a role only; `unset` can't be chosen.
  void setRole(DeviceRole role);
  void saveRegion();

 private:
  void loadRole();
  void saveRole();
  void loadRegion();

  SettingsStore& settings_;
};

}  // namespace quillmar
