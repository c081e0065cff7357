#pragma once

#include "client/call.h"
#include "client/records/family.h"

// Looking up an invitation and joining a family need no account, so these two calls send no token.
namespace quillmar::calls {

inline constexpr Call<NoBody, FamilyResponse> getFamily{"GET", "/family"};
inline constexpr Call<CreateInvitationRequest, CreateInvitationResponse> createInvitation{"POST",
                                                                                          "/family/invite"};
inline constexpr Call<NoBody, void, 1> revokeInvitation{"DELETE", "/family/invite/{}"};
inline constexpr Call<NoBody, ValidateInviteResponse, 1> validateInvite{
    "GET", "/family/invite/{}", {.token = Token::none, .judging = Judging::byBody}};
inline constexpr Call<UpdateMemberPermissionsRequest, void, 1> updateMemberPermissions{"PUT",
                                                                                       "/family/members/{}"};
inline constexpr Call<NoBody, void, 1> removeMember{"DELETE", "/family/members/{}"};
inline constexpr Call<JoinFamilyRequest, JoinFamilyResponse> joinFamily{
    "POST", "/family/join", {.token = Token::none, .judging = Judging::below400}};

}  // namespace quillmar::calls
