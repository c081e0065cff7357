#include "platform/http_session.h"

#include <algorithm>

#include "foundation/wipe.h"

namespace quillmar {

void HttpRequest::setHeader(const std::string& name, std::string value) {
  const auto known = std::ranges::find(headers, name, &std::pair<std::string, std::string>::first);
  if (known == headers.end()) {
    headers.emplace_back(name, std::move(value));
  } else {
    wipe(known->second);
    known->second = std::move(value);
  }
}

void HttpRequest::wipeSecrets() {
  for (auto& header : headers) {
    wipe(header.second);
  }
  if (body) {
    wipe(*body);
  }
}

}  // namespace quillmar
