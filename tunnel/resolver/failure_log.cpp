#include "tunnel/resolver/failure_log.h"

namespace quillmar::tunnel {

void FailureLog::tellOnce(Time now, const std::string& line) {
  const auto [known, isNew] = lastSeen_.try_emplace(line, now);
  if (isNew || now - known->second >= away) {
    tell_(line);
  }
  known->second = now;
}

void FailureLog::failed(Time now, const Failure& failure) {
  hasFailed_ = true;
  tellOnce(now, sentence(failure));
}

void FailureLog::answered(Time now) {
  if (hasFailed_) {
    hasFailed_ = false;
    tellOnce(now, "The endpoint answers.");
  }
}

}  // namespace quillmar::tunnel
