#include "family/invite_text.h"
#include "foundation/text.h"
#include "tests/fuzz/fuzz.h"

using namespace quillmar;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  const auto code = parseInviteText(text);
  if (!code) {
    return 0;
  }
  fuzz::require(isValidUtf8(*code), "a code is text");
  fuzz::require(uppercased(*code) == *code, "a code is in upper case");
  if (text.find("code=") != std::string_view::npos) {
    fuzz::require(code->find('&') == std::string::npos, "a code ends before the next parameter");
  } else {
    fuzz::require(characterCount(text) == 6, "a bare code has six characters");
  }
  return 0;
}
