#pragma once

#include <cstddef>

namespace quillmar {

// Counts the memory requested by `new`, on all threads, in programs that link quillmar_live_memory. The
// allocator's overhead is not counted, so equal states give equal numbers.

// Bytes requested and not yet freed.
std::size_t liveBytes();
// The number of requests.
std::size_t allocations();

}  // namespace quillmar
