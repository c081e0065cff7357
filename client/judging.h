#pragma once

// How calls turn an answer into their result. Shared by the sources of the calls.

#include <string>
#include <utility>

#include "client/network_service.h"
#include "client/records/error_response.h"
#include "foundation/json_decode.h"

namespace quillmar {

// The body and the response, or the transport's error; `invalidResponse` where one of the two is missing.
inline Result<NetworkService::Answer> answerOf(DataTaskResult result) {
  if (result.error) {
    return *result.error;
  }
  if (!result.data || !result.response) {
    return Error(NetworkError::invalidResponse());
  }
  return NetworkService::Answer{std::move(*result.data), *result.response};
}

// The service's own words of a failure, or the given text where the body holds none.
inline std::string serverWords(std::string_view data, std::string_view otherwise) {
  const auto body = decodeJson<ErrorResponse>(data);
  return body.ok() ? body.value().error : std::string(otherwise);
}

inline Error serverError(std::string_view data) {
  return NetworkError::serverError(serverWords(data, "Unknown error"));
}

template <Record T>
Result<T> validatedRecord(const NetworkService::Answer& answer) {
  if (const auto valid = NetworkService::validateResponse(answer.response, answer.data); !valid.ok()) {
    return valid.error();
  }
  return decodeJson<T>(answer.data);
}

// The rule of calls without a token: success is 200 and nothing else, and every refusal speaks in the
// service's words.
template <Record T>
Result<T> judgeExactly200(const DataTaskResult& result) {
  const auto answer = answerOf(result);
  if (!answer.ok()) {
    return answer.error();
  }
  const auto& [data, response] = answer.value();
  if (!response.status) {
    return Error(NetworkError::invalidResponse());
  }
  return *response.status == 200 ? decodeJson<T>(data) : Result<T>(serverError(data));
}

// An authorised call with a record.
template <Record T>
Completion<NetworkService::Answer> decoding(Completion<T> completion) {
  return [completion = std::move(completion)](const Result<NetworkService::Answer>& answer) {
    completion(answer.ok() ? validatedRecord<T>(answer.value()) : Result<T>(answer.error()));
  };
}

// An authorised call without a record never looks at the body of a success.
inline Completion<NetworkService::Answer> validating(Completion<void> completion) {
  return [completion = std::move(completion)](const Result<NetworkService::Answer>& answer) {
    completion(answer.ok() ? NetworkService::validateResponse(answer.value().response, answer.value().data)
                           : Result<void>(answer.error()));
  };
}

}  // namespace quillmar
