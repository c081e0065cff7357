#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>

#include "sandbox/time.h"

namespace quillmar::sandbox {

// Wrong passwords, by the address that they were tried for, whether or not it has an account.
class Guesses {
 public:
  static constexpr int free = 5;  // in a row, before each further one costs a pause
  static constexpr std::chrono::seconds pause{30};

  // How long nothing is looked at for this address; nothing where it may be tried.
  [[nodiscard]] std::optional<std::chrono::seconds> pauseFor(const std::string& address, Time now) const;

  void wrong(const std::string& address, Time now);
  void right(const std::string& address) { tried_.erase(address); }
  void clear() { tried_.clear(); }

 private:
  struct Tried {
    int times = 0;
    Time last;
  };

  std::map<std::string, Tried> tried_;
};

}  // namespace quillmar::sandbox
