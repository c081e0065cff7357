#pragma once

#include <functional>
#include <string_view>

namespace quillmar {

// Counts the blocks of memory that `work` frees while they hold the text, on its thread, in programs that
// link quillmar_freed_memory.
int freedBlocksWith(std::string_view text, const std::function<void()>& work);

}  // namespace quillmar
