#pragma once

#include <chrono>

namespace quillmar {

// A moment, to the millisecond: the finest that any text of the system can name.
using Date = std::chrono::sys_time<std::chrono::milliseconds>;
using Duration = std::chrono::milliseconds;

}  // namespace quillmar
