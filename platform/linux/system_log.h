#pragma once

#include <unistd.h>

#include <mutex>
#include <string>
#include <string_view>

#include "platform/log.h"

namespace quillmar {

// A line as it is printed: line breaks and control characters escaped, so that no text can pass for a line of
// its own or steer a terminal.
std::string singleLine(std::string_view line);

// Prints each line in one write and sends the others to syslog under the program's name. One for each
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
