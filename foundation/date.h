#pragma once

#include <chrono>

namespace quillmar {

// Milliseconds: no text of the system shows anything finer.
using Date = std::chrono::sys_time<std::chrono::milliseconds>;
using Duration = std::chrono::milliseconds;

}  // namespace quillmar
