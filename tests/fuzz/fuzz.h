#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

// The entry point of a fuzz target, for libFuzzer and for replay.cpp.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace quillmar::fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Aborts, so that libFuzzer keeps the input.
inline void require(bool kept, const char* promise) {
  if (!kept) {
    std::fprintf(stderr, "Broken: %s\n", promise);
    std::abort();
  }
}

}  // namespace quillmar::fuzz
