#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/record.h"
#include "foundation/secret.h"

namespace quillmar {

struct Family {
  std::string id;
  std::string name;
  std::string primaryParentId;
  std::string createdAt;
  std::string updatedAt;
};

template <>
inline constexpr auto wire<Family> = record(required("id", &Family::id), required("name", &Family::name),
                                            required("primary_parent_id", &Family::primaryParentId),
                                            required("created_at", &Family::createdAt),
                                            required("updated_at", &Family::updatedAt));

struct FamilyMember {
  std::string id;
  std::string familyId;
  std::string parentId;
  std::string role;  // "primary"; anything else is an ordinary member
  std::string displayName;
  bool canManageDevices = false;
  bool canManagePolicies = false;
  bool isActive = false;
  std::optional<std::string> invitedBy;
  std::optional<std::string> joinedAt;
  std::string createdAt;
  std::optional<std::string> email;
};

template <>
inline constexpr auto wire<FamilyMember> =
    record(required("id", &FamilyMember::id), required("family_id", &FamilyMember::familyId),
           required("parent_id", &FamilyMember::parentId), required("role", &FamilyMember::role),
           required("display_name", &FamilyMember::displayName),
           required("can_manage_devices", &FamilyMember::canManageDevices),
           required("can_manage_policies", &FamilyMember::canManagePolicies),
           required("is_active", &FamilyMember::isActive), optional("invited_by", &FamilyMember::invitedBy),
           optional("joined_at", &FamilyMember::joinedAt), required("created_at", &FamilyMember::createdAt),
           optional("email", &FamilyMember::email));

struct FamilyInvitation {
  std::string id;
  std::string familyId;
  std::string inviteCode;  // the code to hand out
  std::string invitedBy;
  std::optional<std::string> inviteeName;
  std::string status;
  std::string createdAt;
  std::string expiresAt;
};

template <>
inline constexpr auto wire<FamilyInvitation> = record(
    required("id", &FamilyInvitation::id), required("family_id", &FamilyInvitation::familyId),
    required("invite_code", &FamilyInvitation::inviteCode),
    required("invited_by", &FamilyInvitation::invitedBy),
    optional("invitee_name", &FamilyInvitation::inviteeName), required("status", &FamilyInvitation::status),
    required("created_at", &FamilyInvitation::createdAt),
    required("expires_at", &FamilyInvitation::expiresAt));

// The members are required even without a family.
struct FamilyResponse {
  std::optional<Family> family;  // nullopt: the account has no family
  std::vector<FamilyMember> members;
  std::optional<std::vector<FamilyInvitation>> pendingInvitations;
  bool isPrimary = false;  // the requesting parent is the primary one
};

template <>
inline constexpr auto wire<FamilyResponse> = record(optional("family", &FamilyResponse::family),
                                                    required("members", &FamilyResponse::members),
                                                    optional("pending_invitations",
                                                             &FamilyResponse::pendingInvitations),
                                                    required("is_primary", &FamilyResponse::isPrimary));

struct CreateInvitationRequest {
  std::optional<std::string> inviteeName;
};

template <>
inline constexpr auto wire<CreateInvitationRequest> = record(optional("invitee_name",
                                                                      &CreateInvitationRequest::inviteeName));

struct CreateInvitationResponse {
  std::string inviteCode;
  std::string expiresAt;
  std::string qrData;  // the text of the QR code
};

template <>
inline constexpr auto wire<CreateInvitationResponse> =
    record(required("invite_code", &CreateInvitationResponse::inviteCode),
           required("expires_at", &CreateInvitationResponse::expiresAt),
           required("qr_data", &CreateInvitationResponse::qrData));

struct ValidateInviteResponse {
  bool valid = false;
  std::optional<std::string> familyName;
  std::optional<std::string> invitedBy;  // a name here, an id in FamilyInvitation
  std::optional<std::string> expiresAt;
  std::optional<std::string> error;  // why the code is not valid
};

template <>
inline constexpr auto wire<ValidateInviteResponse> =
    record(required("valid", &ValidateInviteResponse::valid),
           optional("family_name", &ValidateInviteResponse::familyName),
           optional("invited_by_name", &ValidateInviteResponse::invitedBy),
           optional("expires_at", &ValidateInviteResponse::expiresAt),
           optional("error", &ValidateInviteResponse::error));

// Creates the account of the joining parent.
struct JoinFamilyRequest {
  std::string inviteCode;
  std::string email;
  Secret password;
  std::string displayName;
};

template <>
inline constexpr auto wire<JoinFamilyRequest> =
    record(required("invite_code", &JoinFamilyRequest::inviteCode),
           required("email", &JoinFamilyRequest::email), required("password", &JoinFamilyRequest::password),
           required("display_name", &JoinFamilyRequest::displayName));

struct JoinFamilyResponse {
  std::string message;
  Secret token;  // of the new session: joining also signs in
  std::string parentId;
  std::string familyId;
  std::string familyName;
  std::string role;
};

template <>
inline constexpr auto wire<JoinFamilyResponse> = record(
    required("message", &JoinFamilyResponse::message), required("token", &JoinFamilyResponse::token),
    required("parent_id", &JoinFamilyResponse::parentId),
    required("family_id", &JoinFamilyResponse::familyId),
    required("family_name", &JoinFamilyResponse::familyName), required("role", &JoinFamilyResponse::role));

// Only fields that are set are sent.
struct UpdateMemberPermissionsRequest {
  std::optional<bool> canManageDevices;
  std::optional<bool> canManagePolicies;
  std::optional<bool> isActive;
};

template <>
inline constexpr auto wire<UpdateMemberPermissionsRequest> =
    record(optional("can_manage_devices", &UpdateMemberPermissionsRequest::canManageDevices),
           optional("can_manage_policies", &UpdateMemberPermissionsRequest::canManagePolicies),
           optional("is_active", &UpdateMemberPermissionsRequest::isActive));

}  // namespace quillmar
