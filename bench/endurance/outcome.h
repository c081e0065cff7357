#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace quillmar::endurance {

// Prints a row of docs/endurance.md.
inline void tell(std::string_view what, const std::string& figure) {
  std::printf("| %.*s | %s |\n", static_cast<int>(what.size()), what.data(), figure.c_str());
}

// Ends the run with a message unless it held.
inline void expect(bool held, const std::string& otherwise) {
  if (!held) {
    std::fprintf(stderr, "%s\n", otherwise.c_str());
    std::exit(1);
  }
}

// Whether the program runs in its short form, for tests. There is no other option.
inline bool isShort(int count, char** arguments) {
  if (count == 1) {
    return false;
  }
  expect(count == 2 && std::string_view(arguments[1]) == "--short",
         "usage: " + std::string(arguments[0]) + " [--short]");
  return true;
}

}  // namespace quillmar::endurance
