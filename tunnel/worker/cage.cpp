#include "tunnel/worker/cage.h"

#include <fcntl.h>
#include <grp.h>
#include <linux/capability.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <memory>
#include <system_error>

namespace quillmar::tunnel {
namespace {

std::string problem(const std::string& what, int error = errno) {
  return what + ": " + std::system_category().message(error);
}

bool emptyBoundingSet() {
  for (unsigned long capability = 0; ::prctl(PR_CAPBSET_READ, capability, 0, 0, 0) >= 0; ++capability) {
    if (::prctl(PR_CAPBSET_DROP, capability, 0, 0, 0) != 0) {
      return false;
    }
  }
  return true;
}

bool dropCapabilities() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  const std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> none{};
  return ::syscall(SYS_capset, &header, none.data()) == 0;
}

std::string dropRights(const WorkerUser& user) {
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
    return problem("new privileges can't be ruled out");
  }
  if (!emptyBoundingSet()) {
    return problem("the bounding set can't be emptied");
  }
  if (::setgroups(0, nullptr) != 0 || ::setresgid(user.group, user.group, user.group) != 0 ||
      ::setresuid(user.user, user.user, user.user) != 0) {
    return problem("the user can't be changed");
  }
  if (!dropCapabilities()) {
    return problem("the capabilities can't be dropped");
  }
  // The change of the user resets both.
  if (::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) != 0 || ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0) != 0) {
    return problem("the process can't be shut");
  }
  return {};
}

struct Limit {
  decltype(RLIMIT_CORE) resource;
  rlim_t most;
};

constexpr rlim_t mebibyte = rlim_t{1024} * 1024;
constexpr std::array limits{Limit{RLIMIT_CORE, 0}, Limit{RLIMIT_FSIZE, 0}, Limit{RLIMIT_MEMLOCK, 0},
                            Limit{RLIMIT_NPROC, 0},
                            // 64 TCP clients with a timer each, the connections to the endpoint and to the
                            // link's name servers, and the descriptors from the start.
                            Limit{RLIMIT_NOFILE, 256},
                            // Far more than it uses. Answers to 1,024 open questions could take 64 MiB.
                            Limit{RLIMIT_DATA, 256 * mebibyte}};

#ifdef QUILLMAR_IS_SANITIZED
// A sanitizer needs more memory and more system calls than the program.
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

std::string limitResources() {
  for (const auto& [resource, most] : limits) {
    const rlimit limit{most, most};
    if (!(isSanitized && resource == RLIMIT_DATA) && ::setrlimit(resource, &limit) != 0) {
      return problem("a resource can't be limited");
    }
  }
  return {};
}

constexpr std::array allowed{
    // the network
    SCMP_SYS(accept), SCMP_SYS(accept4), SCMP_SYS(connect), SCMP_SYS(getpeername), SCMP_SYS(getsockname),
    SCMP_SYS(getsockopt), SCMP_SYS(recvfrom), SCMP_SYS(recvmmsg), SCMP_SYS(recvmsg), SCMP_SYS(sendmmsg),
    SCMP_SYS(sendmsg), SCMP_SYS(sendto), SCMP_SYS(setsockopt), SCMP_SYS(shutdown),
    // open descriptors
    SCMP_SYS(close), SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(write), SCMP_SYS(writev),
    // waiting and time
    SCMP_SYS(clock_gettime), SCMP_SYS(epoll_ctl), SCMP_SYS(epoll_pwait), SCMP_SYS(epoll_wait),
    SCMP_SYS(futex), SCMP_SYS(gettimeofday), SCMP_SYS(poll), SCMP_SYS(ppoll), SCMP_SYS(restart_syscall),
    SCMP_SYS(time), SCMP_SYS(timerfd_create), SCMP_SYS(timerfd_settime),
    // memory
    SCMP_SYS(brk), SCMP_SYS(madvise), SCMP_SYS(mremap), SCMP_SYS(munmap),
    // the process
    SCMP_SYS(exit), SCMP_SYS(exit_group), SCMP_SYS(getpid), SCMP_SYS(getrandom), SCMP_SYS(gettid),
    SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn)};

// Code of the worker or its libraries never makes these calls, so one of them means that the worker is
// compromised: it is killed. All other calls fail with ENOSYS, because a library may probe for them.
constexpr std::array deadly{SCMP_SYS(add_key),
                            SCMP_SYS(bpf),
                            SCMP_SYS(delete_module),
                            SCMP_SYS(execve),
                            SCMP_SYS(execveat),
                            SCMP_SYS(finit_module),
                            SCMP_SYS(fork),
                            SCMP_SYS(init_module),
                            SCMP_SYS(io_uring_setup),
                            SCMP_SYS(kexec_load),
                            SCMP_SYS(keyctl),
                            SCMP_SYS(mount),
                            SCMP_SYS(perf_event_open),
                            SCMP_SYS(process_vm_readv),
                            SCMP_SYS(process_vm_writev),
                            SCMP_SYS(ptrace),
                            SCMP_SYS(request_key),
                            SCMP_SYS(setns),
                            SCMP_SYS(umount2),
                            SCMP_SYS(unshare),
                            SCMP_SYS(userfaultfd),
                            SCMP_SYS(vfork)};

// A call that is allowed only if one argument fulfils a condition.
struct Conditional {
  int call;
  scmp_arg_cmp condition;
};

scmp_arg_cmp equals(unsigned argument, std::uint64_t value) { return {argument, SCMP_CMP_EQ, value, 0}; }
scmp_arg_cmp lacks(unsigned argument, std::uint64_t bit) { return {argument, SCMP_CMP_MASKED_EQ, bit, 0}; }

std::string filterSystemCalls() {
  const std::array conditional{
      Conditional{SCMP_SYS(socket), equals(0, AF_INET)}, Conditional{SCMP_SYS(socket), equals(0, AF_INET6)},
      Conditional{SCMP_SYS(ioctl), equals(1, FIONBIO)}, Conditional{SCMP_SYS(mmap), lacks(2, PROT_EXEC)},
      // for abort()
      Conditional{SCMP_SYS(tgkill), equals(0, static_cast<std::uint64_t>(::getpid()))}};
  const std::unique_ptr<void, decltype(&seccomp_release)> filter(seccomp_init(SCMP_ACT_ERRNO(ENOSYS)),
                                                                 &seccomp_release);
  if (!filter) {
    return problem("there is no filter of system calls", ENOMEM);
  }
  int error = 0;
  const auto add = [&](std::uint32_t action, int call, const std::array<scmp_arg_cmp, 1>& conditions,
                       unsigned count) {
    const int failed = seccomp_rule_add_array(filter.get(), action, call, count, conditions.data());
    error = failed != 0 ? -failed : error;
  };
  for (const int call : allowed) {
    add(SCMP_ACT_ALLOW, call, {}, 0);
  }
  for (const int call : deadly) {
    add(SCMP_ACT_KILL_PROCESS, call, {}, 0);
  }
  for (const auto& [call, condition] : conditional) {
    add(SCMP_ACT_ALLOW, call, {condition}, 1);
  }
  if (error == 0) {
    error = -seccomp_load(filter.get());
  }
  return error == 0 ? std::string() : problem("system calls can't be filtered", error);
}

}  // namespace

std::string enterCage(const WorkerUser& user) {
  auto obstacle = dropRights(user);
  if (obstacle.empty()) {
    obstacle = limitResources();
  }
  if (obstacle.empty() && !isSanitized) {
    obstacle = filterSystemCalls();
  }
  return obstacle;
}

}  // namespace quillmar::tunnel
