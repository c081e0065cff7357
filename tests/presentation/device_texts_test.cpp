#include "presentation/device_texts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillmar {
namespace {

const DateStyles styles("en_US", "UTC");
const Date now = *parseISO8601("2024-03-15T12:00:00Z");

Device phone() {
  Device device;
  device.deviceName = "Ben's phone";
  device.deviceType = "ios";
  device.updatedAt = "2024-03-15T10:00:00Z";
  return device;
}

TEST(DeviceTexts, use_the_services_online_state) {
  auto device = phone();
  device.isActive = true;
  device.isOnline = false;
  EXPECT_FALSE(effectiveOnline(device));
  device.isActive = false;
  device.isOnline = true;
  EXPECT_TRUE(effectiveOnline(device));
}

TEST(DeviceTexts, use_is_active_if_the_service_does_not_say) {
  auto device = phone();
  EXPECT_FALSE(effectiveOnline(device));
  device.isActive = true;
  EXPECT_TRUE(effectiveOnline(device));
}

TEST(DeviceTexts, prefer_the_parents_name_for_a_device) {
  auto device = phone();
  EXPECT_EQ(deviceDisplayName(device), "Ben's phone");
  device.friendlyName = "";
  EXPECT_EQ(deviceDisplayName(device), "Ben's phone");
  device.friendlyName = " ";
  EXPECT_EQ(deviceDisplayName(device), " ");
  device.friendlyName = "Benny";
  EXPECT_EQ(deviceDisplayName(device), "Benny");
}

TEST(DeviceTexts, omit_last_seen_for_an_online_device) {
  auto device = phone();
  device.lastSeenAt = "2024-03-15T11:55:00Z";
  device.isOnline = true;
  EXPECT_EQ(lastSeenText(device, now, styles), "Online now");
  device.isOnline.reset();
  device.isActive = true;
  EXPECT_EQ(lastSeenText(device, now, styles), "Online now");
}

TEST(DeviceTexts, show_when_a_device_was_last_seen) {
  auto device = phone();
  device.isActive = true;
  device.isOnline = false;
  device.lastSeenAt = "2024-03-15T11:55:00Z";
  EXPECT_EQ(lastSeenText(device, now, styles), "Last seen 5 min ago");
  device.lastSeenAt = "some day";
  EXPECT_EQ(lastSeenText(device, now, styles), "Last seen some day");
  device.lastSeenAt = "";
  EXPECT_EQ(lastSeenText(device, now, styles), "Last seen ");
}

TEST(DeviceTexts, show_the_last_change_of_a_device_that_was_never_seen) {
  EXPECT_EQ(lastSeenText(phone(), now, styles), "Last seen 2 hours ago");
}

TEST(DeviceTexts, name_and_picture_each_type) {
  struct Case {
    std::string type;
    std::string label;
    std::string icon;
  };
  const std::vector<Case> cases = {
      {"ios", "iPhone", "iphone"},
      {"iOS", "iPhone", "iphone"},
      {"IOS", "iPhone", "iphone"},
      {"android", "Android", "candybarphone"},
      {"Windows", "Windows", "desktopcomputer"},
      {"mac", "Mac", "laptopcomputer"},
      {"macOS", "Mac", "laptopcomputer"},
      {"CHROMEOS", "ChromeOS", "laptopcomputer"},
      {"tablet", "Tablet", "ipad"},
      {"smart-tv", "Smart-Tv", "desktopcomputer"},
      {"tvOS", "Tvos", "desktopcomputer"},
      {"ios ", "Ios ", "desktopcomputer"},
      {"xbox", "Xbox", "desktopcomputer"},
      {"", "", "desktopcomputer"},
  };
  for (const auto& [type, label, icon] : cases) {
    auto device = phone();
    device.deviceType = type;
    EXPECT_EQ(deviceTypeLabel(device), label) << type;
    EXPECT_EQ(deviceIconName(device), icon) << type;
  }
}

}  // namespace
}  // namespace quillmar
