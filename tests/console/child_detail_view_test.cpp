#include "console/child_detail_view.h"

#include <limits>

#include "presentation/avatar.h"
#include "tests/console/child_detail_fixture.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

struct ChildDetailPage : ChildDetail {
  Names deviceNames() {
    return texts(page().devicesSection.deviceRows, &SwipeableDeviceRow::deviceDisplayName);
  }
};

TEST_F(ChildDetailPage, starts_empty) {
  make(2010);
  EXPECT_TRUE(page().devicesSection.devices().empty());
  EXPECT_EQ(page().policySection.policy(), std::nullopt);
  EXPECT_FALSE(page().isLoading());
  EXPECT_EQ(page().selectedTab(), ChildDetailTab::realTime);
  EXPECT_FALSE(page().policySection.isBlocked());
  EXPECT_EQ(page().policySection.blockMode(), "blacklist");
  EXPECT_EQ(page().devicesSection.onlineText(), "0/0 online");
  EXPECT_EQ(page().devicesSection.onlineDotColor(), "statusOffline");
  app.settle();
  EXPECT_TRUE(http().requests().empty()) << "nothing is asked before it appears";
}

TEST_F(ChildDetailPage, appearing_loads_the_child_and_shows_its_devices) {
  auto online = makeDevice("d2", false);
  online.isOnline = true;
  open({makeDevice("d1", false), online});
  EXPECT_EQ(http().calls(), Names{"GET /children/c1"});
  EXPECT_EQ(deviceNames(), (Names{"Device d1", "Device d2"}));
  EXPECT_EQ(page().devicesSection.onlineText(), "1/2 online");
  EXPECT_EQ(page().devicesSection.onlineDotColor(), "brandGreen");
  EXPECT_EQ(page().devicesSection.deviceRows[0].lastSeenText(), "Last seen Just now");
  EXPECT_EQ(page().devicesSection.deviceRows[1].lastSeenText(), "Online now");
  EXPECT_FALSE(page().isLoading());
}

TEST_F(ChildDetailPage, a_failed_load_is_reported_and_clears_nothing) {
  open({makeDevice("d1")}, makePolicy(false, {"a.example"}));
  http().fail("GET", "/children/c1", TransportError::Kind::timedOut);
  page().reloadChild();
  app.settle();
  expectAlert("The request timed out.");
  EXPECT_EQ(deviceNames(), Names{"Device d1"});
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"a.example"});
  EXPECT_TRUE(page().errorAlert.dismiss());
  EXPECT_FALSE(page().errorAlert.isShown());
  EXPECT_FALSE(page().errorAlert.dismiss()) << "there is nothing to dismiss";
}

TEST_F(ChildDetailPage, an_answer_without_a_policy_keeps_the_toggle_and_the_lists) {
  auto blocking = makePolicy(false, {"a.example"}, {"b.example"});
  open({}, blocking);
  answerChild({makeDevice("d1")}, std::nullopt);
  page().reloadChild();
  app.settle();
  EXPECT_EQ(page().devicesSection.devices().size(), 1U);
  EXPECT_EQ(page().policySection.policy(), blocking);
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"a.example"});
  EXPECT_EQ(page().policySection.blockedDomains(), Names{"b.example"});
}

// The header.

TEST_F(ChildDetailPage, the_header_identifies_the_child) {
  make(2010);
  EXPECT_EQ(page().name(), "Mia");
  EXPECT_EQ(page().avatarLetter(), "M");
  EXPECT_EQ(page().avatarColor(), rawValue(avatarColor("Mia")));
  EXPECT_EQ(page().ageText(), "6 years old");
}

TEST_F(ChildDetailPage, the_age_is_shown_only_with_a_birth_year_and_is_not_bounded) {
  make();
  EXPECT_EQ(page().ageText(), std::nullopt);
  make(2016);
  EXPECT_EQ(page().ageText(), "0 years old");
  make(2020);
  EXPECT_EQ(page().ageText(), "-4 years old");
  make(std::numeric_limits<std::int64_t>::min());
  EXPECT_NE(page().ageText(), std::nullopt);
}

TEST_F(ChildDetailPage, the_year_is_from_the_devices_calendar) {
  // 31 December 2016, 23:30 UTC.
  app.advance(std::chrono::hours(24 * 84) + 59min);
  make(2010);
  EXPECT_EQ(page().ageText(), "6 years old");
  app.machine.deviceInfo.deviceTimeZone = "Australia/Sydney";
  make(2010);
  EXPECT_EQ(page().ageText(), "7 years old");
  app.advance(2h);
  app.machine.deviceInfo.deviceTimeZone = "America/New_York";
  make(2010);
  EXPECT_EQ(page().ageText(), "6 years old");
}

