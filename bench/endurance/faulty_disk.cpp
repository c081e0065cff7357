// Loaded into a program by LD_PRELOAD, this makes the disk under QUILLMAR_DISK bad: from the call with the
// number QUILLMAR_DISK_FROM that would change it, for QUILLMAR_DISK_CALLS such calls, or until the file
// QUILLMAR_DISK_MENDED exists. QUILLMAR_DISK_STATE is how: full, read-only, gone or slow.
//
// At its end the program writes to the file QUILLMAR_DISK_COUNT how many calls there were.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr auto slowness = 30ms;

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

long number(const char* name, long otherwise) {
  const std::string text = variable(name);
  return text.empty() ? otherwise : std::atol(text.c_str());
}

template <class Function>
Function real(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// What a call needs of the disk; `look` is whether it may be changed.
enum class Needs { room, change, look, read };

struct Disk {
  const std::string folder = variable("QUILLMAR_DISK");
  const std::string state = variable("QUILLMAR_DISK_STATE");
  const std::string mended = variable("QUILLMAR_DISK_MENDED");
  const long from = number("QUILLMAR_DISK_FROM", 0);
  const long calls = number("QUILLMAR_DISK_CALLS", LONG_MAX);
  std::atomic<long> count = 0;

  ~Disk() {
    if (const auto file = variable("QUILLMAR_DISK_COUNT"); !file.empty()) {
      const auto text = std::to_string(count.load());
      const int out =
          real<int (*)(const char*, int, ...)>("open")(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      if (real<ssize_t (*)(int, const void*, size_t)>("write")(out, text.data(), text.size()) < 0) {
        std::abort();
      }
      real<int (*)(int)>("close")(out);
    }
  }

  bool isBadAt(long call) const {
    return from > 0 && call >= from && call - from < calls &&
           (mended.empty() || ::access(mended.c_str(), F_OK) != 0);
  }

  // True if the call fails, with errno set.
  bool refuses(Needs needs) {
    const bool isBad = isBadAt(needs == Needs::look || needs == Needs::read ? count.load() : ++count);
    if (!isBad) {
      return false;
    }
    if (state == "slow") {
      std::this_thread::sleep_for(slowness);
    } else if (state == "gone") {
      errno = EIO;
      return true;
    } else if (state == "read-only" && needs != Needs::read) {
      errno = EROFS;
      return true;
    } else if (state == "full" && needs == Needs::room) {
      errno = ENOSPC;
      return true;
    }
    return false;
  }

  bool holds(std::string_view path) const { return !folder.empty() && path.starts_with(folder); }
  bool holds(int file) const {
    std::array<char, PATH_MAX> path{};
    const auto link = "/proc/self/fd/" + std::to_string(file);
    return !folder.empty() && ::readlink(link.c_str(), path.data(), path.size() - 1) > 0 &&
           holds(path.data());
  }

  template <class Place>
  bool refuses(const Place& place, Needs needs) {
    const int error = errno;
    const bool isHere = holds(place);
    errno = error;
    return isHere && refuses(needs);
  }
};

Disk& disk() {
  static Disk disk;
  return disk;
}

// As early as the program, so that the count is written at the end.
[[maybe_unused]] const Disk& atStart = disk();

Needs needsOf(const char* path, int flags) {
  if ((flags & O_CREAT) != 0 && ::access(path, F_OK) != 0) {
    return Needs::room;
  }
  return (flags & O_ACCMODE) == O_RDONLY ? Needs::read : Needs::change;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  return disk().refuses(path, needsOf(path, flags))
             ? -1
             : real<int (*)(const char*, int, ...)>("open")(path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  return disk().refuses(path, needsOf(path, flags))
             ? -1
             : real<int (*)(const char*, int, ...)>("open64")(path, flags, mode);
}

std::FILE* fopen64(const char* path, const char* mode) {
  return disk().refuses(path, std::string_view(mode).starts_with('r') ? Needs::read : Needs::room)
             ? nullptr
             : real<std::FILE* (*)(const char*, const char*)>("fopen64")(path, mode);
}

ssize_t read(int file, void* data, size_t size) {
  return disk().refuses(file, Needs::read) ? -1
                                           : real<ssize_t (*)(int, void*, size_t)>("read")(file, data, size);
}

ssize_t pread64(int file, void* data, size_t size, off64_t offset) {
  return disk().refuses(file, Needs::read)
             ? -1
             : real<ssize_t (*)(int, void*, size_t, off64_t)>("pread64")(file, data, size, offset);
}

ssize_t write(int file, const void* data, size_t size) {
  return disk().refuses(file, Needs::room)
             ? -1
             : real<ssize_t (*)(int, const void*, size_t)>("write")(file, data, size);
}

ssize_t writev(int file, const iovec* parts, int count) {
  return disk().refuses(file, Needs::room)
             ? -1
             : real<ssize_t (*)(int, const iovec*, int)>("writev")(file, parts, count);
}

ssize_t pwrite64(int file, const void* data, size_t size, off64_t offset) {
  return disk().refuses(file, Needs::room)
             ? -1
             : real<ssize_t (*)(int, const void*, size_t, off64_t)>("pwrite64")(file, data, size, offset);
}

int ftruncate64(int file, off64_t size) noexcept {
  return disk().refuses(file, Needs::change) ? -1 : real<int (*)(int, off64_t)>("ftruncate64")(file, size);
}

int fallocate64(int file, int mode, off64_t offset, off64_t size) {
  return disk().refuses(file, Needs::room)
             ? -1
             : real<int (*)(int, int, off64_t, off64_t)>("fallocate64")(file, mode, offset, size);
}

int fsync(int file) { return disk().refuses(file, Needs::room) ? -1 : real<int (*)(int)>("fsync")(file); }

int fdatasync(int file) {
  return disk().refuses(file, Needs::room) ? -1 : real<int (*)(int)>("fdatasync")(file);
}

int rename(const char* from, const char* to) noexcept {
  return disk().refuses(from, Needs::change) ? -1
                                             : real<int (*)(const char*, const char*)>("rename")(from, to);
}

int unlink(const char* path) noexcept {
  return disk().refuses(path, Needs::change) ? -1 : real<int (*)(const char*)>("unlink")(path);
}

int access(const char* path, int mode) noexcept {
  return (mode & W_OK) != 0 && disk().refuses(path, Needs::look)
             ? -1
             : real<int (*)(const char*, int)>("access")(path, mode);
}

int mkdir(const char* path, mode_t mode) noexcept {
  return disk().refuses(path, Needs::room) ? -1 : real<int (*)(const char*, mode_t)>("mkdir")(path, mode);
}

}  // extern "C"
