#include "family/family_members_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "client/network_error.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;
using Kind = TransportError::Kind;

std::string member(const std::string& id, const std::string& role, const std::string& name,
                   const std::string& more) {
  return R"({"id":")" + id + R"(","family_id":"f1","parent_id":"p-)" + id + R"(","role":")" + role +
         R"(","display_name":")" + name + R"(","created_at":"2016-10-01T00:00:00Z",)" + more + "}";
}

std::string invitation(const std::string& code, const std::string& expiresAt) {
  return R"({"id":"id-of-)" + code + R"(","family_id":"f1","invite_code":")" + code +
         R"(","invited_by":"p1","status":"pending","created_at":"2016-10-08T00:00:00Z","expires_at":")" +
         expiresAt + R"("})";
}

const std::string ann = member(
    "m1", "primary", "Ann Lee",
    R"("can_manage_devices":true,"can_manage_policies":true,"is_active":true,"email":"ann@example.com")");
const std::string bob = member(
    "m2", "member", "Bob",
    R"("can_manage_devices":true,"can_manage_policies":false,"is_active":true,"email":"bob@example.com")");
const std::string cat = member("m3", "member", "Cat",
                               R"("can_manage_devices":false,"can_manage_policies":false,"is_active":false)");
const std::string lees =
    R"({"id":"f1","name":"The Lees","primary_parent_id":"p1","created_at":"x","updated_at":"y"})";

std::string family(const std::string& invitations, bool isPrimary = true) {
  return R"({"family":)" + lees + R"(,"members":[)" + ann + "," + bob + "," + cat +
         R"(],"pending_invitations":)" + invitations + R"(,"is_primary":)" + (isPrimary ? "true" : "false") +
         "}";
}

const std::string createdInvitation =
    R"({"invite_code":"AB12CD","expires_at":"2016-10-09T22:31:00Z","qr_data":"https://q.example/?code=AB12CD"})";

struct FamilyScreen : testing::Test {
  FamilyScreen() {
    app.machine.settings.set(settings::authToken, std::string("t1"));
    answerFamily(family("[" + invitation("INVITE", "2016-10-09T00:01:00Z") + "]"));
  }

  void answerFamily(const std::string& body) { app.machine.http.answerAlways("GET", "/family", 200, body); }
  void show() {
    screen->appear();
    app.settle();
    app.machine.http.forgetRequests();
  }
  FamilyMemberRow& row(const std::string& id) { return *screen->memberRows.find(id); }
  FamilyMemberSheet& openSheet(const std::string& id = "m2") {
    EXPECT_TRUE(row(id).edit());
    return *screen->showMemberSheet;
  }
  std::size_t loads() { return app.machine.http.count("GET", "/family"); }
  void expectAlert(const std::string& message) {
    EXPECT_TRUE(screen->errorAlert.isShown());
    EXPECT_EQ(screen->errorAlert.message(), message);
    EXPECT_TRUE(screen->errorAlert.dismiss());
    EXPECT_FALSE(screen->errorAlert.isShown());
  }

  TestApplication app{asParent()};
  std::shared_ptr<FamilyMembersView> screen = std::make_shared<FamilyMembersView>(app.environment());
};

TEST_F(FamilyScreen, begins_as_loading_and_fetches_on_appearing) {
  EXPECT_EQ(screen->content(), FamilyContent::loading);
  EXPECT_TRUE(screen->isLoading());
  EXPECT_EQ(screen->familyResponse(), std::nullopt);
  EXPECT_FALSE(screen->showsInviteButton());
  app.settle();
  EXPECT_EQ(loads(), 0U);
  screen->appear();
  app.settle();
  EXPECT_EQ(loads(), 1U);
  EXPECT_EQ(screen->content(), FamilyContent::family);
}

TEST_F(FamilyScreen, shows_the_family_and_its_members_in_order) {
  show();
  EXPECT_EQ(screen->familyName(), "The Lees");
  EXPECT_EQ(screen->standing(), "You are the primary parent");
  ASSERT_EQ(screen->memberRows.size(), 3U);
  EXPECT_EQ(screen->memberRows[0].displayName(), "Ann Lee");
  EXPECT_EQ(screen->memberRows[0].initials(), "AL");
  EXPECT_EQ(screen->memberRows[0].email(), "ann@example.com");
  EXPECT_EQ(screen->memberRows[0].status(), "Active");
  EXPECT_EQ(screen->memberRows[0].statusColor(), "brandGreen");
  EXPECT_EQ(screen->memberRows[2].displayName(), "Cat");
  EXPECT_EQ(screen->memberRows[2].email(), std::nullopt);
  EXPECT_EQ(screen->memberRows[2].status(), "Disabled");
  EXPECT_EQ(screen->memberRows[2].statusColor(), "statusOffline");
}

