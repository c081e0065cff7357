#include <utility>

#include "client/judging.h"
#include "client/network_service.h"
#include "foundation/text.h"
#include "foundation/url.h"

namespace quillmar {
namespace {

constexpr std::size_t loggedCheckInCharacters = 300;
constexpr std::size_t loggedIdCharacters = 8;

}  // namespace

std::string NetworkService::enrollmentRoot() const { return baseURL().value_or(defaultEnrollmentURL()); }

void NetworkService::initEnrollment(const std::string& deviceId, const std::string& deviceName,
                                    const std::string& deviceType,
                                    Completion<InitEnrollmentResponse> completion) {
  const auto body = encodeJson(InitEnrollmentRequest{deviceId, deviceName, deviceType});
  auto request =
      makeRequest("POST", enrollmentRoot() + "/enrollment/init", body.ok() ? body.value() : std::string());
  if (!request.ok() || !body.ok()) {
    completion(request.ok() ? Error(NetworkError::encodingError()) : request.error());
    return;
  }
  send(std::move(request).value(), [completion = std::move(completion)](const DataTaskResult& result) {
    completion(judgeExactly200<InitEnrollmentResponse>(result));
  });
}

bool NetworkService::getEnrollmentStatus(const std::string& deviceId,
                                         Completion<EnrollmentStatusResponse> completion) {
  auto request = makeRequest("GET", enrollmentRoot() + "/enrollment/status/" + deviceId);
  if (!request.ok()) {
    return false;
  }
  send(std::move(request).value(), [completion = std::move(completion)](const DataTaskResult& result) {
    completion(judgeExactly200<EnrollmentStatusResponse>(result));
  });
  return true;
}

void NetworkService::checkin(const std::string& deviceId, const std::string& deviceType,
                             Completion<CheckinResponse> completion) {
  const auto root = baseURL();
  if (!root) {
    log("[NetworkService] checkin failed: No region configured");
    completion(Error(NetworkError::noRegionConfigured()));
    return;
  }
  const auto body = encodeJson(CheckinRequest{deviceId, deviceType});
  auto request = makeRequest("POST", *root + "/device/checkin", body.ok() ? body.value() : std::string());
  if (!request.ok()) {
    completion(request.error());
    return;
  }
  if (!body.ok()) {
    log("[NetworkService] checkin - encode error: ", body.error().localizedDescription());
    completion(Error(NetworkError::encodingError()));
    return;
  }
  log("[NetworkService] checkin - URL: ",
      request.value().url + ", deviceId: " + firstCharacters(deviceId, loggedIdCharacters) + "...");
  send(std::move(request).value(), [this, completion = std::move(completion)](const DataTaskResult& result) {
    completion(judgeCheckin(result));
  });
}

Result<CheckinResponse> NetworkService::judgeCheckin(const DataTaskResult& result) {
  if (result.error) {
    log("[NetworkService] checkin - network error: ", result.error->localizedDescription());
    return *result.error;
  }
  if (result.response && result.response->status) {
    log("[NetworkService] checkin - status: ", std::to_string(*result.response->status));
    if (result.data && isValidUtf8(*result.data)) {
      log("[NetworkService] checkin - response: ", firstCharacters(*result.data, loggedCheckInCharacters));
    }
  }
  auto judged = judgeExactly200<CheckinResponse>(result);
  if (judged.ok()) {
    log("[NetworkService] checkin - success, doh_endpoint: ", judged.value().dohEndpoint.value_or("nil"));
  } else if (judged.error() == NetworkError::invalidResponse()) {
    log("[NetworkService] checkin - no data or response");
  } else if (result.response->status == 200) {
    log("[NetworkService] checkin - decode error: ", judged.error().localizedDescription());
  } else {
    log("[NetworkService] checkin - server error: ", serverWords(*result.data, "Unknown"));
  }
  return judged;
}

void NetworkService::completeEnrollment(const std::string& enrollmentCode, const std::string& deviceName,
                                        const std::optional<std::string>& childId, bool isRetry,
                                        Completion<CompleteEnrollmentResponse> completion) {
  const auto root = baseURL();
  if (!root) {
    log("[NetworkService] completeEnrollment failed: No region configured");
    completion(Error(NetworkError::noRegionConfigured()));
    return;
  }
  log("[NetworkService] completeEnrollment - baseURL: ",
      *root + ", isRetry: " + (isRetry ? "true" : "false"));
  log("[NetworkService] completeEnrollment - token exists: ",
      settings_.string(authTokenKey) ? "true" : "false");
  auto built = makeRequest("POST", *root + "/enrollment/complete", std::string());
  if (!built.ok()) {
    completion(built.error());
    return;
  }
  HttpRequest request = std::move(built).value();
  const auto header = addAuthHeader(request);
  const auto body = encodeJson(CompleteEnrollmentRequest{enrollmentCode, deviceName, childId});
  if (!header.ok() || !body.ok()) {
    const Error& error = header.ok() ? body.error() : header.error();
    log("[NetworkService] completeEnrollment - auth header error: ", error.localizedDescription());
    completion(error);
    return;
  }
  request.body = body.value();
  log("[NetworkService] completeEnrollment - request URL: ", request.url);

  send(std::move(request), [=, this, completion = std::move(completion)](const DataTaskResult& result) {
    const auto answer = completionAnswer(result);
    if (!answer.ok() || answer.value().response.status != 401 || isRetry) {
      completion(answer.ok() ? judgeCompletion(answer.value())
                             : Result<CompleteEnrollmentResponse>(answer.error()));
      return;
    }
    log("[NetworkService] completeEnrollment - Got 401, attempting token refresh...");
    refreshToken([=, this](const Result<AuthResponse>& refreshed) {
      if (!refreshed.ok()) {
        log("[NetworkService] completeEnrollment - Token refresh failed: ",
            refreshed.error().localizedDescription());
        completion(Error(NetworkError::unauthorized()));
        return;
      }
      log("[NetworkService] completeEnrollment - Token refreshed, retrying request...");
      completeEnrollment(enrollmentCode, deviceName, childId, true, completion);
    });
  });
}

Result<NetworkService::Answer> NetworkService::completionAnswer(const DataTaskResult& result) {
  auto answer = answerOf(result);
  if (result.error) {
    log("[NetworkService] completeEnrollment - network error: ", result.error->localizedDescription());
  } else if (!answer.ok()) {
    log("[NetworkService] completeEnrollment - no data or response");
  } else if (const auto status = answer.value().response.status) {
    log("[NetworkService] completeEnrollment - status: ", std::to_string(*status));
    if (isValidUtf8(answer.value().data)) {
      log("[NetworkService] completeEnrollment - response: ", answer.value().data);
    }
  }
  return answer;
}

Result<CompleteEnrollmentResponse> NetworkService::judgeCompletion(const Answer& answer) {
  auto judged = validatedRecord<CompleteEnrollmentResponse>(answer);
  if (judged.ok()) {
    log("[NetworkService] completeEnrollment - success");
  } else {
    log("[NetworkService] completeEnrollment - error: ", judged.error().localizedDescription());
  }
  return judged;
}

void NetworkService::manualEnrollment(const ManualEnrollmentRequest& device,
                                      Completion<ManualEnrollmentResponse> completion) {
  authorisedCall("POST", "/enrollment/manual", encodeJson(device),
                 [this, completion = std::move(completion)](const Result<Answer>& answer) {
                   if (!answer.ok()) {
                     completion(answer.error());
                     return;
                   }
                   const auto judged = validatedRecord<ManualEnrollmentResponse>(answer.value());
                   if (!judged.ok() && isValidUtf8(answer.value().data)) {
                     log("[NetworkService] Manual enrollment response: ", answer.value().data);
                   }
                   completion(judged);
                 });
}

}  // namespace quillmar
