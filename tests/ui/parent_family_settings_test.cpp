#include <gtest/gtest.h>

#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <chrono>
#include <string>
#include <tuple>
#include <vector>

#include "app/session/appearance_manager.h"
#include "identity/auth_state.h"
#include "testing/ui/parent_stage.h"

namespace quillmar::ui {
namespace {

struct ParentFamilySettings : testing::Test {
  UiStage stage{{.stored = signedInParent(), .size = {390, 1400}}};
  ScriptedHttpSession& http() { return stage.application.machine.http; }
  bool isSignedIn() { return stage.application.environment().authState()->isLoggedIn(); }
};

struct ParentSettings : ParentFamilySettings {
  ParentSettings() { openSettings(stage); }
  SettingsView& screen() { return stage.application.screen<SettingsView>(); }
};

TEST_F(ParentSettings, every_control_is_reached_in_reading_order) {
  stage.focusOn("Done");
  for (const auto* const name :
       {"Done", "Family Members", "System", "Light", "Dark", "Delete Account", "Done"}) {
    EXPECT_EQ(stage.focusedName(), name);
    stage.press(Qt::Key_Tab);
  }
}

TEST_F(ParentSettings, the_family_opens_over_the_settings_and_returns_the_focus) {
  stage.tabTo("Family Members");
  stage.press(Qt::Key_Return);
  EXPECT_TRUE(screen().showFamilyMembers());
  stage.press(Qt::Key_Escape);  // the alert of the load that failed
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(screen().showFamilyMembers());
  EXPECT_EQ(stage.focusedName(), "Family Members");
}

TEST_F(ParentSettings, the_deletion_asks_twice_and_return_never_confirms_it) {
  stage.tabTo("Delete Account");
  stage.press(Qt::Key_Return);
  ASSERT_TRUE(stage.shows("Delete Account?"));
  EXPECT_EQ(stage.focusedName(), "Cancel");
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(stage.shows("Delete Account?"));
  EXPECT_EQ(stage.focusedName(), "Delete Account");
  EXPECT_FALSE(screen().showDeleteAccountPassword());

  stage.press(Qt::Key_Return);
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "Continue");
  stage.press(Qt::Key_Return);
  ASSERT_TRUE(stage.shows("Confirm Account Deletion"));
  EXPECT_EQ(stage.focusedName(), "Password");
  stage.press(Qt::Key_Return);
  stage.click("Delete My Account");
  EXPECT_EQ(http().changes(), std::vector<std::string>());
}

TEST_F(ParentSettings, a_wrong_password_is_reported_over_the_sheet_and_clears_the_field) {
  http().answer("DELETE", "/auth/account", 401);
  screen().deleteAccount();
  screen().deletionConfirmation.confirm();
  stage.settle();
  stage.type("wrong");
  stage.tabTo("Delete My Account");
  stage.press(Qt::Key_Return);
  ASSERT_TRUE(stage.shows("Incorrect password. Please try again."));
  EXPECT_EQ(stage.focusedName(), "OK");
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(stage.shows("Incorrect password. Please try again."));
  EXPECT_TRUE(stage.shows("Confirm Account Deletion"));
  EXPECT_EQ(stage.control("Password")->property("text").toString(), "");
  EXPECT_TRUE(isSignedIn());
  stage.press(Qt::Key_Tab);
  EXPECT_NE(stage.focused(), nullptr) << "the keyboard is lost";
  EXPECT_FALSE(stage.focusedName().isEmpty()) << "the keyboard is lost";
}

TEST_F(ParentSettings, the_account_can_be_deleted_by_keyboard_only) {
  http().answer("DELETE", "/auth/account", 200, "{}");
  stage.tabTo("Delete Account");
  stage.press(Qt::Key_Space);
  stage.press(Qt::Key_Tab);
  stage.press(Qt::Key_Space);
  stage.type("secret");
  stage.tabTo("Delete My Account");
  stage.press(Qt::Key_Space);
  EXPECT_EQ(http().count("DELETE", "/auth/account"), 1U);
  EXPECT_FALSE(isSignedIn());
  EXPECT_TRUE(stage.shows("Sign In"));
}

TEST_F(ParentSettings, cancel_and_escape_close_the_password_sheet) {
  for (const bool byKey : {true, false}) {
    screen().deleteAccount();
    screen().deletionConfirmation.confirm();
    stage.settle();
    stage.type("secret");
    byKey ? stage.press(Qt::Key_Escape) : stage.click("Cancel");
    EXPECT_FALSE(screen().showDeleteAccountPassword());
    EXPECT_EQ(screen().deleteAccountPassword(), "");
    EXPECT_TRUE(stage.shows("Version"));
  }
}

struct Family : ParentFamilySettings {
  Family() {
    openFamily(stage);
    http().forgetRequests();
  }
  FamilyMembersView& screen() { return stage.application.screen<FamilyMembersView>(); }
};

TEST_F(Family, every_control_is_reached_and_plain_rows_are_not) {
  stage.focusOn("Done");
  for (const auto* const name : {"Done", "Invite", "Tom", "Grandmother Wilhelmina Featherstonehaugh",
                                 "Revoke Invite: K7QX2M", "Revoke Invite: ZZ81PA", "Done"}) {
    EXPECT_EQ(stage.focusedName(), name);
    stage.press(Qt::Key_Tab);
  }
  EXPECT_TRUE(stage.shows("Ann Wells"));
  stage.click("Ann Wells");
  EXPECT_FALSE(screen().showMemberSheet());
}

TEST_F(Family, an_invitation_is_revoked_once_by_its_button) {
  http().answerAlways("DELETE", "/family/invite/ZZ81PA", 200, "{}");
  stage.tabTo("Revoke Invite: ZZ81PA");
  stage.press(Qt::Key_Space);
  EXPECT_EQ(http().changes(), std::vector<std::string>{"DELETE /family/invite/ZZ81PA"});
}

TEST_F(Family, an_invitation_is_created_and_its_code_copied) {
  http().answer("POST", "/family/invite", 200, invitationJson());
  stage.tabTo("Invite");
  stage.press(Qt::Key_Return);
  ASSERT_TRUE(stage.shows("Invite Family Member"));
  EXPECT_EQ(stage.focusedName(), "Copy Code");
  stage.press(Qt::Key_Space);
  EXPECT_EQ(stage.application.machine.clipboard.string(), "K7QX2M");
  stage.tabTo("Done");
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(stage.shows("Invite Family Member"));
  EXPECT_FALSE(screen().showInviteSheet());
  EXPECT_EQ(http().count("GET", "/family"), 1U);
}

TEST_F(Family, the_rights_of_a_member_are_reached_by_keyboard) {
  stage.tabTo("Tom");
  stage.press(Qt::Key_Return);
  ASSERT_TRUE(stage.shows("Permissions"));
  stage.tabTo("Done");
  for (const auto* const name : {"Done", "Can Manage Devices", "Can Manage Policies", "Account Active",
                                 "Remove from Family", "Done"}) {
    EXPECT_EQ(stage.focusedName(), name);
    stage.press(Qt::Key_Tab);
  }
  stage.press(Qt::Key_Escape);
  EXPECT_FALSE(screen().showMemberSheet());
  EXPECT_EQ(stage.focusedName(), "Tom");
}

TEST_F(Family, a_toggle_flipped_twice_sends_one_request_and_snaps_back) {
  http().answerAlways("PUT", "/family/members/m2", 500, R"({"error":"Busy, try later"})");
  stage.tabTo("Tom");
  stage.press(Qt::Key_Return);
  stage.focusOn("Can Manage Devices");
  http().hold();
  stage.press(Qt::Key_Space);
  stage.press(Qt::Key_Space);
  stage.clickAt(middleOf(*stage.control("Can Manage Devices")));
  EXPECT_EQ(http().changes(), std::vector<std::string>{"PUT /family/members/m2"});
  http().releaseAll();
  stage.settle();
  ASSERT_TRUE(stage.shows("Busy, try later"));
  stage.press(Qt::Key_Return);
  auto* const toggle = stage.control("Can Manage Devices");
  ASSERT_NE(toggle, nullptr);
  EXPECT_TRUE(toggle->property("checked").toBool()) << "the toggle shows what the service refused";
  EXPECT_EQ(stage.focusedName(), "Can Manage Devices");

  stage.press(Qt::Key_Space);
  EXPECT_EQ(http().changes().size(), 2U) << "the toggle is out of use for good";
}

TEST_F(Family, a_double_click_on_a_toggle_sends_one_request) {
  stage.tabTo("Tom");
  stage.press(Qt::Key_Return);
  http().hold();
  const QPoint middle = middleOf(*stage.control("Account Active"));
  QTest::mouseClick(&stage.window(), Qt::LeftButton, Qt::NoModifier, middle);
  QTest::mouseDClick(&stage.window(), Qt::LeftButton, Qt::NoModifier, middle);
  stage.settle();
  EXPECT_EQ(http().changes(), std::vector<std::string>{"PUT /family/members/m2"});
}

TEST_F(Family, a_member_is_removed_only_after_a_confirmation) {
  http().answerAlways("DELETE", "/family/members/m2", 200, "{}");
  const auto ask = [this] {
    stage.focusOn("Tom");
    stage.press(Qt::Key_Return);
    stage.focusOn("Remove from Family");
    stage.press(Qt::Key_Return);
    stage.advance(std::chrono::seconds(1));
    ASSERT_TRUE(stage.shows("Remove Family Member?"));
    ASSERT_EQ(stage.focusedName(), "Cancel");
  };
  ask();
  stage.press(Qt::Key_Return);
  EXPECT_FALSE(stage.shows("Remove Family Member?"));
  EXPECT_EQ(http().changes(), std::vector<std::string>());
  ask();
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "Remove");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(http().changes(), std::vector<std::string>{"DELETE /family/members/m2"});
}

