#pragma once

#include <atomic>
#include <filesystem>
#include <string>

#include "bench/endurance/program.h"
#include "sandbox/service.h"
#include "testing/temporary_directory.h"

namespace quillmar::endurance {

// A login session. One exists in the process at a time, because its variables are the process's own too.
class Session {
 public:
  Session();
  const std::filesystem::path& home() const { return home_.path(); }
  // A folder that does not exist yet.
  std::filesystem::path newFolder();
  Variables variables(const Variables& more = {}) const;

 private:
  const TemporaryDirectory home_;
  const TemporaryDirectory runtime_;
  std::atomic<int> folders_ = 0;
};

// What an installation has stored. A fault if it is half-done or damaged.
struct Stored {
  bool isEnrolled = false;
  std::string device{};
};
Stored storedIn(const std::filesystem::path& data, sandbox::Service& service);

// The text between `mark` and `ending`; empty if it is not there.
std::string between(const std::string& text, const std::string& mark, char ending);

}  // namespace quillmar::endurance
