#include "family/family_members_view.h"

#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include "client/family_calls.h"
#include "client/network_service.h"
#include "platform/hop.h"

namespace quillmar {
namespace {

// The alert is shown only after the sheet has closed.
constexpr auto sheetLeaves = std::chrono::milliseconds(300);

template <class Row>
using KeyedRows = std::vector<std::pair<std::string, std::shared_ptr<Row>>>;

}  // namespace

FamilyMembersView::FamilyMembersView(Environment& environment)
    : ScreenModel("FamilyMembersView"),
      environment_(environment),
      dispatch_(environment.platform().dispatch) {}

void FamilyMembersView::onAppear() { load(); }

FamilyContent FamilyMembersView::computeContent() const {
  if (isLoading()) {
    return FamilyContent::loading;
  }
  return familyResponse() ? FamilyContent::family : FamilyContent::failure;
}

std::optional<std::string> FamilyMembersView::computeFamilyName() const {
  const auto& response = familyResponse();
  return response && response->family ? std::optional(response->family->name) : std::nullopt;
}

void FamilyMembersView::load() {
  isLoading = true;
  environment_.networkService()->send(
      calls::getFamily, hoppingToMain(dispatch_, weakly([this](const Result<FamilyResponse>& result) {
                                        handleFamily(result);
                                      })));
}

void FamilyMembersView::handleFamily(const Result<FamilyResponse>& result) {
  isLoading = false;
  if (result.ok()) {
    familyResponse = result.value();
    updateRows();
  } else {
    errorAlert.show(result.error());
  }
}

void FamilyMembersView::updateRows() {
  const FamilyResponse& response = *familyResponse();
  KeyedRows<FamilyMemberRow> people;
  for (const auto& member : response.members) {
    people.emplace_back(member.id, std::make_shared<FamilyMemberRow>(
                                       member, response.isPrimary,
                                       weakly([this](const FamilyMember& tapped) { open(tapped); })));
  }
  memberRows.assign(std::move(people));

  KeyedRows<FamilyInvitationRow> invitations;
  if (response.isPrimary && response.pendingInvitations) {
    for (const auto& invitation : *response.pendingInvitations) {
      invitations.emplace_back(
          invitation.id,
          std::make_shared<FamilyInvitationRow>(
              invitation, dispatch_, weakly([this](const FamilyInvitation& revoked) { revoke(revoked); })));
    }
  }
  invitationRows.assign(std::move(invitations));
}

void FamilyMembersView::startInvitation() {
  isCreatingInvite = true;
  environment_.networkService()->send(
      calls::createInvitation, {std::nullopt},
      hoppingToMain(dispatch_, weakly([this](const Result<CreateInvitationResponse>& result) {
                      handleInvitation(result);
                    })));
}

void FamilyMembersView::handleInvitation(const Result<CreateInvitationResponse>& result) {
  isCreatingInvite = false;
  if (!result.ok()) {
    errorAlert.show(result.error());
    return;
  }
  inviteCode = result.value().inviteCode;
  inviteQRData = result.value().qrData;
  showInviteSheet = true;
}

void FamilyMembersView::copyInviteCode() { environment_.platform().clipboard.setString(inviteCode()); }

void FamilyMembersView::finishInviting() {
  showInviteSheet = false;
  load();
}

void FamilyMembersView::open(const FamilyMember& member) {
  selectedMember = member;
  showMemberSheet = true;
}

void FamilyMembersView::updatePermissions(const UpdateMemberPermissionsRequest& changes,
                                          std::function<void()> whenDone) {
  auto handle = weakly([this, whenDone = std::move(whenDone)](const Result<void>& result) {
    whenDone();
    handleChange(result);
  });
  environment_.networkService()->send(calls::updateMemberPermissions, {selectedMember()->id}, changes,
                                      hoppingToMain(dispatch_, std::move(handle)));
}

void FamilyMembersView::askToRemove() {
  showMemberSheet = false;
  dispatch_.main().asyncAfter(sheetLeaves, weakly([this] { removalConfirmation.ask(); }));
}

void FamilyMembersView::removeSelected() {
  if (!selectedMember()) {
    return;
  }
  auto handle = weakly([this](const Result<void>& result) {
    if (result.ok()) {
      selectedMember = std::nullopt;
    }
    handleChange(result);
  });
  environment_.networkService()->send(calls::removeMember, {selectedMember()->id},
                                      hoppingToMain(dispatch_, std::move(handle)));
}

// This call identifies an invitation by its code, not by its id.
void FamilyMembersView::revoke(const FamilyInvitation& invitation) {
  environment_.networkService()->send(
      calls::revokeInvitation, {invitation.inviteCode},
      hoppingToMain(dispatch_, weakly([this](const Result<void>& result) { handleChange(result); })));
}

void FamilyMembersView::handleChange(const Result<void>& result) {
  if (result.ok()) {
    load();
  } else {
    errorAlert.show(result.error());
  }
}

}  // namespace quillmar
