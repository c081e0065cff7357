#pragma once

namespace quillmar::command_line {

// For the start of a program. Opens those of the standard streams that it was started without: else the next
// file or socket would get the stream's number, and its lines. What is written to them fails.
void holdStandardStreams();

}  // namespace quillmar::command_line
