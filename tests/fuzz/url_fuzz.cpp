#include "foundation/url.h"
#include "tests/fuzz/fuzz.h"

using namespace quillmar;
using fuzz::require;

namespace {

void checkParts(const URL& url, std::string_view text) {
  require(url.text() == text, "a URL keeps its text");
  if (url.scheme()) {
    require(!url.scheme()->empty() && text.starts_with(*url.scheme() + ":"), "a scheme stands first");
  }
  if (url.host()) {
    require(!url.host()->empty(), "a host is not empty");
    const auto authority = text.substr(text.find("//") + 2);
    require(authority.find(*url.host()) != authority.npos, "a host stands after two slashes");
    require(url.host()->find_first_of("/?#@") == std::string::npos, "a host ends where the path begins");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  if (const auto url = URL::parse(text)) {
    checkParts(*url, text);
  }
  for (const auto& encoded : {percentEncodedForPath(text), percentEncodedForQuery(text)}) {
    require(text.empty() != URL::parse(encoded).has_value(), "what is encoded is a URL");
    require(encoded.size() <= 3 * size, "a byte becomes three at most");
  }
  return 0;
}
