#include "client/enrollment_calls.h"

#include <utility>

#include "client/network_service.h"
#include "client/records/account.h"
#include "client/response_handling.h"
#include "foundation/filled_text.h"
#include "foundation/text.h"
#include "platform/settings_store.h"

namespace quillmar {
namespace {

constexpr std::size_t loggedCheckInCharacters = 300;
constexpr std::size_t loggedIdCharacters = 8;

}  // namespace

namespace calls {

constinit const CallLog<CheckinRequest, CheckinResponse> checkinLog{
    .lines = {.noRegion = "[NetworkService] checkin failed: No region configured",
              .encodeError = "[NetworkService] checkin - encode error: %@"},
    .sending =
        [](std::string_view url, const CheckinRequest& report) {
          return filled("[NetworkService] checkin - URL: %@, deviceId: %@...",
                        {url, firstCharacters(report.deviceId, loggedIdCharacters)});
        },
};

constinit const CallLog<ManualEnrollmentRequest, ManualEnrollmentResponse> manualEnrollmentLog{
    .lines = {.refusedResponse = "[NetworkService] Manual enrollment response: %@"},
};

}  // namespace calls

bool NetworkService::getEnrollmentStatus(const std::string& deviceId,
                                         Completion<EnrollmentStatusResponse> completion) {
  const auto& call = calls::getEnrollmentStatus;
  auto request = requestOf(call, {deviceId}, NoBody());
  if (!request.ok()) {
    return false;
  }
  sendRequest(call, std::move(request).value(), answering(call, std::move(completion)));
  return true;
}

void NetworkService::checkin(const std::string& deviceId, const std::string& deviceType,
                             Completion<CheckinResponse> completion) {
  auto request = requestOf(calls::checkin, {}, CheckinRequest{deviceId, deviceType});
  if (!request.ok()) {
    completion(request.error());
    return;
  }
  dataTask(std::move(request).value(),
           [this, completion = std::move(completion)](const DataTaskResult& result) {
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
  auto checked = judged(calls::checkin, answerOf(result));
  if (checked.ok()) {
    log("[NetworkService] checkin - success, doh_endpoint: ", checked.value().dohEndpoint.value_or("nil"));
  } else if (checked.error() == NetworkError::invalidResponse()) {
    log("[NetworkService] checkin - no data or response");
  } else if (result.response->status == 200) {
    log("[NetworkService] checkin - decode error: ", checked.error().localizedDescription());
  } else {
    log("[NetworkService] checkin - server error: ", serverWords(*result.data, "Unknown"));
  }
  return checked;
}

void NetworkService::completeEnrollment(const CompleteEnrollmentRequest& enrollment, bool isRetry,
                                        Completion<CompleteEnrollmentResponse> completion) {
  const auto& call = calls::completeEnrollment;
  const auto root = baseURL();
  if (!root) {
    log("[NetworkService] completeEnrollment failed: No region configured");
    completion(Error(NetworkError::noRegionConfigured()));
    return;
  }
  log("[NetworkService] completeEnrollment - baseURL: ",
      *root + ", isRetry: " + (isRetry ? "true" : "false"));
  log("[NetworkService] completeEnrollment - token exists: ",
      settings_.read(settings::authToken) ? "true" : "false");
  auto built = makeRequest(call.method, *root + std::string(call.path), std::string());
  if (!built.ok()) {
    completion(built.error());
    return;
  }
  HttpRequest request = std::move(built).value();
  const auto header = addAuthHeader(request);
  const auto body = encodeJson(enrollment);
  if (!header.ok() || !body.ok()) {
    const Error& error = header.ok() ? body.error() : header.error();
    log("[NetworkService] completeEnrollment - auth header error: ", error.localizedDescription());
    completion(error);
    return;
  }
  request.body = body.value();
  log("[NetworkService] completeEnrollment - request URL: ", request.url);

  dataTask(std::move(request), [=, this, completion = std::move(completion)](const DataTaskResult& result) {
    const auto answer = completionAnswer(result);
    if (!answer.ok() || answer.value().response.status != 401 || isRetry) {
      completion(judgeCompletion(answer));
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
      completeEnrollment(enrollment, true, completion);
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

Result<CompleteEnrollmentResponse> NetworkService::judgeCompletion(const Result<Answer>& answer) {
  auto completed = judged(calls::completeEnrollment, answer);
  if (completed.ok()) {
    log("[NetworkService] completeEnrollment - success");
  } else if (answer.ok()) {
    log("[NetworkService] completeEnrollment - error: ", completed.error().localizedDescription());
  }
  return completed;
}

}  // namespace quillmar
