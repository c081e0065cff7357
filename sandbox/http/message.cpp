#include "sandbox/http/message.h"

#include <strings.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace quillmar::sandbox {

std::string_view header(const Headers& headers, std::string_view name) {
  const auto found = std::ranges::find_if(headers, [&](const auto& entry) {
    return entry.first.size() == name.size() &&
           strncasecmp(entry.first.data(), name.data(), name.size()) == 0;
  });
  return found == headers.end() ? std::string_view{} : found->second;
}

Answer refusal(int status, std::string_view text) {
  const nlohmann::json body{{"error", text}};
  return {.status = status,
          .contentType = "application/json",
          .body = body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)};
}

Answer refusalOfLargeBody() { return refusal(413, "The request is larger than this service takes."); }

Answer refusalOfMalformedRequest() { return refusal(400, "The request could not be understood."); }

}  // namespace quillmar::sandbox
