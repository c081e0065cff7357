#include "console/swipeable_device_row.h"

#include "tests/console/child_detail_fixture.h"

namespace quillmar {
namespace {

struct DeviceRow : testing::Test {
  Device device = makeDevice("d1");
  std::vector<std::string> unlinked;
  SwipeableDeviceRow row{device, [this](const Device& chosen) { unlinked.push_back(chosen.id); }};
};

TEST_F(DeviceRow, has_its_measures) {
  EXPECT_EQ(row.offset(), 0);
  EXPECT_FALSE(row.isSwiped());
  EXPECT_EQ(row.swipeThreshold(), -80);
  EXPECT_EQ(row.minimumDistance(), 10);
  EXPECT_EQ(row.buttonWidth(), 70);
  EXPECT_EQ(row.unlinkTitle(), "Unlink");
  EXPECT_EQ(row.unlinkIcon(), "link");
}

TEST_F(DeviceRow, shows_the_device) {
  device.friendlyName = "Mia's Phone";
  device.isOnline = true;
  row.show(device, "Online now");
  EXPECT_EQ(row.deviceDisplayName(), "Mia's Phone");
  EXPECT_EQ(row.deviceIconName(), "iphone");
  EXPECT_EQ(row.iconColor(), "brandBlue");
  EXPECT_EQ(row.lastSeenText(), "Online now");
  EXPECT_TRUE(row.isOnline());
  EXPECT_EQ(row.dotColor(), "statusOnline");
  device.isOnline = false;
  row.show(device, "Last seen 5 min ago");
  EXPECT_EQ(row.lastSeenText(), "Last seen 5 min ago");
  EXPECT_EQ(row.dotColor(), "statusOffline");
}

TEST_F(DeviceRow, follows_even_a_steep_drag_to_the_left) {
  row.dragChanged(-30, 500);
  EXPECT_EQ(row.offset(), -30);
  row.dragChanged(-200, 0);
  EXPECT_EQ(row.offset(), -200);
}

TEST_F(DeviceRow, does_not_follow_a_drag_to_the_right) {
  row.dragChanged(200, 0);
  EXPECT_EQ(row.offset(), 0);
  row.dragChanged(-40, 0);
  row.dragChanged(0, 0);
  EXPECT_EQ(row.offset(), -40);
}

TEST_F(DeviceRow, opens_to_the_same_width_beyond_the_threshold) {
  row.dragChanged(-200, 0);
  row.dragEnded(-81, 0);
  EXPECT_EQ(row.offset(), -80);
  EXPECT_TRUE(row.isSwiped());
  EXPECT_TRUE(unlinked.empty());
}

TEST_F(DeviceRow, closes_again_at_the_threshold) {
  row.dragChanged(-80, 0);
  row.dragEnded(-80, 0);
  EXPECT_EQ(row.offset(), 0);
  EXPECT_FALSE(row.isSwiped());
}

TEST_F(DeviceRow, opens_or_closes_by_where_the_drag_ends) {
  row.dragChanged(-200, 0);
  row.dragEnded(20, 0);
  EXPECT_EQ(row.offset(), 0);
  EXPECT_FALSE(row.isSwiped());
  row.dragEnded(-81, 0);
  EXPECT_TRUE(row.isSwiped());
  row.dragChanged(30, 0);
  EXPECT_EQ(row.offset(), -80) << "a drag to the right moves nothing";
  row.dragEnded(30, 0);
  EXPECT_FALSE(row.isSwiped()) << "but closes an open row";
  EXPECT_EQ(row.offset(), 0);
}

TEST_F(DeviceRow, a_tap_closes_an_open_row_and_does_nothing_to_a_closed_one) {
  int changes = 0;
  const auto listening = row.observe([&](const Member& /*any*/) { ++changes; });
  EXPECT_FALSE(row.tap());
  EXPECT_EQ(changes, 0);
  row.dragEnded(-100, 0);
  EXPECT_TRUE(row.tap());
  EXPECT_EQ(row.offset(), 0);
  EXPECT_FALSE(row.isSwiped());
}

TEST_F(DeviceRow, the_button_closes_the_row_and_asks) {
  row.dragEnded(-100, 0);
  EXPECT_TRUE(row.unlink());
  EXPECT_EQ(row.offset(), 0);
  EXPECT_FALSE(row.isSwiped());
  EXPECT_EQ(unlinked, std::vector<std::string>{"d1"});
}

TEST_F(DeviceRow, can_be_unlinked_while_closed) {
  EXPECT_TRUE(row.unlink());
  EXPECT_EQ(unlinked, std::vector<std::string>{"d1"});
}

TEST_F(DeviceRow, new_data_keeps_an_open_row_open) {
  row.dragEnded(-100, 0);
  device.friendlyName = "New";
  row.show(device, "Online now");
  EXPECT_TRUE(row.isSwiped());
  EXPECT_EQ(row.offset(), -80);
}

}  // namespace
}  // namespace quillmar
