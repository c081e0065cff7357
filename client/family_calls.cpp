#include <utility>

#include "client/judging.h"
#include "client/network_service.h"

namespace quillmar {
namespace {

// Whether a code is good stands in the record, so that the status says nothing.
Result<ValidateInviteResponse> judgeInvite(const DataTaskResult& result) {
  if (result.error) {
    return *result.error;
  }
  return result.data ? decodeJson<ValidateInviteResponse>(*result.data)
                     : Result<ValidateInviteResponse>(Error(NetworkError::invalidResponse()));
}

Result<JoinFamilyResponse> judgeJoining(const DataTaskResult& result) {
  const auto answer = answerOf(result);
  if (!answer.ok()) {
    return answer.error();
  }
  const auto& [data, response] = answer.value();
  if (!response.status) {
    return Error(NetworkError::invalidResponse());
  }
  if (response.status == 409) {
    return Error(NetworkError::serverError("Email already registered"));
  }
  if (*response.status >= 400) {
    return Error(NetworkError::serverError(serverWords(data, "Failed to join family")));
  }
  return decodeJson<JoinFamilyResponse>(data);
}

}  // namespace

void NetworkService::getHomeNetwork(Completion<HomeNetworkResponse> completion) {
  authorisedCall("GET", "/home-network", {}, decoding(std::move(completion)));
}

void NetworkService::createHomeNetwork(const std::optional<std::string>& name, bool confirm,
                                       Completion<CreateHomeNetworkResponse> completion) {
  authorisedCall("POST", "/home-network", encodeJson(CreateHomeNetworkRequest{name, confirm}),
                 decoding(std::move(completion)));
}

void NetworkService::updateHomeNetworkIP(Completion<UpdateHomeNetworkIPResponse> completion) {
  authorisedCall("POST", "/home-network/update-ip", encodeJson(UpdateHomeNetworkIPRequest{true}),
                 decoding(std::move(completion)));
}

void NetworkService::getFamily(Completion<FamilyResponse> completion) {
  authorisedCall("GET", "/family", {}, decoding(std::move(completion)));
}

void NetworkService::createInvitation(const std::optional<std::string>& inviteeName,
                                      Completion<CreateInvitationResponse> completion) {
  authorisedCall("POST", "/family/invite", encodeJson(CreateInvitationRequest{inviteeName}),
                 decoding(std::move(completion)));
}

void NetworkService::revokeInvitation(const std::string& invitationId, Completion<void> completion) {
  authorisedCall("DELETE", "/family/invite/" + invitationId, {}, validating(std::move(completion)));
}

void NetworkService::updateMemberPermissions(const std::string& memberId,
                                             const UpdateMemberPermissionsRequest& changes,
                                             Completion<void> completion) {
  authorisedCall("PUT", "/family/members/" + memberId, encodeJson(changes),
                 validating(std::move(completion)));
}

void NetworkService::removeMember(const std::string& memberId, Completion<void> completion) {
  authorisedCall("DELETE", "/family/members/" + memberId, {}, validating(std::move(completion)));
}

void NetworkService::validateInvite(const std::string& inviteCode,
                                    Completion<ValidateInviteResponse> completion) {
  auto request = buildRequest("GET", "/family/invite/" + inviteCode, {});
  if (!request.ok()) {
    completion(request.error());
    return;
  }
  send(std::move(request).value(), [completion = std::move(completion)](const DataTaskResult& result) {
    completion(judgeInvite(result));
  });
}

void NetworkService::joinFamily(const JoinFamilyRequest& account, Completion<JoinFamilyResponse> completion) {
  auto request = buildRequest("POST", "/family/join", encodeJson(account));
  if (!request.ok()) {
    completion(request.error());
    return;
  }
  send(std::move(request).value(), [completion = std::move(completion)](const DataTaskResult& result) {
    completion(judgeJoining(result));
  });
}

}  // namespace quillmar
