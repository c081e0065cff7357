#include <utility>

#include "client/judging.h"
#include "client/network_service.h"
#include "foundation/filled_text.h"
#include "foundation/text.h"

namespace quillmar {
namespace {

constexpr std::size_t loggedAnswerCharacters = 500;

std::string childPath(const std::string& childId, std::string_view rest = {}) {
  return "/children/" + childId + std::string(rest);
}

}  // namespace

// The system log's lines of the two calls that leave a trail there.
struct NetworkService::Trail {
  std::string_view noRegion;
  std::string_view sending;
  std::string_view encodeError;
  std::string_view error;
  std::string_view status;
  std::string_view response;
  std::string_view decodeError;
  std::string_view success;
};

template <Record T>
Result<T> NetworkService::judgeOnTrail(const Trail& trail, const Result<Answer>& answer) {
  if (!answer.ok()) {
    log_.system(filled(trail.error, {answer.error().localizedDescription()}));
    return answer.error();
  }
  const auto& [data, response] = answer.value();
  if (response.status) {
    log_.system(filled(trail.status, {std::to_string(*response.status)}));
  }
  if (isValidUtf8(data)) {
    log_.system(filled(trail.response, {firstCharacters(data, loggedAnswerCharacters)}));
  }
  auto judged = validatedRecord<T>(answer.value());
  if (!judged.ok()) {
    log_.system(filled(trail.decodeError, {judged.error().localizedDescription()}));
  }
  return judged;
}

void NetworkService::getChildren(Completion<ChildrenResponse> completion) {
  static constexpr Trail trail{
      .noRegion = "[NetworkService] getChildren failed: No region configured",
      .sending = "[NetworkService] getChildren - URL: %@",
      .encodeError = {},
      .error = "[NetworkService] getChildren - error: %@",
      .status = "[NetworkService] getChildren - status: %d",
      .response = "[NetworkService] getChildren - response: %@",
      .decodeError = "[NetworkService] getChildren - decode error: %@",
      .success = "[NetworkService] getChildren - decoded %d children",
  };
  const auto root = baseURL();
  if (!root) {
    log_.system(trail.noRegion);
    completion(Error(NetworkError::noRegionConfigured()));
    return;
  }
  auto request = makeRequest("GET", *root + "/children");
  if (!request.ok()) {
    completion(request.error());
    return;
  }
  log_.system(filled(trail.sending, {request.value().url}));
  performRequest(std::move(request).value(), false,
                 [this, completion = std::move(completion)](const Result<Answer>& answer) {
                   auto judged = judgeOnTrail<ChildrenResponse>(trail, answer);
                   if (judged.ok()) {
                     log_.system(filled(trail.success, {std::to_string(judged.value().children.size())}));
                   }
                   completion(std::move(judged));
                 });
}

void NetworkService::createChild(const CreateChildRequest& child,
                                 Completion<ChildProfileWithDevices> completion) {
  static constexpr Trail trail{
      .noRegion = "[NetworkService] createChild failed: No region configured",
      .sending = "[NetworkService] createChild - URL: %@, name: %@",
      .encodeError = "[NetworkService] createChild - encode error: %@",
      .error = "[NetworkService] createChild - error: %@",
      .status = "[NetworkService] createChild - status: %d",
      .response = "[NetworkService] createChild - response: %@",
      .decodeError = "[NetworkService] createChild - decode error: %@",
      .success = "[NetworkService] createChild - success: %@ (id: %@)",
  };
  const auto root = baseURL();
  if (!root) {
    log_.system(trail.noRegion);
    completion(Error(NetworkError::noRegionConfigured()));
    return;
  }
  const auto body = encodeJson(child);
  auto request = makeRequest("POST", *root + "/children", body.ok() ? body.value() : std::string());
  if (!request.ok()) {
    completion(request.error());
    return;
  }
  if (!body.ok()) {
    log_.system(filled(trail.encodeError, {body.error().localizedDescription()}));
    completion(body.error());
    return;
  }
  log_.system(filled(trail.sending, {request.value().url, child.name}));
  performRequest(std::move(request).value(), false,
                 [this, completion = std::move(completion)](const Result<Answer>& answer) {
                   auto judged = judgeOnTrail<ChildProfileWithDevices>(trail, answer);
                   if (judged.ok()) {
                     log_.system(filled(trail.success, {judged.value().name, judged.value().id}));
                   }
                   completion(std::move(judged));
                 });
}

void NetworkService::getChild(const std::string& childId, Completion<ChildProfileWithDevices> completion) {
  authorisedCall("GET", childPath(childId), {}, decoding(std::move(completion)));
}

void NetworkService::updateChild(const std::string& childId, const UpdateChildRequest& changes,
                                 Completion<ChildProfile> completion) {
  authorisedCall("PUT", childPath(childId), encodeJson(changes), decoding(std::move(completion)));
}

void NetworkService::deleteChild(const std::string& childId, Completion<void> completion) {
  authorisedCall("DELETE", childPath(childId), {}, validating(std::move(completion)));
}

void NetworkService::linkDevice(const std::string& childId, const std::string& deviceId,
                                Completion<void> completion) {
  authorisedCall("POST", childPath(childId, "/devices"), encodeJson(LinkDeviceRequest{deviceId}),
                 validating(std::move(completion)));
}

void NetworkService::unlinkDevice(const std::string& childId, const std::string& deviceId,
                                  Completion<void> completion) {
  authorisedCall("DELETE", childPath(childId, "/devices/" + deviceId), {}, validating(std::move(completion)));
}

void NetworkService::updateChildPolicy(const std::string& childId, bool isBlocked,
                                       const std::string& blockMode, Completion<ChildPolicy> completion) {
  authorisedCall("PUT", childPath(childId, "/policy"),
                 encodeJson(UpdateChildPolicyRequest{isBlocked, blockMode}), decoding(std::move(completion)));
}

void NetworkService::addChildBlockedDomain(const std::string& childId, const std::string& domain,
                                           Completion<ChildPolicy> completion) {
  authorisedCall("POST", childPath(childId, "/policy/block"), encodeJson(AddDomainRequest{domain}),
                 decoding(std::move(completion)));
}

void NetworkService::removeChildBlockedDomain(const std::string& childId, const std::string& domain,
                                              Completion<ChildPolicy> completion) {
  authorisedCall("DELETE", childPath(childId, "/policy/block/" + domain), {},
                 decoding(std::move(completion)));
}

void NetworkService::addChildAllowedDomain(const std::string& childId, const std::string& domain,
                                           Completion<ChildPolicy> completion) {
  authorisedCall("POST", childPath(childId, "/policy/allow"), encodeJson(AddDomainRequest{domain}),
                 decoding(std::move(completion)));
}

void NetworkService::removeChildAllowedDomain(const std::string& childId, const std::string& domain,
                                              Completion<ChildPolicy> completion) {
  authorisedCall("DELETE", childPath(childId, "/policy/allow/" + domain), {},
                 decoding(std::move(completion)));
}

}  // namespace quillmar
