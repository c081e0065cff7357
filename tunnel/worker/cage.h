#pragma once

#include <sys/types.h>

#include <string>

namespace quillmar::tunnel {

// As whom the worker runs.
struct WorkerUser {
  uid_t user = 0;
  gid_t group = 0;
};

// Takes from this process, for good, whatever reading from the network does not need: root's identity, every
// capability, new files, other programs, and most of the kernel's calls. To be called by root with one
// thread, after all that has to be opened is open. The problem, if there is one; the process may have lost a
// part of its rights then.
std::string enterCage(const WorkerUser& user);

}  // namespace quillmar::tunnel