TEST_F(ParentFamilySettings, a_family_that_fails_to_load_offers_a_retry) {
  showFamily(stage);
  dashboard(stage).openFamilyMembers();
  stage.settle();
  EXPECT_EQ(stage.focusedName(), "OK");
  stage.press(Qt::Key_Return);
  ASSERT_TRUE(stage.shows("Unable to load family"));
  EXPECT_EQ(stage.focusedName(), "Try Again");
  http().answerAlways("GET", "/family", 200, parentsJson(stage.application.machine.dispatch.now()));
  stage.press(Qt::Key_Return);
  EXPECT_TRUE(stage.shows("The Wells Family"));
}

TEST_F(ParentFamilySettings, a_home_network_is_set_up_only_after_a_confirmation) {
  openHomeNetwork(stage, R"({"current_ip":"203.0.113.7","ip_matches":false})");
  EXPECT_EQ(stage.focusedName(), "Set Up Home Network");
  stage.press(Qt::Key_Return);
  EXPECT_EQ(stage.focusedName(), "I'm at Home - Set Up");
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(http().changes(), std::vector<std::string>());
  EXPECT_EQ(stage.focusedName(), "Set Up Home Network");

  stage.press(Qt::Key_Return);
  stage.press(Qt::Key_Return);
  EXPECT_EQ(http().changes(), std::vector<std::string>{"POST /home-network"});
}

