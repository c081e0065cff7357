#include "presentation/colors.h"
#include "tests/fuzz/fuzz.h"

using namespace quillmar;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto color = colorFromHex(fuzz::textOf(data, size));
  for (const double part : {color.red, color.green, color.blue, color.alpha}) {
    fuzz::require(part >= 0 && part <= 1, "a part of a colour is from 0 to 1");
  }
  return 0;
}
