#include "foundation/json.h"
#include "foundation/json_locate.h"
#include "tests/fuzz/fuzz.h"

using namespace quillmar;
using fuzz::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  const auto value = parseJson(text);
  const auto offset = firstBadByte(text);
  require(offset <= size, "a bad byte lies in the text");
  if (!value.ok()) {
    return 0;
  }
  require(offset == size, "a document has no bad byte");
  const auto again = parseJson(writeJson(value.value()));
  require(again.ok() && again.value() == value.value(), "a value is read as written");
  return 0;
}
