#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "console/child_detail_view.h"
#include "console/settings_view.h"
#include "family/family_members_view.h"
#include "family/join_family_view.h"
#include "tests/journeys/people.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Names = std::vector<std::string>;

// Two whole applications: Ann has a family, Ben is to join it.
struct FamilyJourney : testing::Test {
  FamilyJourney() {
    ann.chooseRole();
    ann.signUp("Ann Fielding", "ann@example.com");
    ann.addChild("Mia");
    ben.chooseRole();
  }

  // Opens the family page, which loads.
  FamilyMembersView& openFamily(Parent& parent) {
    if (auto* shown = parent.dashboard().showFamilyMembers.get()) {
      parent.press(shown->done);
    }
    parent.press(parent.dashboard().openFamilyMembers);
    return *parent.dashboard().showFamilyMembers;
  }

  // Creates an invitation; returns the text of its QR code.
  std::string invite() {
    auto& family = openFamily(ann);
    ann.press(family.createInvitation);
    auto& sheet = *family.showInviteSheet;
    code = sheet.inviteCode();
    const auto picture = sheet.qrCode();
    const std::string text = picture ? ann.textInPicture(*picture) : std::string();
    ann.press(sheet.done);
    return text;
  }

  JoinFamilyView& openJoining() {
    ben.press(ben.screen<LoginView>().joinFamily);
    return ben.screen<JoinFamilyView>();
  }
  void scan(JoinFamilyView& joining, const std::string& text) {
    ben.press(joining.scanQRCode);
    // A copy: scanning dismisses the scanner.
    const auto hand = joining.showScanner->onScan;
    hand(text);
    ben.settle();
  }
  void fillIn(JoinFamilyView& joining) {
    joining.displayName = std::string("Ben Fielding");
    joining.email = std::string("ben@example.com");
    joining.password = std::string(Parent::password);
    joining.confirmPassword = std::string(Parent::password);
  }
  void joinAsBen() {
    auto& joining = openJoining();
    scan(joining, invite());
    fillIn(joining);
    ben.press(joining.join);
    EXPECT_EQ(ben.screenNames(), Names{"DeviceListView"});
  }

  // Ben's row on Ann's page.
  FamilyMemberRow& rowOfBen() { return openFamily(ann).memberRows[1]; }
  void flip(std::string_view permission) {
    ann.press(rowOfBen().edit);
    auto& sheet = *ann.dashboard().showFamilyMembers->showMemberSheet;
    ann.press(sheet.permissions.find(permission)->flip);
    EXPECT_FALSE(ann.dashboard().showFamilyMembers->errorAlert.isShown());
    ann.press(sheet.done);
  }

  ChildDetailView& pageOfMia(Parent& parent) {
    if (const auto shown = parent.find<ChildDetailView>()) {
      return *shown;
    }
    parent.press(parent.card().tap);
    return parent.screen<ChildDetailView>();
  }
  // Blocks the site as Ben; returns the alert's message, empty on success.
  std::string blockAsBen(const std::string& site) {
    auto& page = pageOfMia(ben);
    page.policySection.newBlockedDomain = site;
    ben.press(page.policySection.addBlockedSite);
    const std::string said = page.errorAlert.isShown() ? page.errorAlert.message() : std::string();
    page.errorAlert.dismiss();
    ben.press(page.done);
    return said;
  }
  std::string addChildAsBen(const std::string& name) {
    ben.addChild(name);
    const auto form = ben.find<AddChildView>();
    if (!form) {
      return {};
    }
    EXPECT_TRUE(form->errorAlert.isShown());
    const std::string said = form->errorAlert.message();
    form->errorAlert.dismiss();
    ben.press(form->cancel);
    return said;
  }
  static Names children(Parent& parent) {
    Names names;
    for (const auto& child : parent.dashboard().children()) {
      names.push_back(child.name);
    }
    return names;
  }

  // Opens the sheet that asks for the password.
  DeleteAccountSheet& openDeletion(Parent& parent) {
    parent.press(parent.dashboard().openSettings);
    auto& settings = parent.screen<SettingsView>();
    parent.press(settings.deleteAccount);
    EXPECT_TRUE(settings.deletionConfirmation.isShown());
    parent.press(settings.deletionConfirmation.confirm);
    return *settings.showDeleteAccountPassword;
  }
  void deleteWith(Parent& parent, DeleteAccountSheet& sheet, const std::string& password) {
    EXPECT_TRUE(sheet.deleteAccountPassword.input(password));
    parent.press(sheet.deleteMyAccount);
  }
  std::string signIn(Parent& parent, const std::string& email) {
    auto& login = parent.screen<LoginView>();
    login.email = email;
    login.password = std::string(Parent::password);
    parent.press(login.signIn);
    const auto failed = parent.find<LoginView>();
    return failed ? failed->errorAlert.message() : std::string();
  }