TEST_F(FamilyScreen, nobody_can_open_the_primary_parents_row) {
  show();
  EXPECT_FALSE(row("m1").canEdit());
  EXPECT_FALSE(row("m1").edit());
  EXPECT_FALSE(screen->showMemberSheet());
  EXPECT_TRUE(row("m2").canEdit());
}

TEST_F(FamilyScreen, a_member_who_is_not_primary_sees_everyone_and_can_change_nothing) {
  answerFamily(family("[" + invitation("INVITE", "2016-10-09T00:01:00Z") + "]", false));
  show();
  EXPECT_EQ(screen->standing(), "Family member");
  EXPECT_EQ(screen->memberRows.size(), 3U);
  for (const std::string id : {"m1", "m2", "m3"}) {
    EXPECT_FALSE(row(id).canEdit());
    EXPECT_FALSE(row(id).edit());
  }
  EXPECT_FALSE(screen->showsInviteButton());
  EXPECT_FALSE(screen->createInvitation());
  EXPECT_FALSE(screen->showsInvitations());
  EXPECT_EQ(screen->invitationRows.size(), 0U);
}

TEST_F(FamilyScreen, an_account_without_a_family_has_no_header) {
  answerFamily(R"({"members":[],"is_primary":false})");
  show();
  EXPECT_EQ(screen->content(), FamilyContent::family);
  EXPECT_EQ(screen->familyName(), std::nullopt);
  EXPECT_EQ(screen->memberRows.size(), 0U);
}

TEST_F(FamilyScreen, invitations_are_shown_if_there_are_any) {
  show();
  EXPECT_TRUE(screen->showsInvitations());
  ASSERT_EQ(screen->invitationRows.size(), 1U);
  EXPECT_EQ(screen->invitationRows[0].title(), "Invite: INVITE");
  EXPECT_EQ(screen->invitationRows[0].expiry(), "Expires in 1h 30m");
  EXPECT_EQ(screen->invitationRows[0].expiryColor(), "secondaryText");
  for (const std::string none : {"[]", "null"}) {
    answerFamily(family(none));
    screen->disappear();
    show();
    EXPECT_FALSE(screen->showsInvitations()) << none;
  }
}

TEST_F(FamilyScreen, the_remaining_time_is_computed_on_each_read) {
  answerFamily(family("[" + invitation("A", "2016-10-08T22:32:00Z") + "," + invitation("B", "soon") + "]"));
  show();
  auto& row = screen->invitationRows[0];
  EXPECT_EQ(row.expiry(), "Expires in 1m");
  app.advance(59s);
  EXPECT_EQ(row.expiry(), "Expires in 0m");
  EXPECT_EQ(row.expiryColor(), "secondaryText");
  app.advance(1s);
  EXPECT_EQ(row.expiry(), "Expires in Expired");
  EXPECT_EQ(row.expiryColor(), "brandRed");
  EXPECT_EQ(screen->invitationRows[1].expiry(), "Expires in Unknown");
  EXPECT_EQ(screen->invitationRows[1].expiryColor(), "secondaryText");
  EXPECT_EQ(loads(), 0U) << "no timer asks anew";
}

TEST_F(FamilyScreen, a_failed_first_load_shows_an_alert_and_can_be_retried) {
  app.machine.http.answer("GET", "/family", 500, R"({"error":"Try later"})");
  screen->appear();
  app.settle();
  EXPECT_EQ(screen->content(), FamilyContent::failure);
  EXPECT_FALSE(screen->createInvitation.isEnabled());
  expectAlert("Try later");
  EXPECT_TRUE(screen->tryAgain());
  EXPECT_EQ(screen->content(), FamilyContent::loading);
  EXPECT_FALSE(screen->tryAgain());
  app.settle();
  EXPECT_EQ(screen->content(), FamilyContent::family);
  EXPECT_EQ(loads(), 2U);
}

