#include <array>
#include <charconv>
#include <string>

#include "foundation/text.h"
#include "tests/fuzz/fuzz.h"

using namespace quillmar;
using fuzz::require;

namespace {

void checkCharacters(std::string_view text) {
  const auto all = characters(text);
  require(all.size() == characterCount(text), "all characters are counted");
  std::string joined;
  for (std::size_t count = 0; count < all.size(); ++count) {
    if (count < 20) {
      require(firstCharacters(text, count) == joined, "the first characters are a beginning");
    }
    require(!all[count].empty(), "no character is empty");
    joined += all[count];
  }
  require(firstCharacters(text, all.size()) == joined, "all characters are the text");
  require(fromCodePoints(codePoints(text)) == joined, "all code points are the text");
  require(!isValidUtf8(text) || joined == text, "a valid text is kept as it is");
}

void checkTrimming(std::string_view text) {
  const auto once = trimmed(text);
  require(trimmed(once) == once, "trimming twice is trimming once");
  const auto kept = trimmedTo(text, isAlphanumeric);
  require(trimmedTo(kept, isAlphanumeric) == kept, "trimming twice is trimming once");
}

void checkHexScan(std::uint64_t number) {
  std::array<char, 16> digits{};
  const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
  require(scanHex({digits.data(), static_cast<std::size_t>(end - digits.data())}) == number,
          "a hex number is read as written");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  checkCharacters(text);
  checkTrimming(text);
  for (const auto& mapped : {uppercased(text), lowercased(text), capitalized(text)}) {
    require(isValidUtf8(mapped), "a mapped text is valid");
  }
  if (const auto number = wholeNumber(text)) {
    require(wholeNumber(std::to_string(*number)) == number, "a number is read as written");
  }
  checkHexScan(scanHex(text));
  return 0;
}