  SharedTime time;
  RealService service{time.clock()};
  Parent ann{service, time};
  Parent ben{service, time};
  std::string code;  // of the newest invitation
};

TEST_F(FamilyJourney, an_invitation_is_scanned_from_one_machine_by_the_other) {
  const std::string text = invite();
  EXPECT_EQ(code.size(), 6U);
  EXPECT_THAT(text, HasSubstr("code=" + code));
  auto& family = *ann.dashboard().showFamilyMembers;
  EXPECT_EQ(family.familyName(), "Fielding Family");
  EXPECT_EQ(family.standing(), "You are the primary parent");
  ASSERT_EQ(family.memberRows.size(), 1U);
  EXPECT_FALSE(family.memberRows[0].canEdit()) << "nobody edits the primary parent";
  ASSERT_EQ(family.invitationRows.size(), 1U);
  EXPECT_EQ(family.invitationRows[0].title(), "Invite: " + code);
  EXPECT_EQ(family.invitationRows[0].expiry(), "Expires in 24h 0m");

  auto& joining = openJoining();
  service->clearRequests();
  scan(joining, text);
  EXPECT_FALSE(joining.showScanner());
  EXPECT_EQ(joining.inviteCode(), code);
  EXPECT_EQ(service.count("GET", "/api/v1/family/invite/" + code), 1);
  EXPECT_EQ(joining.stage(), JoinFamilyStage::account);
  EXPECT_EQ(joining.familyLine(), "Join: Fielding Family");
  EXPECT_EQ(joining.inviterLine(), "Invited by: Ann Fielding");
  EXPECT_FALSE(joining.join.isEnabled()) << "nothing is filled in";
  fillIn(joining);
  ben.press(joining.join);

  EXPECT_EQ(ben.screenNames(), Names{"DeviceListView"});
  EXPECT_THAT(children(ben), ElementsAre("Mia"));
  EXPECT_THAT(ben.setting("authToken"), Not(IsEmpty()));
  EXPECT_THAT(ben.setting("parentId"), Not(IsEmpty()));
  EXPECT_NE(ben.setting("parentId"), ann.setting("parentId"));
  EXPECT_EQ(ben.setting("parentEmail"), "ben@example.com");
  EXPECT_EQ(ben.setting("parentName"), "Ben Fielding");
  EXPECT_FALSE(ben.machine.settings.object("authTokenTimestamp"));

  auto& familyNow = openFamily(ann);
  ASSERT_EQ(familyNow.memberRows.size(), 2U);
  EXPECT_EQ(familyNow.memberRows[1].displayName(), "Ben Fielding");
  EXPECT_EQ(familyNow.memberRows[1].status(), "Active");
  EXPECT_TRUE(familyNow.memberRows[1].canEdit());
  EXPECT_FALSE(familyNow.showsInvitations()) << "it was used";

  auto& bensFamily = openFamily(ben);
  EXPECT_EQ(bensFamily.standing(), "Family member");
  EXPECT_FALSE(bensFamily.showsInviteButton());
  EXPECT_FALSE(bensFamily.memberRows[1].canEdit());
}

TEST_F(FamilyJourney, a_session_started_by_joining_is_refreshed_at_the_next_start) {
  joinAsBen();
  const std::string first = ben.setting("authToken");
  service->clearRequests();
  ben.restart();
  ben.settle();
  EXPECT_EQ(service.count("POST", "/api/v1/auth/refresh"), 1);
  EXPECT_NE(ben.setting("authToken"), first);
  EXPECT_EQ(ben.machine.settings.date("authTokenTimestamp"), ben.machine.dispatch.now());
  EXPECT_THAT(children(ben), ElementsAre("Mia"));
}

TEST_F(FamilyJourney, a_code_typed_in_lower_case_works_too) {
  invite();
  auto& joining = openJoining();
  std::string typed = code;
  std::ranges::transform(typed, typed.begin(), [](unsigned char c) { return std::tolower(c); });
  joining.inviteCode = typed;
  ben.press(joining.validateCode);
  EXPECT_EQ(joining.stage(), JoinFamilyStage::account);
  fillIn(joining);
  ben.press(joining.join);
  EXPECT_THAT(children(ben), ElementsAre("Mia"));
}