TEST_F(FamilyScreen, a_failed_later_load_keeps_the_content) {
  show();
  screen->disappear();
  app.machine.http.fail("GET", "/family", Kind::timedOut);
  screen->appear();
  app.settle();
  EXPECT_EQ(screen->content(), FamilyContent::family);
  EXPECT_EQ(screen->memberRows.size(), 3U);
  EXPECT_FALSE(screen->tryAgain());
  expectAlert("The request timed out.");
}

TEST_F(FamilyScreen, every_kind_of_failure_shows_the_alert) {
  struct Row {
    int status;
    std::string body;
    std::string message;
  };
  for (const auto& row : std::vector<Row>{
           {200, "<html>", "The data couldn’t be read because it isn’t in the correct format."},
           {200, "", "The data couldn’t be read because it isn’t in the correct format."},
           {200, R"({"is_primary":true})", "The data couldn’t be read because it is missing."},
           {200, R"({"members":[{}],"is_primary":true})", "The data couldn’t be read because it is missing."},
           {403, "{}", "Access denied"}}) {
    app.machine.http.answer("GET", "/family", row.status, row.body);
    screen->disappear();
    screen->appear();
    app.settle();
    EXPECT_EQ(screen->content(), FamilyContent::failure);
    expectAlert(row.message);
  }
}

TEST_F(FamilyScreen, members_with_the_same_id_have_a_row_each) {
  answerFamily(R"({"members":[)" + bob + "," + bob + R"(],"is_primary":true})");
  show();
  ASSERT_EQ(screen->memberRows.size(), 2U);
  EXPECT_NE(&screen->memberRows[0], &screen->memberRows[1]);
}

TEST_F(FamilyScreen, an_invitation_is_created_without_a_name_and_shown) {
  show();
  app.machine.http.answer("POST", "/family/invite", 200, createdInvitation);
  EXPECT_TRUE(screen->createInvitation());
  EXPECT_TRUE(screen->isCreatingInvite());
  EXPECT_FALSE(screen->createInvitation());
  app.settle();
  EXPECT_EQ(app.machine.http.calls(), Names{"POST /family/invite"});
  EXPECT_EQ(*app.machine.http.requests().front().body, "{}");
  EXPECT_FALSE(screen->isCreatingInvite());
  ASSERT_TRUE(screen->showInviteSheet());
  EXPECT_EQ(screen->showInviteSheet->inviteCode(), "AB12CD");
  EXPECT_EQ(screen->showInviteSheet->qrCode(), (QRCodeView{"https://q.example/?code=AB12CD", 200}));
  EXPECT_TRUE(screen->showInviteSheet->qrCode()->modules(app.machine.qrEncoder).has_value());
}

TEST_F(FamilyScreen, an_invitation_without_a_qr_text_shows_only_its_code) {
  show();
  app.machine.http.answer("POST", "/family/invite", 200,
                          R"({"invite_code":"AB12CD","expires_at":"never","qr_data":""})");
  screen->createInvitation();
  app.settle();
  ASSERT_TRUE(screen->showInviteSheet());
  EXPECT_EQ(screen->showInviteSheet->qrCode(), std::nullopt);
  EXPECT_EQ(screen->showInviteSheet->inviteCode(), "AB12CD");
  EXPECT_EQ(screen->showInviteSheet->expiryText(), "This invitation expires in 24 hours");
}

TEST_F(FamilyScreen, copying_puts_the_code_on_the_clipboard_without_a_message) {
  show();
  app.machine.http.answer("POST", "/family/invite", 200, createdInvitation);
  screen->createInvitation();
  app.settle();
  int changes = 0;
  const auto listening = screen->observe([&](const Member& /*any*/) { ++changes; });
  EXPECT_TRUE(screen->showInviteSheet->copyCode());
  EXPECT_EQ(app.machine.clipboard.string(), "AB12CD");
  EXPECT_EQ(changes, 0);
  EXPECT_TRUE(screen->showInviteSheet());
}

