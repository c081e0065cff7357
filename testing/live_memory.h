#pragma once

#include <cstddef>

namespace quillmar {

// What this program asks `new` for, in all its threads. For programs that link quillmar_live_memory, which
// replaces `new`. What the allocator itself makes of a request does not count, so that the same state weighs
// the same.

// The bytes that were asked for and not given back.
std::size_t liveBytes();
// How often any were asked for.
std::size_t allocations();

}  // namespace quillmar
