#include "tests/support/live_memory.h"

// Of every sanitizer's allocator. GCC ships no header for it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();

namespace quillmar {

// A sanitizer counts for itself, and can check only its own `new`.
std::size_t liveBytes() { return __sanitizer_get_current_allocated_bytes(); }

}  // namespace quillmar