TEST_F(ChildDetailPage, the_tabs_are_the_three_in_order) {
  make();
  EXPECT_EQ(page().tabs(), (std::vector<ChoiceItem>{
                               {"Real-Time", true}, {"Sites Blocked", false}, {"Sites Allowed", false}}));
  page().selectedTab = ChildDetailTab::sitesAllowed;
  EXPECT_TRUE(page().tabs()[2].isSelected);
  EXPECT_FALSE(page().tabs()[0].isSelected);
}

TEST_F(ChildDetailPage, done_dismisses_without_on_update) {
  open();
  EXPECT_TRUE(page().done());
  EXPECT_EQ(order, "dismiss ");
}

// The devices' status.

TEST_F(ChildDetailPage, the_devices_are_refreshed_every_15_seconds) {
  open();
  EXPECT_TRUE(page().devicesSection.isRunning());
  app.advance(14999ms);
  EXPECT_EQ(count("GET", "/children/c1"), 1U);
  answerChild({makeDevice("d1")});
  app.advance(1ms);
  EXPECT_EQ(count("GET", "/children/c1"), 2U);
  EXPECT_EQ(deviceNames(), Names{"Device d1"});
  app.advance(30s);
  EXPECT_EQ(count("GET", "/children/c1"), 4U);
}

TEST_F(ChildDetailPage, a_refresh_does_not_change_the_policy) {
  open({}, makePolicy(false, {"a.example"}));
  answerChild({makeDevice("d1")}, makePolicy(true, {"z.example"}, {"y.example"}));
  app.advance(15s);
  EXPECT_EQ(page().devicesSection.devices().size(), 1U);
  EXPECT_FALSE(page().policySection.isBlocked());
  EXPECT_EQ(page().policySection.allowedDomains(), Names{"a.example"});
  EXPECT_TRUE(page().policySection.blockedDomains().empty());
  EXPECT_TRUE(policyCalls().empty());
}

TEST_F(ChildDetailPage, a_failed_refresh_is_silent_and_keeps_the_devices) {
  open({makeDevice("d1")});
  http().failAlways("GET", "/children/c1", TransportError::Kind::timedOut);
  app.advance(45s);
  EXPECT_FALSE(page().errorAlert.isShown());
  EXPECT_EQ(page().devicesSection.devices().size(), 1U);
}

TEST_F(ChildDetailPage, disappearing_stops_all_timers_and_appearing_restarts_them) {
  open({makeDevice("d1")});
  page().disappear();
  EXPECT_FALSE(page().devicesSection.isRunning());
  EXPECT_FALSE(page().activitySection.recent.isRefreshing());
  http().forgetRequests();
  app.advance(1h);
  EXPECT_TRUE(http().requests().empty());
  page().appear();
  app.advance(15s);
  EXPECT_EQ(count("GET", "/children/c1"), 2U) << "one load and one tick of one timer";
}

TEST_F(ChildDetailPage, an_answer_after_its_destruction_is_dropped) {
  answerChild({makeDevice("d1")}, makePolicy(true));
  make();
  screen->appear();
  screen.reset();
  app.settle();
  EXPECT_EQ(http().calls(), Names{"GET /children/c1"});
}

// The rows of the devices.

TEST_F(ChildDetailPage, an_unchanged_refresh_neither_announces_nor_creates_a_row) {
  open({makeDevice("d1"), makeDevice("d2")});
  page().devicesSection.deviceRows[1].dragEnded(-100, 0);
  const auto* const row = &page().devicesSection.deviceRows[1];
  int changes = 0;
  const auto listening = page().observe([&](const Member& member) {
    changes += member.name() == "deviceRows" || member.name() == "devices" ? 1 : 0;
  });
  const auto rowListening =
      page().devicesSection.deviceRows[1].observe([&](const Member& /*any*/) { ++changes; });
  app.advance(15s);
  EXPECT_EQ(changes, 0);
  EXPECT_EQ(&page().devicesSection.deviceRows[1], row);
  EXPECT_TRUE(page().devicesSection.deviceRows[1].isSwiped());
}

TEST_F(ChildDetailPage, a_device_keeps_its_row_when_others_are_added_or_removed) {
  open({makeDevice("d1"), makeDevice("d2")});
  page().devicesSection.deviceRows[1].dragChanged(-50, 0);
  answerChild({makeDevice("d2"), makeDevice("d3")});
  app.advance(15s);
  EXPECT_EQ(deviceNames(), (Names{"Device d2", "Device d3"}));
  EXPECT_EQ(page().devicesSection.deviceRows[0].offset(), -50);
  EXPECT_EQ(page().devicesSection.deviceRows[1].offset(), 0);
}

TEST_F(ChildDetailPage, the_time_of_a_device_updates_while_its_data_stay_the_same) {
  open({makeDevice("d1", false)});
  app.advance(60s);
  EXPECT_EQ(page().devicesSection.deviceRows[0].lastSeenText(), "Last seen 1 min ago");
}

