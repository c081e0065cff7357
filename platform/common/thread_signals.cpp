#include "platform/common/thread_signals.h"

#include <csignal>

namespace quillmar {

void blockSignalsOfThisThread() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

}  // namespace quillmar
