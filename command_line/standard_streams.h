#pragma once

namespace quillmar::command_line {

// Opens the standard streams that this process was started without; writing to them fails. Otherwise the next
// file or socket would get a stream's number, and the program's output. Call it first in main().
void holdStandardStreams();

}  // namespace quillmar::command_line