TEST_F(FamilyScreen, done_on_the_invitation_reloads_the_list) {
  show();
  app.machine.http.answer("POST", "/family/invite", 200, createdInvitation);
  screen->createInvitation();
  app.settle();
  EXPECT_EQ(loads(), 0U);
  answerFamily(family("[" + invitation("AB12CD", "2016-10-09T22:31:00Z") + "]"));
  EXPECT_TRUE(screen->showInviteSheet->done());
  EXPECT_FALSE(screen->showInviteSheet());
  EXPECT_EQ(screen->content(), FamilyContent::loading);
  app.settle();
  EXPECT_EQ(loads(), 1U);
  EXPECT_EQ(screen->invitationRows[0].title(), "Invite: AB12CD");
  EXPECT_EQ(screen->invitationRows[0].expiry(), "Expires in 24h 0m");
}

TEST_F(FamilyScreen, a_refused_invitation_shows_the_alert) {
  show();
  app.machine.http.answer("POST", "/family/invite", 403);
  screen->createInvitation();
  app.settle();
  EXPECT_FALSE(screen->isCreatingInvite());
  EXPECT_FALSE(screen->showInviteSheet());
  EXPECT_EQ(screen->inviteCode(), "");
  expectAlert("Access denied");
  EXPECT_TRUE(screen->createInvitation.isEnabled());
}

TEST_F(FamilyScreen, a_tapped_member_opens_with_its_rows_and_permissions) {
  show();
  auto& sheet = openSheet();
  EXPECT_EQ(screen->selectedMember()->id, "m2");
  EXPECT_EQ(sheet.name(), "Bob");
  EXPECT_EQ(sheet.email(), "bob@example.com");
  EXPECT_EQ(sheet.role(), "Member");
  ASSERT_EQ(sheet.permissions.size(), 3U);
  EXPECT_EQ(sheet.permissions[0].title(), "Can Manage Devices");
  EXPECT_TRUE(sheet.permissions[0].isOn());
  EXPECT_EQ(sheet.permissions[1].title(), "Can Manage Policies");
  EXPECT_FALSE(sheet.permissions[1].isOn());
  EXPECT_EQ(sheet.permissions[2].title(), "Account Active");
  EXPECT_TRUE(sheet.permissions[2].isOn());
  EXPECT_TRUE(sheet.done());
  EXPECT_FALSE(screen->showMemberSheet());
  app.settle();
  EXPECT_EQ(loads(), 0U);
  EXPECT_EQ(openSheet("m3").email(), "");
}

TEST_F(FamilyScreen, a_toggle_sends_only_its_permission_and_reloads) {
  struct Row {
    std::string key, body;
  };
  show();
  app.machine.http.answerAlways("PUT", "/family/members/m2", 200, "{}");
  for (const auto& row : std::vector<Row>{{"canManageDevices", R"({"can_manage_devices":false})"},
                                          {"canManagePolicies", R"({"can_manage_policies":true})"},
                                          {"isActive", R"({"is_active":false})"}}) {
    app.machine.http.forgetRequests();
    auto& sheet = openSheet();
    EXPECT_TRUE(sheet.permissions.find(row.key)->flip());
    app.settle();
    EXPECT_EQ(app.machine.http.calls(), (Names{"PUT /family/members/m2", "GET /family"}));
    EXPECT_EQ(*app.machine.http.requests().front().body, row.body);
    EXPECT_TRUE(screen->showMemberSheet()) << "the sheet stays";
    screen->showMemberSheet = false;
  }
}

TEST_F(FamilyScreen, an_open_sheet_keeps_its_initial_values) {
  show();
  app.machine.http.answer("PUT", "/family/members/m2", 200, "{}");
  auto& toggle = openSheet().permissions[0];
  std::string changed = family("[]");
  changed.replace(changed.find(bob), bob.size(),
                  member("m2", "member", "Bob",
                         R"("can_manage_devices":false,"can_manage_policies":false,"is_active":true)"));
  answerFamily(changed);
  toggle.flip();
  EXPECT_TRUE(toggle.isOn());
  EXPECT_EQ(screen->content(), FamilyContent::family);
  app.settle();
  EXPECT_TRUE(toggle.isOn()) << "until the sheet is opened anew";
  screen->showMemberSheet = false;
  EXPECT_FALSE(openSheet().permissions[0].isOn());
}

TEST_F(FamilyScreen, the_lists_are_hidden_while_they_load_under_the_open_sheet) {
  show();
  app.machine.http.answer("PUT", "/family/members/m2", 200, "{}");
  app.machine.http.hold("GET", "/family");
  openSheet().permissions[0].flip();
  app.settle();
  EXPECT_EQ(screen->content(), FamilyContent::loading);
  EXPECT_TRUE(screen->showMemberSheet());
}

