#pragma once

#include <string>
#include <string_view>

#include "client/call.h"
#include "client/network_service.h"
#include "platform/http_session.h"

namespace quillmar {

// The body and the response, or the transport's error; `invalidResponse` where a part is missing that the
// call is judged by.
Result<NetworkService::Answer> answerOf(DataTaskResult result, Judging judging = Judging::by2xx);

// Whether the answer is a success, or what stands in its place.
Result<void> judgedBy(Judging judging, const NetworkService::Answer& answer);

// The service's own words of a failure, or the given text where the body holds none.
std::string serverWords(std::string_view data, std::string_view otherwise);

}  // namespace quillmar
