#pragma once

#include <functional>
#include <thread>

#include "platform/dispatch.h"

namespace quillmar {

// Keeps the signals that ask a program to end from ending it, for its whole life; to be called before there
// is a second thread. A closed connection or terminal is seen where it is written to.
void holdEndingSignals();

// Tells of them on the main thread: the number of each that comes.
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
