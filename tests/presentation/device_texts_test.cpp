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

TEST(DeviceTexts, take_the_services_word_for_who_is_online) {
  auto device = phone();
  device.isActive = true;
  device.isOnline = false;
  EXPECT_FALSE(effectiveOnline(device));
  device.isActive = false;
  device.isOnline = true;
  EXPECT_TRUE(effectiveOnline(device));
}

TEST(DeviceTexts, take_a_device_in_use_for_online_when_the_service_does_not_say) {
  auto device = phone();
  EXPECT_FALSE(effectiveOnline(device));
  device.isActive = true;
  EXPECT_TRUE(effectiveOnline(device));
}

TEST(DeviceTexts, call_a_device_by_the_name_that_the_parent_gave) {
  auto device = phone();
  EXPECT_EQ(deviceDisplayName(device), "Ben's phone");
  device.friendlyName = "";
  EXPECT_EQ(deviceDisplayName(device), "Ben's phone");
  device.friendlyName = " ";
  EXPECT_EQ(deviceDisplayName(device), " ");
  device.friendlyName = "Benny";
  EXPECT_EQ(deviceDisplayName(device), "Benny");
}

TEST(DeviceTexts, do_not_say_when_a_device_was_seen_that_is_online) {
  auto device = phone();
  device.lastSeenAt = "2024-03-15T11:55:00Z";
  device.isOnline = true;
  EXPECT_EQ(lastSeenText(device, now, styles), "Online now");
  device.isOnline.reset();
  device.isActive = true;
  EXPECT_EQ(lastSeenText(device, now, styles), "Online now");
}

TEST(DeviceTexts, say_when_a_device_was_seen_last) {
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

TEST(DeviceTexts, say_when_a_device_changed_last_if_it_was_never_seen) {
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
