#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

// What every fuzz target offers to whoever drives it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace quillmar::fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// A broken promise ends the process, so that its input is kept.
inline void require(bool kept, const char* promise) {
  if (!kept) {
    std::fprintf(stderr, "Broken: %s\n", promise);
    std::abort();
  }
}

}  // namespace quillmar::fuzz
