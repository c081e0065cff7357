#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace quillmar {

// Gives a variable of the environment another value for a while, or none for a null. While no other thread
// reads it.
class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) {  // NOLINT(concurrency-mt-unsafe)
      old_ = old;
    }
    assign(value);
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;
  ~ScopedEnvironment() { assign(old_ ? old_->c_str() : nullptr); }

 private:
  void assign(const char* value) const {
    value ? setenv(name_, value, 1) : unsetenv(name_);  // NOLINT(concurrency-mt-unsafe)
  }

  const char* const name_;
  std::optional<std::string> old_;
};

}  // namespace quillmar
