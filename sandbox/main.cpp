#include "sandbox/program.h"

int main(int count, char** words) { return quillmar::sandbox::runProgram({words + 1, words + count}); }
