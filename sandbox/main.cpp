#include <sys/stat.h>

#include "sandbox/program.h"

int main(int count, char** words) {
  // Its folder holds a private key and a family's life.
  ::umask(S_IRWXG | S_IRWXO);
  return quillmar::sandbox::runProgram({words + 1, words + count});
}