TEST_F(ParentFamilySettings, a_home_networks_address_changes_only_after_a_confirmation) {
  openHomeNetwork(stage, homeNetworkJson("198.51.100.9", false));
  stage.focusOn("Done");
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "Update Home Network IP");
  stage.press(Qt::Key_Tab);
  EXPECT_EQ(stage.focusedName(), "View Setup Instructions");
  stage.press(Qt::Key_Return);
  EXPECT_TRUE(stage.shows("Console DNS Setup"));
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(stage.focusedName(), "View Setup Instructions");

  stage.tabTo("Update Home Network IP");
  stage.press(Qt::Key_Space);
  EXPECT_EQ(stage.focusedName(), "Update IP");
  stage.press(Qt::Key_Tab);
  stage.press(Qt::Key_Space);
  EXPECT_EQ(http().changes(), std::vector<std::string>()) << "Cancel is the first button before it";
  EXPECT_EQ(stage.focusedName(), "Update Home Network IP");
  stage.press(Qt::Key_Return);
  stage.press(Qt::Key_Return);
  EXPECT_EQ(http().changes(), std::vector<std::string>{"POST /home-network/update-ip"});
  ASSERT_EQ(stage.focusedName(), "OK");
  stage.press(Qt::Key_Escape);
  EXPECT_EQ(stage.focusedName(), "Update Home Network IP");
}

