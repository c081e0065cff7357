#include "command_line/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace quillmar::command_line {

// The lowest free number is the stream's, as those below it are open by then. Opened for the wrong direction,
// so that a program which writes its answer hears that nobody gets it.
void holdStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) < 0) {
      static_cast<void>(::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
  }
}

}  // namespace quillmar::command_line
