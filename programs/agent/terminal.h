#pragma once

#include <limits>
#include <string_view>

namespace quillmar::agent {

// The standard output, and what it can show.
struct Terminal {
  bool isInteractive = false;  // it is a terminal
  int columns = 80;
  int rows = std::numeric_limits<int>::max();  // visible at once
  bool hasUTF8 = false;
  bool hasColour = false;  // and cursor movement

  // Reads the environment and the terminal's size.
  static Terminal ofStandardOutput();
};

// Writes to the standard output, unbuffered. False if its reader has gone.
bool write(std::string_view text);
bool writeLine(std::string_view text);
// Writes what a command was asked for. Complains if that fails.
bool writeAnswer(std::string_view text);
// Writes to the standard error, prefixed with the program's name.
void complain(std::string_view text);

}  // namespace quillmar::agent
