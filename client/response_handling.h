#pragma once

#include <string>
#include <string_view>

#include "client/call.h"
#include "client/network_service.h"
#include "platform/http_session.h"

namespace quillmar {

// The body and the response, or the transport's error; `invalidResponse` if a part that the call needs is
// missing.
Result<NetworkService::Answer> answerOf(DataTaskResult result, Judging judging = Judging::by2xx);

// Whether the answer is a success, or the error.
Result<void> judgedBy(Judging judging, const NetworkService::Answer& answer);

// The service's error message, or `otherwise` if the body has none.
std::string serverWords(std::string_view data, std::string_view otherwise);

}  // namespace quillmar
