#include "sandbox/call.h"

#include <charconv>

namespace quillmar::sandbox {

Answer json(int status, const Json& body) {
  return {.status = status,
          .contentType = "application/json",
          .body = body.dump(-1, ' ', false, Json::error_handler_t::replace)};
}

Answer nothing() { return {.status = 204}; }

Answer notFound(std::string_view what) { return refusal(404, "There is no " + std::string{what} + " here."); }

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      decoded += text[i];
      continue;
    }
    const auto digits = text.substr(i + 1, 2);
    unsigned char byte = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (digits.size() != 2 || read.ptr != digits.data() + 2) {
      return std::nullopt;
    }
    decoded += char(byte);
    i += 2;
  }
  return decoded;
}

std::optional<std::string> queryParameter(std::string_view query, std::string_view name) {
  while (!query.empty()) {
    const auto pair = query.substr(0, query.find('&'));
    query.remove_prefix(std::min(query.size(), pair.size() + 1));
    const auto equals = pair.find('=');
    if (pair.substr(0, equals) != name) {
      continue;
    }
    const std::string value{equals == std::string_view::npos ? std::string_view{} : pair.substr(equals + 1)};
    return percentDecoded(value).value_or(value);
  }
  return std::nullopt;
}

}  // namespace quillmar::sandbox
