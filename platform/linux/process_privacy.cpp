#include "platform/linux/process_privacy.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace quillmar {

void keepNewFilesPrivate() { ::umask(S_IRWXG | S_IRWXO); }

void forbidCoreDumps() {
  constexpr rlimit none{.rlim_cur = 0, .rlim_max = 0};
  ::setrlimit(RLIMIT_CORE, &none);
}

void forbidInspection() { ::prctl(PR_SET_DUMPABLE, 0); }

}  // namespace quillmar
