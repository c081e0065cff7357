#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmar {

// Which text is a URL is a rule of this system and narrower than what URL libraries accept. Nothing is
// normalised.
class URL {
 public:
  // Succeeds for a non-empty text made of ASCII letters, digits and the marks of a URL, `%` with two hex
  // digits, and at most one `#`.
  static std::optional<URL> parse(std::string_view text);

  const std::string& text() const { return text_; }
  // In the case in which it was written.
  const std::optional<std::string>& scheme() const { return scheme_; }
  // Without user, port and the brackets of an address; nothing where there is none or it is empty.
  const std::optional<std::string>& host() const { return host_; }

 private:
  explicit URL(std::string text);

  std::string text_;
  std::optional<std::string> scheme_;
  std::optional<std::string> host_;
};

// Percent-encoding of the UTF-8 bytes outside of each set, in upper-case hex. `%` itself is always encoded.
std::string percentEncodedForPath(std::string_view text);
std::string percentEncodedForQuery(std::string_view text);

}  // namespace quillmar
