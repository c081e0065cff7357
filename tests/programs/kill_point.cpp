// Loaded into a program by LD_PRELOAD, this kills it at one of its writes, syncs, sends and the like: at the
// call with the number in QUILLMAR_KILL_AT. Without that variable it counts the calls, and writes their
// number at the end to the file named by QUILLMAR_KILL_COUNT.

#include <dlfcn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::atomic<long> count{0};

long killAt() {
  static const long point = [] {
    const char* text = std::getenv("QUILLMAR_KILL_AT");
    return text ? std::atol(text) : 0L;
  }();
  return point;
}

void pass() {
  if (++count == killAt()) {
    ::kill(::getpid(), SIGKILL);
  }
}

template <class Function>
Function next(Function /*same*/, const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

struct Report {
  ~Report() {
    if (const char* file = std::getenv("QUILLMAR_KILL_COUNT")) {
      if (std::FILE* out = std::fopen(file, "w")) {
        std::fprintf(out, "%ld", count.load());
        std::fclose(out);
      }
    }
  }
} report;

}  // namespace

extern "C" {

ssize_t write(int file, const void* data, size_t size) {
  static const auto real = next(&::write, "write");
  pass();
  return real(file, data, size);
}

ssize_t pwrite64(int file, const void* data, size_t size, off64_t offset) {
  static const auto real = next(&::pwrite64, "pwrite64");
  pass();
  return real(file, data, size, offset);
}

int ftruncate64(int file, off64_t size) noexcept {
  static const auto real = reinterpret_cast<int (*)(int, off64_t)>(dlsym(RTLD_NEXT, "ftruncate64"));
  pass();
  return real(file, size);
}

int fsync(int file) {
  static const auto real = next(&::fsync, "fsync");
  pass();
  return real(file);
}

int fdatasync(int file) {
  static const auto real = next(&::fdatasync, "fdatasync");
  pass();
  return real(file);
}

int unlink(const char* path) noexcept {
  static const auto real = reinterpret_cast<int (*)(const char*)>(dlsym(RTLD_NEXT, "unlink"));
  pass();
  return real(path);
}

int close(int file) {
  static const auto real = next(&::close, "close");
  pass();
  return real(file);
}

ssize_t send(int socket, const void* data, size_t size, int flags) {
  static const auto real = next(&::send, "send");
  pass();
  return real(socket, data, size, flags);
}

ssize_t recv(int socket, void* data, size_t size, int flags) {
  static const auto real = next(&::recv, "recv");
  pass();
  return real(socket, data, size, flags);
}

}  // extern "C"
