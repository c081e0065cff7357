#include "platform/http_session.h"

#include <algorithm>

namespace quillmar {

void HttpRequest::setHeader(const std::string& name, std::string value) {
  const auto known = std::ranges::find(headers, name, &std::pair<std::string, std::string>::first);
  if (known == headers.end()) {
    headers.emplace_back(name, std::move(value));
  } else {
    known->second = std::move(value);
  }
}

}  // namespace quillmar
