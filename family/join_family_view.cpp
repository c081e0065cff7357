#include "family/join_family_view.h"

#include <string_view>
#include <utility>

#include "client/family_calls.h"
#include "client/network_service.h"
#include "family/invite_text.h"
#include "foundation/text.h"
#include "identity/auth_state.h"
#include "platform/hop.h"

namespace quillmar {
namespace {

constexpr std::size_t shortestCode = 6;
constexpr std::size_t shortestPassword = 6;

std::optional<std::string> labelled(std::string_view label, const std::optional<std::string>& text) {
  return text ? std::optional(std::string(label) + *text) : std::nullopt;
}

// A check without an answer is shown like an invalid code.
ValidateInviteResponse invalidBecause(const std::string& reason) {
  ValidateInviteResponse result;
  result.valid = false;
  result.error = reason;
  return result;
}

}  // namespace

JoinFamilyView::JoinFamilyView(Environment& environment, std::string code)
    : ScreenModel("JoinFamilyView"),
      initialInviteCode(std::move(code)),
      environment_(environment),
      dispatch_(environment.platform().dispatch) {
  upperCase_ = inviteCode.onChange([this] {
    if (auto upper = uppercased(inviteCode()); upper != inviteCode()) {
      inviteCode = std::move(upper);
    }
  });
}

void JoinFamilyView::onAppear() {
  if (!initialInviteCode.empty()) {
    inviteCode = initialInviteCode;
    checkCode();
  }
}

std::shared_ptr<QRScannerView> JoinFamilyView::makeScanner() {
  return std::make_shared<QRScannerView>(weakly([this](const std::string& text) { handleScan(text); }));
}

void JoinFamilyView::handleScan(const std::string& text) {
  if (auto code = parseInviteText(text)) {
    inviteCode = *std::move(code);
    checkCode();
  }
  showScanner = false;
}

// Called on every change, and a pasted text may be huge.
bool JoinFamilyView::isLongEnough() const {
  return characterCount(firstCharacters(inviteCode(), shortestCode)) == shortestCode;
}

bool JoinFamilyView::isInvitationValid() const { return validationResult() && validationResult()->valid; }

JoinFamilyStage JoinFamilyView::computeStage() const {
  return isInvitationValid() ? JoinFamilyStage::account : JoinFamilyStage::code;
}

bool JoinFamilyView::computeCanJoin() const {
  return !displayName().empty() && !email().empty() &&
         characterCount(password().text()) >= shortestPassword && passwordsMatch() && isInvitationValid();
}

std::optional<std::string> JoinFamilyView::computeWarning() const {
  const auto& result = validationResult();
  return result && !result->valid ? std::optional(result->error.value_or("Invalid invite code"))
                                  : std::nullopt;
}

std::optional<std::string> JoinFamilyView::computeFamilyLine() const {
  return isInvitationValid() ? labelled("Join: ", validationResult()->familyName) : std::nullopt;
}

std::optional<std::string> JoinFamilyView::computeInviterLine() const {
  return isInvitationValid() ? labelled("Invited by: ", validationResult()->invitedBy) : std::nullopt;
}

void JoinFamilyView::checkCode() {
  if (!isLongEnough()) {
    return;
  }
  isValidating = true;
  validationResult = std::nullopt;
  environment_.networkService()->send(
      calls::validateInvite, {inviteCode()},
      hoppingToMain(dispatch_, weakly([this](const Result<ValidateInviteResponse>& result) {
                      handleValidation(result);
                    })));
}

void JoinFamilyView::handleValidation(const Result<ValidateInviteResponse>& result) {
  isValidating = false;
  validationResult = result.ok() ? result.value() : invalidBecause(result.error().localizedDescription());
}

void JoinFamilyView::startOver() {
  validationResult = std::nullopt;
  inviteCode = std::string();
}

void JoinFamilyView::startJoining() {
  isJoining = true;
  environment_.networkService()->send(
      calls::joinFamily, {inviteCode(), email(), password(), displayName()},
      hoppingToMain(dispatch_,
                    weakly([this](const Result<JoinFamilyResponse>& result) { handleJoining(result); })));
}

void JoinFamilyView::handleJoining(const Result<JoinFamilyResponse>& result) {
  isJoining = false;
  if (!result.ok()) {
    errorAlert.show(result.error());
    return;
  }
  const JoinFamilyResponse& family = result.value();
  environment_.authState()->login(family.token, family.parentId, email(), displayName());
  dismiss();
}

}  // namespace quillmar
