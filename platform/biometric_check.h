#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/signal.h"
#include "platform/port.h"

namespace quillmar {

// What a failed check reports. A code of the platform is negative; none means that it gave no reason.
struct BiometricReply {
  bool success = false;
  std::optional<int> code;
};

// The device's check of a finger or a face. Main thread only; the reply may come on any thread.
class BiometricCheck : public Port {
 public:
  // As far as is known by now; never waits for the device.
  virtual bool canEvaluate() = 0;
  // Told once the device has given the answer that `canEvaluate` lacked, where that takes a while.
  virtual Subscription observeAnswer(const std::function<void()>& /*observer*/) { return {}; }
  // 1 is a finger, 2 a face; only meaningful after `canEvaluate` said yes.
  virtual int biometryType() = 0;
  virtual void evaluate(std::string_view reason, std::function<void(BiometricReply)> reply) = 0;
};

}  // namespace quillmar
