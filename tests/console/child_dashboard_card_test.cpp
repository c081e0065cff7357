#include "console/child_dashboard_card.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "presentation/avatar.h"
#include "tests/console/console_test.h"

namespace quillmar {
namespace {

std::shared_ptr<ChildDashboardCard> cardOf(const ChildProfileWithDevices& child, std::int64_t position = 0) {
  const auto nothing = [](const ChildProfileWithDevices&) {};
  auto card = std::make_shared<ChildDashboardCard>(child, CardEntrance::staged, nothing, nothing);
  card->update(child, position);
  return card;
}

std::shared_ptr<ChildDashboardCard> cardWith(std::vector<Device> devices) {
  return cardOf(makeChild("c1", "Mia", std::move(devices)));
}

std::vector<Device> devices(int count) {
  std::vector<Device> all;
  for (int i = 1; i <= count; ++i) {
    all.push_back(makeDevice("d" + std::to_string(i)));
  }
  return all;
}

TEST(ChildDashboardCard, shows_the_first_character_on_the_names_colour) {
  const auto card = cardOf(makeChild("c1", "mia"));
  EXPECT_EQ(card->name(), "mia");
  EXPECT_EQ(card->avatarLetter(), "m");
  EXPECT_EQ(card->avatarColor(), rawValue(avatarColor("mia")));
  EXPECT_EQ(cardOf(makeChild("c1", "👨‍👩‍👧👩‍👩‍👧👨‍👨‍👧"))->avatarLetter(),
            "👨‍👩‍👧");
  EXPECT_EQ(cardOf(makeChild("c1", ""))->avatarLetter(), "");
}

TEST(ChildDashboardCard, shows_no_list_and_a_grey_dot_without_devices) {
  const auto card = cardWith({});
  EXPECT_EQ(card->deviceCount(), "0");
  EXPECT_EQ(card->onlineText(), "0 online");
  EXPECT_EQ(card->onlineDotColor(), "statusOffline");
  EXPECT_TRUE(card->deviceLines().empty());
  EXPECT_EQ(card->moreText(), "");
}

TEST(ChildDashboardCard, counts_devices_online_as_the_service_says_or_else_by_is_active) {
  struct Row {
    std::optional<bool> isOnline;
    bool isActive;
    bool expected;
  };
  for (const auto& row : std::vector<Row>{{std::nullopt, true, true},
                                          {std::nullopt, false, false},
                                          {false, true, false},
                                          {true, false, true}}) {
    Device device = makeDevice("d1", row.isActive);
    device.isOnline = row.isOnline;
    const auto card = cardWith({device});
    EXPECT_EQ(card->onlineText(), row.expected ? "1 online" : "0 online");
    EXPECT_EQ(card->onlineDotColor(), row.expected ? "brandGreen" : "statusOffline");
    const auto line = card->deviceLines().at(0);
    EXPECT_EQ(line.isOnline, row.expected);
    EXPECT_EQ(line.iconColor, row.expected ? "brandBlue" : "statusOffline");
    EXPECT_EQ(line.dotColor, row.expected ? "statusOnline" : "statusOffline");
  }
}

TEST(ChildDashboardCard, lists_the_first_three_devices_in_order) {
  const auto lines = cardWith(devices(5))->deviceLines();
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_EQ(lines[0].id, "d1");
  EXPECT_EQ(lines[1].id, "d2");
  EXPECT_EQ(lines[2].id, "d3");
}

TEST(ChildDashboardCard, shows_how_many_more_from_the_fourth_device_on) {
  EXPECT_EQ(cardWith(devices(3))->moreText(), "");
  EXPECT_EQ(cardWith(devices(4))->moreText(), "+ 1 more");
  EXPECT_EQ(cardWith(devices(40))->moreText(), "+ 37 more");
  EXPECT_EQ(cardWith(devices(40))->deviceCount(), "40");
  EXPECT_EQ(cardWith(devices(40))->spokenName(),
            cardWith(devices(40))->name() + ", 40 devices, " + cardWith(devices(40))->onlineText());
  EXPECT_TRUE(cardWith(devices(1))->spokenName().find(", 1 device, ") != std::string::npos);
}

TEST(ChildDashboardCard, shows_the_parents_name_of_a_device_or_else_the_enrolled_one) {
  Device named = makeDevice("d1");
  named.friendlyName = "Mia's phone";
  Device emptyName = makeDevice("d2");
  emptyName.friendlyName = "";
  const auto lines = cardWith({named, emptyName, makeDevice("d3")})->deviceLines();
  EXPECT_EQ(lines[0].name, "Mia's phone");
  EXPECT_EQ(lines[1].name, "Device d2");
  EXPECT_EQ(lines[2].name, "Device d3");
}

TEST(ChildDashboardCard, has_an_icon_for_each_type_of_device) {
  Device tv = makeDevice("d1");
  tv.deviceType = "smarttv";
  EXPECT_EQ(cardWith({makeDevice("d2")})->deviceLines()[0].icon, "iphone");
  EXPECT_EQ(cardWith({tv})->deviceLines()[0].icon, "desktopcomputer");
}

TEST(ChildDashboardCard, appears_100_ms_after_the_previous_one) {
  EXPECT_DOUBLE_EQ(cardOf(makeChild("c1", "Mia"), 0)->appearanceDelay(), 0.0);
  EXPECT_DOUBLE_EQ(cardOf(makeChild("c1", "Mia"), 3)->appearanceDelay(), 0.3);
}

TEST(ChildDashboardCard, its_two_controls_pass_the_current_child) {
  std::vector<std::string> told;
  ChildDashboardCard card(
      makeChild("c1", "Mia"), CardEntrance::staged,
      [&](const ChildProfileWithDevices& child) { told.push_back("tap " + child.name); },
      [&](const ChildProfileWithDevices& child) { told.push_back("add " + child.name); });
  card.tap();
  card.update(makeChild("c1", "Zoe"), 0);
  card.addDevice();
  EXPECT_EQ(told, (std::vector<std::string>{"tap Mia", "add Zoe"}));
  EXPECT_EQ(card.addDeviceTitle(), "Add Device");
}

TEST(ChildDashboardCard, announces_only_what_differs) {
  const auto card = cardWith(devices(2));
  std::vector<std::string> announced;
  const auto subscription =
      card->observe([&](const Member& member) { announced.emplace_back(member.name()); });
  card->update(makeChild("c1", "Mia", devices(2)), 0);
  EXPECT_TRUE(announced.empty());
  card->update(makeChild("c1", "Mia", devices(2)), 1);
  EXPECT_EQ(announced, std::vector<std::string>{"position"});
  card->update(makeChild("c1", "Mia", devices(1)), 1);
  EXPECT_EQ(announced, (std::vector<std::string>{"position", "child"}));
}

}  // namespace
}  // namespace quillmar