TEST_F(FamilyJourney, invalid_invitations_are_refused) {
  const auto warningFor = [&](const std::string& text) {
    auto& joining = openJoining();
    scan(joining, text);
    EXPECT_EQ(joining.stage(), JoinFamilyStage::code);
    const auto warning = joining.warning();
    ben.press(joining.cancel);
    return warning.value_or("none");
  };
  EXPECT_NE(warningFor("ABC123"), "none") << "never given";

  const std::string revoked = invite();
  ann.press(ann.dashboard().showFamilyMembers->invitationRows[0].revoke);
  EXPECT_EQ(ann.dashboard().showFamilyMembers->invitationRows.size(), 0U);
  EXPECT_EQ(warningFor(revoked), "This invitation was taken back.");

  const std::string old = invite();
  auto& joining = openJoining();
  scan(joining, old);
  fillIn(joining);
  ann.app().setScenePhase(ScenePhase::background);
  time.advance(24h);
  ann.app().setScenePhase(ScenePhase::active);
  ben.press(joining.join);
  EXPECT_TRUE(joining.errorAlert.isShown()) << "it was good when it was checked";
  EXPECT_EQ(joining.errorAlert.message(), "This invitation has expired. Ask for a new one.");
  EXPECT_EQ(joining.email(), "ben@example.com") << "what was typed stays";
  ben.press(joining.errorAlert.dismiss);
  ben.press(joining.cancel);
  EXPECT_EQ(warningFor(old), "This invitation has expired. Ask for a new one.");
  EXPECT_THAT(ben.setting("authToken"), IsEmpty());

  joinAsBen();
  const std::string used = code;
  Parent cleo(service, time);
  cleo.chooseRole();
  cleo.press(cleo.screen<LoginView>().joinFamily);
  auto& third = cleo.screen<JoinFamilyView>();
  third.inviteCode = used;
  cleo.press(third.validateCode);
  EXPECT_EQ(third.warning(), "This invitation was used already.");
}

TEST_F(FamilyJourney, revoked_permissions_are_denied_and_the_others_still_work) {
  joinAsBen();
  EXPECT_EQ(blockAsBen("ads.example"), "");
  EXPECT_EQ(addChildAsBen("Leo"), "");
  EXPECT_THAT(pageOfMia(ann).policySection.blockedDomains(), ElementsAre("ads.example"))
      << "both see the same";
  ann.press(pageOfMia(ann).done);

  flip("canManagePolicies");
  EXPECT_EQ(blockAsBen("games.example"), "Access denied");
  EXPECT_THAT(pageOfMia(ben).policySection.blockedDomains(), ElementsAre("ads.example"));
  ben.press(pageOfMia(ben).done);
  EXPECT_EQ(addChildAsBen("Zoe"), "");

  flip("canManageDevices");
  EXPECT_EQ(addChildAsBen("Max"), "Access denied");
  EXPECT_THAT(children(ben), ElementsAre("Mia", "Leo", "Zoe")) << "he still sees what there is";

  flip("canManagePolicies");
  EXPECT_EQ(blockAsBen("games.example"), "");
  EXPECT_EQ(addChildAsBen("Max"), "Access denied");
}

TEST_F(FamilyJourney, a_toggle_keeps_the_value_from_opening_the_sheet) {
  joinAsBen();
  ann.press(rowOfBen().edit);
  auto& family = *ann.dashboard().showFamilyMembers;
  EXPECT_EQ(family.showMemberSheet->name(), "Ben Fielding");
  EXPECT_EQ(family.showMemberSheet->email(), "ben@example.com");
  EXPECT_EQ(family.showMemberSheet->role(), "Member");
  auto& toggle = *family.showMemberSheet->permissions.find("isActive");
  EXPECT_TRUE(toggle.isOn());
  ann.press(toggle.flip);
  EXPECT_TRUE(toggle.isOn());
  EXPECT_EQ(family.memberRows[1].status(), "Disabled") << "the list beneath was loaded again";
  ann.press(family.showMemberSheet->done);
  ann.press(family.memberRows[1].edit);
  EXPECT_FALSE(family.showMemberSheet->permissions.find("isActive")->isOn());
}