int ground(UiStage& stage) {
  const QImage picture = stage.picture();
  return qGray(picture.pixel(2, picture.height() - 3));
}

TEST_F(ParentSettings, the_look_changes_at_once_in_the_open_window) {
  EXPECT_GT(ground(stage), 200);
  auto* const label = stage.find("Version");
  const auto lightInk = label->property("color").value<QColor>();
  stage.tabTo("Dark");
  stage.press(Qt::Key_Space);
  EXPECT_LT(ground(stage), 80);
  EXPECT_EQ(stage.find("Version"), label) << "the screen was built anew";
  EXPECT_NE(label->property("color").value<QColor>(), lightInk);
  EXPECT_EQ(stage.focusedName(), "Dark");

  stage.tabTo("Light");
  stage.press(Qt::Key_Return);
  EXPECT_GT(ground(stage), 200);
  EXPECT_EQ(label->property("color").value<QColor>(), lightInk);
}

TEST_F(ParentSettings, the_look_follows_the_desktop_only_in_system_mode) {
  stage.desktop.setWishes({.dark = true});
  EXPECT_LT(ground(stage), 80);
  stage.click("Light");
  EXPECT_GT(ground(stage), 200);
  stage.desktop.setWishes({.dark = true, .textScale = 1.5});
  EXPECT_GT(ground(stage), 200);
  stage.click("System");
  EXPECT_LT(ground(stage), 80);
  stage.desktop.setWishes({.dark = false});
  EXPECT_GT(ground(stage), 200);
}

TEST_F(ParentSettings, the_theme_item_of_the_menu_cycles_through_the_looks) {
  stage.press(Qt::Key_Escape);
  for (const auto& [title, next, isDark] :
       {std::tuple("Theme: System", "Theme: Light", false), std::tuple("Theme: Light", "Theme: Dark", true),
        std::tuple("Theme: Dark", "Theme: System", false)}) {
    stage.click("AM");
    ASSERT_TRUE(stage.shows(title));
    stage.click(title);
    stage.click("AM");
    EXPECT_TRUE(stage.shows(next));
    stage.press(Qt::Key_Escape);
    EXPECT_EQ(ground(stage) < 80, isDark) << next;
  }
}

TEST(ParentAppearance, two_windows_of_one_application_change_together) {
  UiStage stage({.stored = signedInParent(), .size = {390, 1400}});
  openSettings(stage);
  Window second(stage.application.app().contentView(), stage.application.machine.qrEncoder, stage.style, {});
  second.quickWindow().resize(390, 1400);
  second.show();
  stage.settle();
  const auto secondGround = [&] {
    const QImage picture = second.quickWindow().grabWindow();
    return qGray(picture.pixel(2, picture.height() - 3));
  };
  EXPECT_GT(secondGround(), 200);
  stage.click("Dark");
  EXPECT_LT(ground(stage), 80);
  EXPECT_LT(secondGround(), 80);
  stage.click("Light");
  EXPECT_GT(ground(stage), 200);
  EXPECT_GT(secondGround(), 200);
}

TEST(ParentAppearance, two_applications_in_one_process_do_not_share_their_look) {
  UiStage ann({.stored = signedInParent()});
  UiStage ben({.stored = signedInParent()});
  ann.application.environment().appearanceManager()->currentMode = AppearanceMode::dark;
  EXPECT_LT(ground(ann), 80);
  EXPECT_GT(ground(ben), 200);
}

}  // namespace
}  // namespace quillmar::ui
