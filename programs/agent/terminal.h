#pragma once

#include <limits>
#include <string_view>

namespace quillmar::agent {

// What the standard output leads to, and what it can show.
struct Terminal {
  bool isInteractive = false;  // a person may be looking at it
  int columns = 80;
  int rows = std::numeric_limits<int>::max();  // that a person sees at once
  bool hasUTF8 = false;
  bool hasColour = false;  // and can move the cursor

  // As the environment and the terminal say now.
  static Terminal ofStandardOutput();
};

// To the standard output, in one piece and at once. False where nobody can read it any more.
bool write(std::string_view text);
bool writeLine(std::string_view text);
// To the standard error, under the program's name.
void complain(std::string_view text);

}  // namespace quillmar::agent