TEST_F(FamilyScreen, a_double_toggle_is_one_call_and_does_not_block_other_permissions) {
  show();
  app.machine.http.hold();
  auto& sheet = openSheet();
  EXPECT_TRUE(sheet.permissions[0].flip());
  EXPECT_TRUE(sheet.permissions[0].isUpdating());
  EXPECT_FALSE(sheet.permissions[0].flip());
  app.settle();
  EXPECT_FALSE(sheet.permissions[0].flip());
  EXPECT_TRUE(sheet.permissions[1].flip());
  app.settle();
  EXPECT_EQ(app.machine.http.count("PUT", "/family/members/m2"), 2U);
  app.machine.http.complete(0, httpAnswer(200, "{}"));
  app.settle();
  EXPECT_FALSE(sheet.permissions[0].isUpdating());
  EXPECT_TRUE(sheet.permissions[0].flip.isEnabled());
  EXPECT_FALSE(sheet.permissions[1].flip.isEnabled());
  EXPECT_EQ(loads(), 1U);
  app.machine.http.complete(0, httpAnswer(200, "{}"));
  app.settle();
  EXPECT_EQ(loads(), 2U) << "each change ends in a load of its own";
}

TEST_F(FamilyScreen, a_refused_toggle_shows_the_alert_and_does_not_reload) {
  show();
  app.machine.http.answer("PUT", "/family/members/m2", 403);
  auto& toggle = openSheet().permissions[0];
  toggle.flip();
  app.settle();
  expectAlert("Access denied");
  EXPECT_TRUE(toggle.isOn());
  EXPECT_TRUE(toggle.flip.isEnabled());
  EXPECT_EQ(loads(), 0U);
}

TEST_F(FamilyScreen, an_answer_is_handled_after_the_sheet_was_dismissed) {
  show();
  app.machine.http.hold();
  openSheet().permissions[0].flip();
  app.settle();
  screen->showMemberSheet = false;
  app.machine.http.complete(0, httpAnswer(404));
  app.settle();
  expectAlert(NetworkError::notFound().localizedDescription());
}

