#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "platform/common/file_descriptor.h"

namespace quillmar::test {

// A program in a terminal of its own, as a person would use it; killed when the object goes.
class PseudoTerminal {
 public:
  // The words are a program's path and its arguments; the environment is all that it gets.
  PseudoTerminal(const std::vector<std::string>& words, const std::vector<std::string>& environment,
                 unsigned short rows = 60);
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;
  ~PseudoTerminal();

  // All that was shown up to and with this text, or all that there was when the program ended before.
  std::string readUntil(const std::string& text);
  std::string readToEnd() { return readUntil({}); }
  void type(const std::string& keys) const;
  // Takes the terminal away.
  void hangUp() { terminal_ = FileDescriptor(); }
  // The exit status, or minus the signal that ended it.
  int wait();

 private:
  FileDescriptor terminal_;
  pid_t process_ = -1;
  std::string unread_;
};

}  // namespace quillmar::test
