#include "app/session/role_manager.h"

#include <gtest/gtest.h>

#include <vector>

#include "testing/memory_settings_store.h"

namespace quillmar {
namespace {

TEST(RoleManager, a_new_installation_has_neither_role_nor_region) {
  MemorySettingsStore settings;
  const RoleManager roles(settings);
  EXPECT_EQ(roles.currentRole(), DeviceRole::unset);
  EXPECT_EQ(roles.selectedRegion(), std::nullopt);
  EXPECT_FALSE(roles.pendingParentSelection());
  EXPECT_EQ(settings.writes(), 0);
}

TEST(RoleManager, unset_cannot_be_chosen) {
  MemorySettingsStore settings;
  RoleManager roles(settings);
  roles.setRole(DeviceRole::unset);
  EXPECT_EQ(roles.currentRole(), DeviceRole::unset);
  EXPECT_FALSE(settings.object(RoleManager::roleKey).has_value());
}

TEST(RoleManager, a_role_that_is_set_is_never_replaced) {
  for (const DeviceRole later : {DeviceRole::child, DeviceRole::parent, DeviceRole::unset}) {
    MemorySettingsStore settings;
    RoleManager roles(settings);
    roles.setRole(DeviceRole::parent);
    const int writes = settings.writes();
    roles.setRole(later);
    EXPECT_EQ(roles.currentRole(), DeviceRole::parent);
    EXPECT_EQ(settings.string("com.quillmar.deviceRole"), "parent");
    EXPECT_EQ(settings.writes(), writes);
  }
}

TEST(RoleManager, a_chosen_role_is_stored_and_loaded_again) {
  MemorySettingsStore settings;
  RoleManager roles(settings);
  roles.setRole(DeviceRole::child);
  EXPECT_EQ(roles.currentRole(), DeviceRole::child);
  EXPECT_EQ(RoleManager(settings).currentRole(), DeviceRole::child);
}

TEST(RoleManager, the_stored_texts_unset_and_unknown_ones_are_read_as_unset) {
  for (const std::string text : {"unset", "Parent", "parent ", ""}) {
    MemorySettingsStore settings;
    settings.set("com.quillmar.deviceRole", text);
    EXPECT_EQ(RoleManager(settings).currentRole(), DeviceRole::unset) << text;
    EXPECT_EQ(settings.string("com.quillmar.deviceRole"), text) << "loading writes nothing";
  }
}

TEST(RoleManager, a_stored_value_of_another_type_is_read_as_unset) {
  MemorySettingsStore settings;
  settings.set("com.quillmar.deviceRole", true);
  EXPECT_EQ(RoleManager(settings).currentRole(), DeviceRole::unset);
}

TEST(RoleManager, a_stored_region_is_loaded_and_an_unknown_one_is_ignored) {
  MemorySettingsStore settings;
  settings.set("com.quillmar.region", std::string("singapore"));
  EXPECT_EQ(RoleManager(settings).selectedRegion(), Region::singapore);
  settings.set("com.quillmar.region", std::string("atlantis"));
  EXPECT_EQ(RoleManager(settings).selectedRegion(), std::nullopt);
}

TEST(RoleManager, saving_without_a_region_leaves_the_store_untouched) {
  MemorySettingsStore settings;
  RoleManager roles(settings);
  roles.saveRegion();
  EXPECT_EQ(settings.writes(), 0);
}

TEST(RoleManager, a_saved_region_is_stored_by_its_raw_value) {
  MemorySettingsStore settings;
  RoleManager roles(settings);
  roles.selectedRegion = Region::newzealand;
  EXPECT_EQ(settings.writes(), 0);
  roles.saveRegion();
  EXPECT_EQ(settings.string("com.quillmar.region"), "newzealand");
}

TEST(RoleManager, the_pending_selection_is_never_stored) {
  MemorySettingsStore settings;
  RoleManager roles(settings);
  roles.pendingParentSelection = true;
  EXPECT_EQ(settings.writes(), 0);
  EXPECT_FALSE(RoleManager(settings).pendingParentSelection());
}

TEST(RoleManager, the_role_is_announced_before_it_is_stored) {
  MemorySettingsStore settings;
  RoleManager roles(settings);
  bool storedAtAnnouncement = true;
  const auto listening = roles.currentRole.onChange(
      [&] { storedAtAnnouncement = settings.object(RoleManager::roleKey).has_value(); });
  roles.setRole(DeviceRole::child);
  EXPECT_FALSE(storedAtAnnouncement);
}

TEST(Region, every_region_has_its_name_and_flag) {
  EXPECT_EQ(displayName(Region::australia), "Australia");
  EXPECT_EQ(flag(Region::australia), "🇦🇺");
  EXPECT_EQ(displayName(Region::newzealand), "New Zealand");
  EXPECT_EQ(flag(Region::newzealand), "🇳🇿");
  EXPECT_EQ(displayName(Region::singapore), "Singapore");
  EXPECT_EQ(flag(Region::singapore), "🇸🇬");
}

TEST(Region, raw_values_are_in_order) {
  std::vector<std::string_view> names;
  for (const auto& [region, name] : rawNames<Region>) {
    names.push_back(name);
  }
  EXPECT_EQ(names, (std::vector<std::string_view>{"australia", "newzealand", "singapore"}));
  EXPECT_EQ(rawNames<DeviceRole>.size(), 3U);
  EXPECT_EQ(rawNames<DeviceRole>[2].second, "unset");
}

}  // namespace
}  // namespace quillmar