TEST_F(FamilyScreen, a_sheet_without_a_member_shows_and_changes_nothing) {
  show();
  screen->showMemberSheet = true;
  auto& sheet = *screen->showMemberSheet;
  EXPECT_EQ(sheet.name(), "");
  EXPECT_EQ(sheet.email(), "");
  EXPECT_EQ(sheet.role(), "");
  EXPECT_FALSE(sheet.permissions[2].isOn());
  EXPECT_FALSE(sheet.permissions[2].flip());
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(FamilyScreen, removing_asks_after_the_sheet_is_dismissed) {
  show();
  EXPECT_TRUE(openSheet().removeFromFamily());
  EXPECT_FALSE(screen->showMemberSheet());
  app.advance(299ms);
  EXPECT_FALSE(screen->removalConfirmation.isShown());
  EXPECT_FALSE(screen->removalConfirmation.confirm());
  app.advance(1ms);
  EXPECT_TRUE(screen->removalConfirmation.isShown());
  EXPECT_TRUE(screen->removalConfirmation.cancel());
  EXPECT_FALSE(screen->removalConfirmation.isShown());
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(FamilyScreen, a_confirmed_removal_is_sent_and_reloads) {
  show();
  app.machine.http.answer("DELETE", "/family/members/m2", 200, "{}");
  openSheet().removeFromFamily();
  app.advance(300ms);
  EXPECT_TRUE(screen->removalConfirmation.confirm());
  EXPECT_FALSE(screen->removalConfirmation.isShown());
  EXPECT_FALSE(screen->removalConfirmation.confirm());
  EXPECT_TRUE(screen->selectedMember().has_value());
  app.settle();
  EXPECT_EQ(app.machine.http.calls(), (Names{"DELETE /family/members/m2", "GET /family"}));
  EXPECT_EQ(screen->selectedMember(), std::nullopt);
}

TEST_F(FamilyScreen, a_refused_removal_shows_the_alert_and_changes_nothing) {
  show();
  app.machine.http.fail("DELETE", "/family/members/m2", Kind::networkConnectionLost);
  openSheet().removeFromFamily();
  app.advance(300ms);
  screen->removalConfirmation.confirm();
  app.settle();
  expectAlert("The network connection was lost.");
  EXPECT_EQ(screen->selectedMember()->id, "m2");
  EXPECT_EQ(loads(), 0U);
}

TEST_F(FamilyScreen, a_removal_without_a_member_sends_nothing) {
  show();
  screen->removalConfirmation.isShown = true;
  EXPECT_TRUE(screen->removalConfirmation.confirm());
  app.settle();
  EXPECT_TRUE(app.machine.http.requests().empty());
}

TEST_F(FamilyScreen, revoking_sends_the_code_and_reloads_without_confirmation) {
  show();
  app.machine.http.answer("DELETE", "/family/invite/INVITE", 200, "{}");
  answerFamily(family("[]"));
  EXPECT_TRUE(screen->invitationRows[0].revoke());
  app.settle();
  EXPECT_EQ(app.machine.http.calls(), (Names{"DELETE /family/invite/INVITE", "GET /family"}));
  EXPECT_FALSE(screen->showsInvitations());
}

TEST_F(FamilyScreen, a_refused_revocation_shows_the_alert_and_keeps_the_row) {
  show();
  app.machine.http.answer("DELETE", "/family/invite/INVITE", 500, R"({"error":"Gone already"})");
  screen->invitationRows[0].revoke();
  app.settle();
  expectAlert("Gone already");
  EXPECT_EQ(screen->invitationRows.size(), 1U);
  EXPECT_EQ(loads(), 0U);
}

TEST_F(FamilyScreen, answers_for_a_destroyed_screen_are_dropped) {
  show();
  app.machine.http.hold();
  auto& sheet = openSheet();
  sheet.permissions[0].flip();
  screen->invitationRows[0].revoke();
  sheet.removeFromFamily();
  app.settle();
  screen.reset();
  app.machine.http.releaseAll();
  app.advance(1s);
  EXPECT_EQ(loads(), 0U);
}

TEST_F(FamilyScreen, done_dismisses_the_screen) {
  bool dismissed = false;
  screen->setDismissHandler([&] { dismissed = true; });
  EXPECT_TRUE(screen->done());
  EXPECT_TRUE(dismissed);
}

TEST_F(FamilyScreen, the_texts_are_exact) {
  show();
  EXPECT_EQ(screen->title(), "Family");
  EXPECT_EQ(screen->doneTitle(), "Done");
  EXPECT_EQ(screen->loadingText(), "Loading family...");
  EXPECT_EQ(screen->failureText(), "Unable to load family");
  EXPECT_EQ(screen->tryAgainTitle(), "Try Again");
  EXPECT_EQ(screen->membersSection(), "Family Members");
  EXPECT_EQ(screen->invitationsSection(), "Pending Invitations");
  EXPECT_EQ(screen->removeTitle(), "Remove Family Member?");
  EXPECT_EQ(screen->removeText(), "This will revoke their access to your family's devices.");
  EXPECT_EQ(screen->confirmTitle(), "Remove");
  EXPECT_EQ(screen->errorAlert.title(), "Error");
  EXPECT_EQ(screen->errorAlert.okTitle(), "OK");
  const InviteFamilyMemberSheet invite(*screen);
  EXPECT_EQ(invite.title(), "Invite Family Member");
  EXPECT_EQ(invite.doneTitle(), "Done");
  EXPECT_EQ(invite.inviteCodeTitle(), "Invite Code");
  EXPECT_EQ(invite.copyTitle(), "Copy Code");
  EXPECT_EQ(invite.shareHeading(), "Share this with a family member");
  EXPECT_EQ(invite.shareText(),
            "They can scan this QR code or enter the invite code when they open the Quillmar app.");
  const FamilyMemberSheet sheet(*screen);
  EXPECT_EQ(sheet.title(), "Family Member");
  EXPECT_EQ(sheet.doneTitle(), "Done");
  EXPECT_EQ(sheet.nameTitle(), "Name");
  EXPECT_EQ(sheet.emailTitle(), "Email");
  EXPECT_EQ(sheet.roleTitle(), "Role");
  EXPECT_EQ(sheet.permissionsSection(), "Permissions");
  EXPECT_EQ(sheet.removeTitle(), "Remove from Family");
}

}  // namespace
}  // namespace quillmar
