#include "client/response_handling.h"

#include <utility>

#include "client/records/error_response.h"

namespace quillmar {
namespace {

Error serverError(std::string_view data, std::string_view otherwise = "Unknown error") {
  return NetworkError::serverError(serverWords(data, otherwise));
}

Result<void> judgedByExactly200(int status, std::string_view data) {
  return status == 200 ? success() : serverError(data);
}

Result<void> judgedBelow400(int status, std::string_view data) {
  if (status == 409) {
    return Error(NetworkError::serverError("Email already registered"));
  }
  return status < 400 ? success() : serverError(data, "Failed to join family");
}

}  // namespace

Result<NetworkService::Answer> answerOf(DataTaskResult result, Judging judging) {
  if (result.error) {
    return *result.error;
  }
  if (!result.data || (!result.response && judging != Judging::byBody)) {
    return Error(NetworkError::invalidResponse());
  }
  return NetworkService::Answer{std::move(*result.data), result.response.value_or(Response())};
}

Result<void> judgedBy(Judging judging, const NetworkService::Answer& answer) {
  if (judging == Judging::byBody) {
    return success();
  }
  const auto& [data, response] = answer;
  if (!response.status) {
    return Error(NetworkError::invalidResponse());
  }
  switch (judging) {
    case Judging::byExactly200:
      return judgedByExactly200(*response.status, data);
    case Judging::below400:
      return judgedBelow400(*response.status, data);
    default:
      return NetworkService::validateResponse(response, data);
  }
}

Result<void> NetworkService::validateResponse(const Response& response, std::string_view data) {
  if (!response.status) {
    return Error(NetworkError::invalidResponse());
  }
  const int status = *response.status;
  if (status >= 200 && status <= 299) {
    return success();
  }
  switch (status) {
    case 401:
      return Error(NetworkError::unauthorized());
    case 403:
      return Error(NetworkError::forbidden());
    case 404:
      return Error(NetworkError::notFound());
    default:
      return serverError(data);
  }
}

std::string serverWords(std::string_view data, std::string_view otherwise) {
  const auto body = decodeJson<ErrorResponse>(data);
  return body.ok() ? body.value().error : std::string(otherwise);
}

}  // namespace quillmar
