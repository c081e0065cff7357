#pragma once

#include <functional>
#include <optional>
#include <string>

#include "client/records/family.h"
#include "foundation/observable.h"
#include "platform/dispatch.h"

namespace quillmar {

// A member as last loaded.
class FamilyMemberRow final : public ObservableObject {
 public:
  FamilyMemberRow(FamilyMember member, bool callerIsPrimary, std::function<void(const FamilyMember&)> open);

  Derived<std::string> initials{*this, "initials", [this] { return computeInitials(); }};
  Derived<std::string> displayName{*this, "displayName", [this] { return member_.displayName; }};
  Derived<std::optional<std::string>> email{*this, "email", [this] { return member_.email; }};
  Derived<std::string> status{*this, "status",
                              [this] { return std::string(member_.isActive ? "Active" : "Disabled"); }};
  Derived<std::string> statusColor{*this, "statusColor", [this] {
                                     return std::string(member_.isActive ? "brandGreen" : "statusOffline");
                                   }};
  // An editable row has a chevron.
  Derived<bool> canEdit{*this, "canEdit", [this] { return canEdit_; }};
  Action<> edit{*this, "edit", [this] { open_(member_); }, [this] { return canEdit_; }};

 private:
  std::string computeInitials() const;

  const FamilyMember member_;
  const bool canEdit_;
  const std::function<void(const FamilyMember&)> open_;
};

// An open invitation. Its remaining time is computed on each read.
class FamilyInvitationRow final : public ObservableObject {
 public:
  FamilyInvitationRow(FamilyInvitation invitation, const Dispatch& clock,
                      std::function<void(const FamilyInvitation&)> revoke);

  Derived<std::string> title{*this, "title", [this] { return "Invite: " + invitation_.inviteCode; }};
  Derived<std::string> expiry{*this, "expiry", [this] { return computeExpiry(); }};
  Derived<std::string> expiryColor{*this, "expiryColor", [this] { return computeExpiryColor(); }};
  Text revokeIcon{*this, "revokeIcon", "xmark.circle.fill"};
  Action<> revoke{*this, "revoke", [this] { revoke_(invitation_); }};

 private:
  std::string computeExpiry() const;
  std::string computeExpiryColor() const;

  const FamilyInvitation invitation_;
  const Dispatch& clock_;
  const std::function<void(const FamilyInvitation&)> revoke_;
};

}  // namespace quillmar
