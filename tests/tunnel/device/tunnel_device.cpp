#include "tests/tunnel/device/tunnel_device.h"

#include <gmock/gmock.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <sstream>
#include <variant>

#include "tests/shared_world.h"
#include "tests/tunnel/support/messages.h"
#include "tunnel/dns/query.h"

namespace quillmar::tunnel::test {
namespace {

using testing::HasSubstr;

const auto& shared = SharedWorld<DeviceWorld>::forAllTests();

std::string answerWith(const std::string& question, std::uint16_t code, const std::string& record) {
  const auto query = std::get<Query>(parseQuery(question));
  constexpr unsigned flags = flag::response | flag::recursionDesired | flag::recursionAvailable;
  std::string text;
  append(text, Header{.flags = static_cast<std::uint16_t>(flags | code),
                      .questions = 1,
                      .answers = static_cast<std::uint16_t>(record.empty() ? 0 : 1)});
  text += query.question.name;
  append16(text, query.question.type);
  append16(text, query.question.klass);
  return text + record;
}

pid_t childOf(pid_t process, const std::string& name) {
  std::istringstream children(TunnelDevice::textOf("/proc/" + std::to_string(process) + "/task/" +
                                                   std::to_string(process) + "/children"));
  for (pid_t child = 0; children >> child;) {
    if (TunnelDevice::textOf("/proc/" + std::to_string(child) + "/comm").starts_with(name)) {
      return child;
    }
  }
  return 0;
}

}  // namespace

DeviceWorld& world() { return shared(); }

std::string addressAnswer(const std::string& question, char lastByte, std::uint32_t life) {
  const bool isForAddress = std::get<Query>(parseQuery(question)).question.type == type::a;
  return answerWith(question, rcode::noError,
                    isForAddress ? recordText({.ttl = life, .data = "\xc0\x00\x02"s + lastByte}) : "");
}

std::string noSuchName(const std::string& question) { return answerWith(question, rcode::nxDomain, {}); }

TestEndpoint::Answering always(char lastByte) {
  return [lastByte](TestPeer& peer, std::int32_t stream, const std::string& question) {
    peer.answer(stream, addressAnswer(question, lastByte));
  };
}

TunnelDevice::~TunnelDevice() {
  if (program) {
    program->end(SIGTERM);
  }
}

void TunnelDevice::start() {
  program = world().run(endpoint.caFile());
  readUntil("Has the name");
}

std::string TunnelDevice::readUntil(const std::string& text) const {
  auto lines = program->readUntil(text);
  EXPECT_THAT(lines, HasSubstr(text));
  return lines;
}

void TunnelDevice::protect() {
  start();
  readUntil("No connection is to be protected.");
  world().addProfile(endpoint.url());
  world().nmcli({"connection", "up", DeviceWorld::profile});
}

void TunnelDevice::disconnect() const {
  world().nmcli({"connection", "down", DeviceWorld::profile});
  readUntil("Protects no more, as NetworkManager wants it.");
}

std::string TunnelDevice::rules() { return runCommand({"nft", "list", "ruleset"}).output; }

std::string TunnelDevice::textOf(const std::string& path) {
  return (std::ostringstream() << std::ifstream(path).rdbuf()).str();
}

pid_t TunnelDevice::worker() { return childOf(childOf(::getpid(), "quillmar-tunnel"), "quillmar-worker"); }

void TunnelDevice::killWorker() {
  const auto process = worker();
  ASSERT_GT(process, 0) << "everything else would be killed";
  const auto file = openProcess(process);
  EXPECT_EQ(::kill(process, SIGKILL), 0);
  awaitDeath(file);
}

int TunnelDevice::openProcess(pid_t process) {
  return static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
}

void TunnelDevice::awaitDeath(int process) {
  pollfd death{process, POLLIN, 0};
  EXPECT_EQ(::poll(&death, 1, 30'000), 1);
  ::close(process);
}

std::string TunnelDevice::newName() {
  static int last = 0;
  return "name" + std::to_string(++last) + ".example";
}

}  // namespace quillmar::tunnel::test
