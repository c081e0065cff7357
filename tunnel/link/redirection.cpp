#include "tunnel/link/redirection.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>

#include "tunnel/link/flows.h"
#include "tunnel/link/open_file.h"

namespace quillmar::tunnel {
namespace {

// Deletes the table. It is added first, because deleting a missing table is an error. Both commands are one
// transaction.
constexpr std::string_view removal = R"(
table inet quillmar_tunnel
delete table inet quillmar_tunnel
)";

constexpr std::string_view sign = R"(
table inet quillmar_tunnel_release
delete table inet quillmar_tunnel_release
)";

// The addresses are those of constants.h. WORKER is replaced by the worker's user id.
//
// - DNS to an address of this machine is not redirected, so local resolvers keep their clients. The queries
// that they send to other machines are redirected.
// - Packets of the worker are never redirected or refused.
// - DNS that is still leaving after the translation is refused. Some flows are not translated, and without
// the tunnel's device packets to its address would be routed to the network.
// - TCP is refused by a reset, because programs repeat a connection attempt for seconds after an ICMP error.
// - DNS to a link-local address is refused without translation, because an answer from the tunnel's address
// can't reach a socket bound to the link.
constexpr std::string_view rules = R"(
table inet quillmar_tunnel {
  chain turn {
    meta nfproto ipv4 dnat ip to 198.18.53.53
    meta nfproto ipv6 dnat ip6 to fd71:7569:6c6c:53::53
  }
  chain link_local {
    type filter hook output priority -150; policy accept;
    meta skuid WORKER accept
    ip6 daddr fe80::/10 fib daddr type != local tcp dport 53 reject with tcp reset
    ip6 daddr fe80::/10 fib daddr type != local udp dport 53 reject
  }
  chain out {
    type nat hook output priority -110; policy accept;
    meta skuid WORKER accept
    fib daddr type local accept
    meta l4proto { tcp, udp } th dport 53 jump turn
  }
  chain routed {
    type nat hook prerouting priority -110; policy accept;
    fib daddr type local accept
    meta l4proto { tcp, udp } th dport 53 jump turn
  }
  chain shut {
    type filter hook output priority 10; policy accept;
    fib daddr type local accept
    meta skuid WORKER accept
    tcp dport { 53, 853 } reject with tcp reset
    udp dport { 53, 853 } reject
  }
  chain shut_routed {
    type filter hook forward priority 10; policy accept;
    tcp dport { 53, 853 } reject with tcp reset
    udp dport { 53, 853 } reject
  }
}
)";

constexpr std::string_view worker = "WORKER";

// An unnamed file in memory.
OpenFile memoryFile(std::string_view text) {
  OpenFile file(::memfd_create("nft", MFD_CLOEXEC));
  const bool isWhole = ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
  return isWhole && ::lseek(file.get(), 0, SEEK_SET) == 0 ? std::move(file) : OpenFile();
}

std::string firstLineOf(const OpenFile& file) {
  std::array<char, 512> buffer{};
  const auto size = ::pread(file.get(), buffer.data(), buffer.size(), 0);
  const std::string_view text(buffer.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
  return std::string(text.substr(0, text.find('\n')));
}

std::string runNft(std::string_view script) {
  const auto input = memoryFile(script);
  const auto errors = memoryFile({});
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input.get(), STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errors.get(), STDERR_FILENO);
  std::string name = "nft";
  std::string option = "-f";
  std::string standardInput = "-";
  const std::array<char*, 4> words{name.data(), option.data(), standardInput.data(), nullptr};
  pid_t process = -1;
  const int error = ::posix_spawnp(&process, name.c_str(), &actions, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    return "nft can't be run: " + std::system_category().message(error);
  }
  int status = 0;
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::string() : "nft failed: " + firstLineOf(errors);
}

std::string applied(const std::string& script) {
  auto problem = runNft(script);
  return problem.empty() ? forgetDnsFlows() : problem;
}

}  // namespace

std::string putRedirection(uid_t passes) {
  auto script = std::string(removal).append(rules);
  const auto number = std::to_string(passes);
  for (auto at = script.find(worker); at != std::string::npos; at = script.find(worker, at)) {
    script.replace(at, worker.size(), number);
  }
  return applied(script);
}

std::string liftRedirection() { return applied(std::string(removal)); }

std::string releaseRedirection() { return applied(std::string(sign).append(removal)); }

}  // namespace quillmar::tunnel