TEST_F(FamilyJourney, a_disabled_member_sees_the_family_but_no_child_until_enabled_again) {
  joinAsBen();
  flip("isActive");
  time.advance(30s);
  EXPECT_THAT(children(ben), ElementsAre("Mia")) << "a silent refresh that fails takes nothing away";
  ben.press(ben.dashboard().loadChildren);
  EXPECT_THAT(children(ben), IsEmpty());
  EXPECT_EQ(openFamily(ben).memberRows[1].status(), "Disabled");
  EXPECT_EQ(ben.screenNames(), (Names{"DeviceListView", "FamilyMembersView"})) << "still signed in";

  flip("isActive");
  ben.press(ben.dashboard().showFamilyMembers->done);
  EXPECT_THAT(children(ben), ElementsAre("Mia"));
}

TEST_F(FamilyJourney, a_removed_member_has_no_family) {
  joinAsBen();
  ann.press(rowOfBen().edit);
  auto& family = *ann.dashboard().showFamilyMembers;
  ann.press(family.showMemberSheet->removeFromFamily);
  EXPECT_FALSE(family.showMemberSheet());
  EXPECT_FALSE(family.removalConfirmation.isShown()) << "not before the sheet is gone";
  time.advance(300ms);
  EXPECT_TRUE(family.removalConfirmation.isShown());
  ann.press(family.removalConfirmation.cancel);
  EXPECT_EQ(family.memberRows.size(), 2U);

  ann.press(family.memberRows[1].edit);
  ann.press(family.showMemberSheet->removeFromFamily);
  time.advance(300ms);
  ann.press(family.removalConfirmation.confirm);
  EXPECT_FALSE(family.errorAlert.isShown()) << family.errorAlert.message();
  EXPECT_EQ(family.memberRows.size(), 1U);

  time.advance(30s);
  EXPECT_THAT(children(ben), IsEmpty()) << "the next refresh says so";
  EXPECT_EQ(ben.screenNames(), Names{"DeviceListView"});
  auto& bens = openFamily(ben);
  EXPECT_EQ(bens.content(), FamilyContent::family) << bens.errorAlert.message();
  EXPECT_EQ(bens.familyName(), std::nullopt);
  EXPECT_EQ(bens.memberRows.size(), 0U);
  EXPECT_THAT(children(ann), ElementsAre("Mia"));
}

TEST_F(FamilyJourney, an_account_is_deleted_only_with_the_right_password) {
  joinAsBen();
  auto& sheet = openDeletion(ann);
  EXPECT_FALSE(sheet.deleteMyAccount.isEnabled()) << "without a password";
  const std::string token = ann.setting("authToken");
  deleteWith(ann, sheet, "wrong horse");
  auto& settings = ann.screen<SettingsView>();
  EXPECT_TRUE(settings.showDeleteError());
  EXPECT_EQ(settings.deleteAccountError(), "Incorrect password. Please try again.");
  EXPECT_EQ(settings.deleteAccountPassword(), "");
  EXPECT_TRUE(settings.showDeleteAccountPassword()) << "to try again";
  EXPECT_THAT(ann.setting("authToken"), Not(IsEmpty()));
  ann.press(settings.dismissDeleteError);

  deleteWith(ann, sheet, Parent::password);
  EXPECT_EQ(ann.screenNames(), Names{"LoginView"});
  for (const auto* key : {"authToken", "parentId", "parentEmail", "parentName"}) {
    EXPECT_FALSE(ann.machine.settings.object(key)) << key;
  }
  EXPECT_EQ(ann.setting("com.quillmar.deviceRole"), "parent");
  EXPECT_EQ(service->ask("GET", "/api/v1/family", {}, token).status, 401) << "the service knows her no more";
  EXPECT_NE(signIn(ann, "ann@example.com"), "");
  EXPECT_EQ(ann.screenNames(), Names{"LoginView"});

  // The family was deleted with Ann's account; Ben's account remains.
  time.advance(30s);
  EXPECT_THAT(children(ben), IsEmpty());
  EXPECT_EQ(ben.screenNames(), Names{"DeviceListView"});

  ann.signUp("Ann Fielding", "ann@example.com");
  EXPECT_EQ(ann.screenNames(), Names{"DeviceListView"}) << "the address is free again";
  EXPECT_THAT(children(ann), IsEmpty());
}

TEST_F(FamilyJourney, a_member_deleting_the_account_does_not_change_the_family) {
  joinAsBen();
  EXPECT_EQ(addChildAsBen("Leo"), "");
  deleteWith(ben, openDeletion(ben), Parent::password);
  EXPECT_EQ(ben.screenNames(), Names{"LoginView"});
  EXPECT_EQ(openFamily(ann).memberRows.size(), 1U);
  time.advance(30s);
  EXPECT_THAT(children(ann), ElementsAre("Mia", "Leo"));
}

}  // namespace
}  // namespace quillmar
