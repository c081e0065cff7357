#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmar {

// Stricter than URL libraries, and normalises nothing.
class URL {
 public:
  // Accepts a non-empty text of ASCII letters, digits, a URL's marks, `%` with two hex digits, and at most
  // one `#`.
  static std::optional<URL> parse(std::string_view text);

  const std::string& text() const { return text_; }
  // In its original case.
  const std::optional<std::string>& scheme() const { return scheme_; }
  // Without user, port and brackets; nullopt if absent or empty.
  const std::optional<std::string>& host() const { return host_; }

 private:
  explicit URL(std::string text);

  std::string text_;
  std::optional<std::string> scheme_;
  std::optional<std::string> host_;
};

// Percent-encodes the UTF-8 bytes outside the set, in upper-case hex. `%` is always encoded.
std::string percentEncodedForPath(std::string_view text);
std::string percentEncodedForQuery(std::string_view text);

}  // namespace quillmar
