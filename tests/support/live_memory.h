#pragma once

#include <cstddef>

namespace quillmar {

// The bytes that this program has asked `new` for (under a sanitizer, any allocator) and not given back. What
// the allocator itself makes of them does not count, so that the same state weighs the same. For programs
// that link quillmar_live_memory.
std::size_t liveBytes();

}  // namespace quillmar
