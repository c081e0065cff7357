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
  std::optional<std::string> scheme() const;
  // Without user, port and brackets; nullopt if absent or empty.
  std::optional<std::string> host() const;

 private:
  explicit URL(std::string_view text) : text_(text) {}

  std::string text_;
};

// Percent-encodes the UTF-8 bytes outside the set, in upper-case hex. `%` is always encoded.
std::string percentEncodedForPath(std::string_view text);
std::string percentEncodedForQuery(std::string_view text);

}  // namespace quillmar
