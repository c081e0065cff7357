#pragma once

#include <sys/types.h>

#include <string>

namespace quillmar::tunnel {

// The user and group that the worker runs as.
struct WorkerUser {
  uid_t user = 0;
  gid_t group = 0;
};

// Permanently drops everything that the worker does not need: root's identity, all capabilities, opening
// files, executing programs, and most system calls. Call it as root, with one thread, after everything has
// been opened. Returns the problem, or an empty text; after a problem some rights may be lost already.
std::string enterCage(const WorkerUser& user);

}  // namespace quillmar::tunnel
