#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/signal.h"
#include "platform/port.h"

namespace quillmar {

// `code` is the platform's negative code, or nullopt if it gave no reason.
struct BiometricReply {
  bool success = false;
  std::optional<int> code;
};

// The device's fingerprint or face check. Main thread only; the reply may come on any thread.
class BiometricCheck : public Port {
 public:
  // Whether a check is known to be available; never blocks.
  virtual bool canEvaluate() = 0;
  // Called when the device answers what `canEvaluate` could not yet, if that takes a while.
  virtual Subscription observeAnswer(const std::function<void()>& /*observer*/) { return {}; }
  // 1 is a fingerprint, 2 a face. Valid only after `canEvaluate` returned true.
  virtual int biometryType() = 0;
  virtual void evaluate(std::string_view reason, std::function<void(BiometricReply)> reply) = 0;
};

}  // namespace quillmar
