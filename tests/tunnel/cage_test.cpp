#include "tunnel/worker/cage.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>

namespace quillmar::tunnel {
namespace {

constexpr WorkerUser nobody{65534, 65534};

struct TunnelCage : testing::Test {
  void SetUp() override {
    if (::geteuid() != 0) {
      GTEST_SKIP() << "Losing root's rights takes root.";
    }
  }
};

// The exit status of a process that runs `act` in the cage, or the negated number of the signal that ended
// it.
int inCage(const std::function<int()>& act) {
  const pid_t child = ::fork();
  if (child == 0) {
    constexpr int notShutIn = 255;
    ::_exit(enterCage(nobody).empty() ? act() : notShutIn);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

// Zero, or errno.
int errorOf(long outcome) { return outcome < 0 ? errno : 0; }

TEST_F(TunnelCage, has_no_way_back_to_root) {
  EXPECT_NE(inCage([] { return errorOf(::setresuid(0, 0, 0)); }), 0);
  EXPECT_NE(inCage([] { return errorOf(::setgroups(0, nullptr)); }), 0);
}

#ifndef QUILLMAR_IS_SANITIZED
TEST_F(TunnelCage, opens_no_files) {
  EXPECT_EQ(inCage([] { return errorOf(::open("/etc/passwd", O_RDONLY)); }), ENOSYS);
  EXPECT_EQ(inCage([] { return errorOf(::open("/tmp/new", O_WRONLY | O_CREAT, 0600)); }), ENOSYS);
  EXPECT_EQ(inCage([] { return errorOf(::unlink("/tmp/new")); }), ENOSYS);
  EXPECT_EQ(inCage([] { return errorOf(::syscall(SYS_memfd_create, "x", 0)); }), ENOSYS);
}

TEST_F(TunnelCage, uses_only_the_network) {
  for (const int family : {AF_INET, AF_INET6}) {
    EXPECT_EQ(inCage([family] { return errorOf(::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0)); }), 0);
    EXPECT_EQ(inCage([family] { return errorOf(::socket(family, SOCK_RAW, IPPROTO_ICMP)); }), EPERM);
  }
  for (const int family : {AF_UNIX, AF_NETLINK, AF_PACKET, AF_VSOCK}) {
    EXPECT_EQ(inCage([family] { return errorOf(::socket(family, SOCK_DGRAM, 0)); }), ENOSYS) << family;
  }
  EXPECT_EQ(
      inCage([] {
        const sockaddr_in any{.sin_family = AF_INET, .sin_port = htons(5300), .sin_addr = {}, .sin_zero = {}};
        return errorOf(
            ::bind(::socket(AF_INET, SOCK_DGRAM, 0), reinterpret_cast<const sockaddr*>(&any), sizeof any));
      }),
      ENOSYS)
      << "only what it was given listens";
}

TEST_F(TunnelCage, starts_nothing_and_runs_nothing_new) {
  EXPECT_EQ(inCage([] { return ::execl("/bin/true", "true", nullptr); }), -SIGSYS);
  EXPECT_EQ(inCage([] { return errorOf(::syscall(SYS_clone3, nullptr, 0)); }), ENOSYS);
  EXPECT_EQ(inCage([] { return errorOf(::fork()); }), ENOSYS);
  EXPECT_EQ(inCage([] {
              void* const memory = ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE | PROT_EXEC,
                                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
              return memory == MAP_FAILED ? errno : 0;
            }),
            ENOSYS);
  EXPECT_EQ(inCage([] { return errorOf(::syscall(SYS_mprotect, nullptr, 0, PROT_EXEC)); }), ENOSYS);
}

TEST_F(TunnelCage, leaves_other_processes_alone) {
  EXPECT_EQ(inCage([parent = ::getpid()] { return errorOf(::kill(parent, 0)); }), ENOSYS);
  EXPECT_EQ(
      inCage([parent = ::getpid()] { return static_cast<int>(::syscall(SYS_ptrace, 16, parent, 0, 0)); }),
      -SIGSYS);
  EXPECT_EQ(inCage([]() -> int { std::abort(); }), -SIGABRT) << "and may end itself";
}
#endif

TEST_F(TunnelCage, needs_root_to_be_entered) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::_exit(::setresuid(nobody.user, nobody.user, nobody.user) == 0 && !enterCage(nobody).empty() ? 0 : 1);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace quillmar::tunnel
