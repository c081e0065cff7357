#include "platform/linux/signal_watch.h"

#include <pthread.h>

#include <csignal>
#include <utility>

namespace quillmar {
namespace {

// Ends the watch itself.
const int farewell = SIGRTMIN;

sigset_t watchedSignals() {
  sigset_t watched;
  sigemptyset(&watched);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, farewell}) {
    sigaddset(&watched, signal);
  }
  return watched;
}

}  // namespace

void holdEndingSignals() {
  const sigset_t watched = watchedSignals();
  pthread_sigmask(SIG_BLOCK, &watched, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
}

SignalWatch::SignalWatch(Dispatch& dispatch, std::function<void(int)> heard)
    : thread_([&dispatch, heard = std::move(heard)] {
        const sigset_t watched = watchedSignals();
        for (int signal = 0; ::sigwait(&watched, &signal) == 0 && signal != farewell;) {
          dispatch.main().async([heard, signal] { heard(signal); });
        }
      }) {}

SignalWatch::~SignalWatch() {
  pthread_kill(thread_.native_handle(), farewell);
  thread_.join();
}

}  // namespace quillmar
