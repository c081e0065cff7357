#pragma once

#include <functional>
#include <thread>

#include "platform/dispatch.h"

namespace quillmar {

// Blocks the signals that would terminate the program, for its whole life. Call it before a second thread
// exists. A closed connection or terminal is noticed by the failing write instead.
void holdEndingSignals();

// Reports each such signal by its number, on the main thread.
class SignalWatch {
 public:
  SignalWatch(Dispatch& dispatch, std::function<void(int)> heard);
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;
  ~SignalWatch();

 private:
  std::thread thread_;
};

}  // namespace quillmar
