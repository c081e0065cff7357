#pragma once

#include <unistd.h>

#include <mutex>
#include <string>
#include <string_view>

#include "platform/log.h"

namespace quillmar {

// Escapes line breaks and control characters, so that a text can't forge a line or control the terminal.
std::string singleLine(std::string_view line);

// Prints each line in one write. The system's lines go to syslog under the program's name. One instance per
// process.
class SystemLog final : public Log {
 public:
  explicit SystemLog(std::string programName, int output = STDOUT_FILENO);
  ~SystemLog() override;

  void print(std::string_view line) override;
  void system(std::string_view line) override;

 private:
  const std::string programName_;  // syslog keeps a pointer to it
  const int output_;
  std::mutex mutex_;
};

}  // namespace quillmar
