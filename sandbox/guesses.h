#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>

#include "sandbox/time.h"

namespace quillmar::sandbox {

// Counts wrong passwords by address, whether or not the address has an account.
class Guesses {
 public:
  static constexpr int free = 5;  // wrong passwords in a row before each further one causes a pause
  static constexpr std::chrono::seconds pause{30};

  // How long this address is refused, or nullopt.
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