TEST_F(ChildDetailPage, the_time_of_a_device_updates_while_the_service_does_not_answer) {
  open({makeDevice("d1", false)});
  http().failAlways("GET", "/children/c1", TransportError::Kind::timedOut);
  app.advance(59s);
  EXPECT_EQ(page().devicesSection.deviceRows[0].lastSeenText(), "Last seen Just now");
  app.advance(1s);
  EXPECT_EQ(page().devicesSection.deviceRows[0].lastSeenText(), "Last seen 1 min ago");
  page().disappear();
  app.advance(5min);
  EXPECT_EQ(page().devicesSection.deviceRows[0].lastSeenText(), "Last seen 1 min ago") << "nobody looks";
}

TEST_F(ChildDetailPage, two_devices_with_the_same_id_have_a_row_each) {
  open({makeDevice("d1"), makeDevice("d1")});
  EXPECT_EQ(page().devicesSection.deviceRows.size(), 2U);
}

// Unlinking.

TEST_F(ChildDetailPage, unlinking_asks_first_and_cancel_changes_nothing) {
  open({makeDevice("d1")});
  EXPECT_FALSE(page().devicesSection.unlinkConfirmation.confirm());
  page().devicesSection.deviceRows[0].unlink();
  EXPECT_TRUE(page().devicesSection.unlinkConfirmation.isShown());
  EXPECT_EQ(page().devicesSection.deviceToUnlink()->id, "d1");
  EXPECT_EQ(page().devicesSection.unlinkAlertText(),
            "This will remove Device d1 from Mia's profile. The device will still exist and can be linked to "
            "another child.");
  EXPECT_TRUE(page().devicesSection.unlinkConfirmation.cancel());
  app.settle();
  EXPECT_EQ(count("DELETE", "/children/c1/devices/d1"), 0U);
  EXPECT_EQ(page().devicesSection.devices().size(), 1U);
}

TEST_F(ChildDetailPage, a_confirmed_unlinking_removes_the_device_and_runs_on_update) {
  http().answer("DELETE", "/children/c1/devices/d1", 204);
  open({makeDevice("d1"), makeDevice("d2"), makeDevice("d1")});
  page().devicesSection.deviceRows[0].unlink();
  EXPECT_TRUE(page().devicesSection.unlinkConfirmation.confirm());
  EXPECT_FALSE(page().devicesSection.unlinkConfirmation.isShown());
  EXPECT_EQ(page().devicesSection.devices().size(), 3U) << "not before the service has answered";
  app.settle();
  EXPECT_EQ(deviceNames(), Names{"Device d2"});
  EXPECT_EQ(order, "update ");
}

TEST_F(ChildDetailPage, a_failed_unlinking_is_reported_and_removes_nothing) {
  http().answer("DELETE", "/children/c1/devices/d1", 403);
  open({makeDevice("d1")});
  page().devicesSection.deviceRows[0].unlink();
  page().devicesSection.unlinkConfirmation.confirm();
  app.settle();
  expectAlert("Access denied");
  EXPECT_EQ(page().devicesSection.devices().size(), 1U);
  EXPECT_EQ(updates, 0);
}

TEST_F(ChildDetailPage, without_a_device_the_question_says_this_device_and_does_nothing) {
  open();
  http().forgetRequests();
  page().devicesSection.unlinkConfirmation.isShown = true;
  EXPECT_EQ(
      page().devicesSection.unlinkAlertText(),
      "This will remove this device from Mia's profile. The device will still exist and can be linked to "
      "another child.");
  page().devicesSection.unlinkConfirmation.confirm();
  app.settle();
  EXPECT_TRUE(http().requests().empty());
}

// Linking.

TEST_F(ChildDetailPage, a_linked_device_only_reloads_the_child) {
  open();
  page().devicesSection.linkDevice();
  app.settle();
  http().forgetRequests();
  answerChild({makeDevice("d9")});
  http().answer("POST", "/children/c1/devices", 204);
  page().devicesSection.showLinkDevice->linkSelectedDevice(makeDevice("d9"));
  app.settle();
  EXPECT_FALSE(page().devicesSection.showLinkDevice());
  EXPECT_EQ(http().calls(), (Names{"POST /children/c1/devices", "GET /children/c1"}));
  EXPECT_EQ(deviceNames(), Names{"Device d9"});
  EXPECT_EQ(updates, 0);
}

// The name.

TEST_F(ChildDetailPage, the_name_sheet_opens_with_the_name) {
  open();
  page().editName();
  ASSERT_TRUE(page().showEditName());
  EXPECT_EQ(page().showEditName->name(), "Mia");
}

