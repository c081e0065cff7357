#include "command_line/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace quillmar::command_line {

// open() returns the lowest free number, which is the stream's, because all lower ones are open by then. The
// stream is opened for the opposite direction, so that writing to it fails instead of losing the text.
void holdStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) < 0) {
      static_cast<void>(::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
  }
}

}  // namespace quillmar::command_line
