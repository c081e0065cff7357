#pragma once

#include <string>
#include <vector>

namespace quillmar::sandbox {

// The program quillmar-sandbox, given the words after its name. Returns its exit status.
int runProgram(const std::vector<std::string>& words);

}  // namespace quillmar::sandbox
