#include <sys/stat.h>

#include "command_line/standard_streams.h"
#include "sandbox/program.h"

int main(int count, char** words) {
  quillmar::command_line::holdStandardStreams();
  // Its folder holds a private key and personal data.
  ::umask(S_IRWXG | S_IRWXO);
  return quillmar::sandbox::runProgram({words + 1, words + count});
}