TEST_F(ChildDetailPage, a_saved_name_runs_on_update_and_dismisses_the_screen) {
  http().answer("PUT", "/children/c1", 200,
                R"({"id":"c1","family_id":"f1","name":"Zoe","display_order":0,"is_active":true,)"
                R"("created_at":"c","updated_at":"u"})");
  open();
  page().editName();
  page().showEditName->name = std::string("Zoe");
  page().showEditName->save();
  EXPECT_EQ(page().editedName(), "Zoe");
  EXPECT_EQ(order, "") << "not before the service has answered";
  app.settle();
  EXPECT_EQ(bodies("PUT", "/children/c1"), Names{R"({"name":"Zoe"})"});
  EXPECT_EQ(order, "update dismiss ");
  EXPECT_EQ(page().name(), "Mia") << "the screen never shows the new one";
}

TEST_F(ChildDetailPage, a_failed_name_keeps_the_screen) {
  http().answer("PUT", "/children/c1", 500, R"({"error":"Too long"})");
  open();
  page().editName();
  page().showEditName->name = std::string("Zoe");
  page().showEditName->save();
  app.settle();
  expectAlert("Too long");
  EXPECT_EQ(order, "");
}

TEST_F(ChildDetailPage, an_empty_name_is_not_sent) {
  open();
  http().forgetRequests();
  page().editName();
  page().showEditName->name = std::string();
  EXPECT_FALSE(page().showEditName->save());
  page().saveChildName("");
  app.settle();
  EXPECT_EQ(page().editedName(), "");
  EXPECT_TRUE(http().requests().empty());
}

// Deleting the profile.

TEST_F(ChildDetailPage, deleting_the_profile_asks_first) {
  open();
  http().forgetRequests();
  EXPECT_FALSE(page().deletionConfirmation.confirm());
  page().deleteProfile();
  EXPECT_TRUE(page().deletionConfirmation.isShown());
  EXPECT_EQ(page().deleteAlertTitle(), "Delete Mia?");
  page().deletionConfirmation.cancel();
  EXPECT_FALSE(page().deletionConfirmation.isShown());
  app.settle();
  EXPECT_TRUE(http().requests().empty());
}

TEST_F(ChildDetailPage, a_deleted_profile_runs_on_update_and_dismisses_the_screen) {
  http().answer("DELETE", "/children/c1", 204);
  open();
  page().deleteProfile();
  EXPECT_TRUE(page().deletionConfirmation.confirm());
  EXPECT_FALSE(page().deletionConfirmation.isShown());
  app.settle();
  EXPECT_EQ(order, "update dismiss ");
}

TEST_F(ChildDetailPage, a_failed_deletion_keeps_the_screen) {
  http().answer("DELETE", "/children/c1", 404);
  open();
  page().deleteProfile();
  page().deletionConfirmation.confirm();
  app.settle();
  expectAlert("Resource not found");
  EXPECT_EQ(order, "");
}

TEST_F(ChildDetailPage, a_sheet_dismissed_by_an_answer_may_release_the_screen) {
  http().answer("DELETE", "/children/c1", 204);
  open();
  screen->setDismissHandler([this] { screen.reset(); });
  page().deleteProfile();
  page().deletionConfirmation.confirm();
  app.settle();
  EXPECT_EQ(screen, nullptr);
  EXPECT_EQ(updates, 1);
}

TEST_F(ChildDetailPage, the_texts_are_exact) {
  make();
  EXPECT_EQ(page().doneTitle(), "Done");
  EXPECT_EQ(page().devicesSection.devicesTitle(), "Devices");
  EXPECT_EQ(page().devicesSection.noDevicesText(), "No devices linked yet");
  EXPECT_EQ(page().devicesSection.linkDeviceTitle(), "Link Device");
  EXPECT_EQ(page().devicesSection.unlinkAlertTitle(), "Unlink Device?");
  EXPECT_EQ(page().devicesSection.unlinkTitle(), "Unlink");
  EXPECT_EQ(page().deleteProfileTitle(), "Delete Child Profile");
  EXPECT_EQ(page().deleteAlertText(),
            "This will remove the child profile and unlink all their devices. The devices will remain but "
            "won't be associated with this child.");
  EXPECT_EQ(page().deleteTitle(), "Delete");
  EXPECT_EQ(page().errorAlert.title(), "Error");
  EXPECT_EQ(page().errorAlert.okTitle(), "OK");
  EXPECT_EQ(page().screenTimeTitle(), "Screen Time Limits");
  EXPECT_EQ(page().screenTimeBadge(), "Coming Soon");
  EXPECT_EQ(page().screenTimeText(), "Schedule internet access times");
  EXPECT_EQ(page().screenTimeRowTitle(), "Block Internet");
  EXPECT_EQ(page().screenTimeRowValue(), "9:00 PM - 7:00 AM");
}

}  // namespace
}  // namespace quillmar
