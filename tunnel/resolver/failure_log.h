#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <string>

#include "tunnel/resolver/failure.h"
#include "tunnel/resolver/time.h"

namespace quillmar::tunnel {

// Logs each cause once, however many questions fail. A cause that was absent for a while is logged again.
class FailureLog {
 public:
  static constexpr std::chrono::seconds away{60};
  using Tell = std::function<void(const std::string&)>;

  explicit FailureLog(Tell tell) : tell_(std::move(tell)) {}

  void failed(Time now, const Failure& failure);
  void answered(Time now);

 private:
  void tellOnce(Time now, const std::string& line);

  Tell tell_;
  std::map<std::string, Time> lastSeen_;
  bool hasFailed_ = false;
};

}  // namespace quillmar::tunnel
