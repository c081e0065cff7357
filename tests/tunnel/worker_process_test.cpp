#include "tunnel/service/worker_process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pwd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <boost/asio/executor_work_guard.hpp>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>

#include "tests/tunnel/support/messages.h"
#include "tests/tunnel/support/running_server.h"
#include "tests/tunnel/support/test_endpoint.h"
#include "tunnel/network/sockets.h"

namespace quillmar::tunnel {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
namespace fs = std::filesystem;

// A shell in place of the worker, with the service's socket at descriptor 3.
struct TunnelWorkerProcess : testing::Test {
  void start(const std::string& script, std::vector<OpenFile> listeners = {}, WorkerPulse::Pace pace = {}) {
    worker.emplace(context,
                   WorkerProcess::Given{.program = "/bin/sh",
                                        .words = {"sh", "-c", script},
                                        .listeners = std::move(listeners),
                                        .pace = pace},
                   WorkerProcess::Events{.tell = [this](const std::string& line) { lines.push_back(line); },
                                         .servers =
                                             [this] {
                                               ++serversWanted;
                                               return NameServers();
                                             },
                                         .reached = {},
                                         .lastGood = [] { return LinkBootstrap::LastGood(); }});
  }
  void runUntil(const std::string& text) {
    while (
        std::ranges::none_of(lines, [&](const auto& line) { return line.find(text) != std::string::npos; })) {
      context.run_one();
    }
  }

  boost::asio::io_context context{1};
  std::vector<std::string> lines;
  int serversWanted = 0;
  std::optional<WorkerProcess> worker;
};

const std::string killedAgain = "The worker was killed by signal 9; it is started again.";

TEST_F(TunnelWorkerProcess, is_started_again_when_it_dies_and_less_often_when_it_dies_at_once) {
  start("kill -KILL $$");
  runUntil("milliseconds");
  EXPECT_THAT(lines,
              ElementsAre(killedAgain, killedAgain, killedAgain,
                          "The worker was killed by signal 9; it is started again in 250 milliseconds."));
}

TEST_F(TunnelWorkerProcess, says_how_it_ended) {
  start("exit 7");
  runUntil("again");
  EXPECT_THAT(lines, ElementsAre("The worker ended with status 7; it is started again."));
}

TEST_F(TunnelWorkerProcess, may_be_missing) {
  worker.emplace(context, WorkerProcess::Given{.program = "/nowhere", .words = {"nowhere"}},
                 WorkerProcess::Events{.tell = [this](const std::string& line) { lines.push_back(line); },
                                       .servers = {},
                                       .reached = {},
                                       .lastGood = {}});
  worker->take("https://doh.example/");
  worker->networkChanged();
  runUntil("milliseconds");
  EXPECT_EQ(lines.front(), "The worker can't be started: No such file or directory; it is started again.");
}

TEST_F(TunnelWorkerProcess, is_killed_after_an_invalid_message) {
  start("printf nonsense >&3; exec cat <&3 >/dev/null");
  runUntil("again");
  EXPECT_THAT(lines, ElementsAre("The worker says what it may not: it is ended.", killedAgain));
}

TEST_F(TunnelWorkerProcess, is_killed_when_it_floods) {
  start(R"(while :; do printf '\000\146' >&3; done)");
  runUntil("again");
  EXPECT_THAT(lines, ElementsAre("The worker says what it may not: it is ended.", killedAgain));
  EXPECT_EQ(serversWanted, WorkerGuard::mostMessages);
}

TEST_F(TunnelWorkerProcess, is_killed_when_it_does_not_read) {
  start("exec sleep 1000");
  while (lines.empty()) {
    worker->take("https://doh.example/" + std::string(4000, 'x'));
  }
  EXPECT_THAT(lines, ElementsAre("The worker does not listen: it is ended.", killedAgain));
}

TEST_F(TunnelWorkerProcess, is_killed_when_it_shuts_down_reading) {
  start("exec 3>&-; exec sleep 1000");
  runUntil("again");
  EXPECT_THAT(lines, ElementsAre(killedAgain));
}

TEST_F(TunnelWorkerProcess, is_killed_when_it_hangs_while_a_query_waits) {
  auto sockets = std::get<Sockets>(bindSockets(context, *parseListenAddress("127.0.0.1:0")));
  const auto server = sockets.udp.local_endpoint();
  std::vector<OpenFile> listeners;
  listeners.emplace_back(sockets.udp.release());
  listeners.emplace_back(sockets.tcp.release());
  start("exec sleep 1000", std::move(listeners), {.patience = std::chrono::milliseconds(1)});
  UdpSocket client(context, boost::asio::ip::udp::v4());
  client.send_to(boost::asio::buffer("query", 5), server);
  runUntil("again");
  EXPECT_THAT(lines, ElementsAre("The worker does not answer: it is ended.", killedAgain));
}

// The shell sends back the bytes of every later message in hexadecimal, as a line for the log.
TEST_F(TunnelWorkerProcess, receives_each_change) {
  start(R"(next() { dd bs=16384 count=1 <&3 2>/dev/null | od -An -v -tx1; }
           next >/dev/null
           printf '\000\146' >&3
           while :; do set -- $(next); printf '\000\145\000\013%s %s %s %s' $1 $2 ${3:-00} ${4:-00} >&3; done)");
  worker->networkChanged();
  worker->take("");
  while (lines.size() < 3) {
    context.run_one();
  }
  EXPECT_THAT(lines, testing::UnorderedElementsAre("00 04 00 00", "00 02 00 00", "00 03 00 00"))
      << "the network, no endpoint, no servers";
}

TEST_F(TunnelWorkerProcess, ends_with_the_service) {
  start(R"(printf '\000\145\000\010%08d' $$ >&3; exec sleep 1000)");
  while (lines.empty()) {
    context.run_one();
  }
  ASSERT_THAT(lines, SizeIs(1));
  const pid_t process = std::stoi(lines.front());
  ASSERT_GT(process, 0);
  EXPECT_EQ(::kill(process, 0), 0);
  worker.reset();
  EXPECT_EQ(::kill(process, 0), -1);
}

TEST(TunnelWorkerUser, runs_no_other_program) {
  const auto* const known = ::getpwnam("quillmar-tunnel");
  EXPECT_EQ(workersUser().user, known != nullptr ? known->pw_uid : 60853);
  EXPECT_EQ(::getpwuid(60853), nullptr);
}

std::string answerTo(const std::string& question) {
  const auto query = std::get<Query>(parseQuery(question));
  std::string text;
  append(text, Header{.flags = flag::response | flag::recursionAvailable, .questions = 1, .answers = 1});
  text += query.question.name;
  append16(text, query.question.type);
  append16(text, query.question.klass);
  return text + recordText({});
}

// The real worker, with an endpoint on this machine.
class TunnelWorker : public testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) {
      GTEST_SKIP() << "Shutting a process in takes root.";
    }
    boost::asio::io_context binding;
    auto sockets = std::get<Sockets>(bindSockets(binding, *parseListenAddress("127.0.0.1:0")));
    port = sockets.tcp.local_endpoint().port();
    std::vector<OpenFile> listeners;
    listeners.emplace_back(sockets.udp.release());
    listeners.emplace_back(sockets.tcp.release());
    worker.emplace(context,
                   WorkerProcess::Given{.program = QUILLMAR_TUNNEL,
                                        .words = {"quillmar-tunnel", "worker"},
                                        .listeners = std::move(listeners),
                                        .user = {60853, 60854},
                                        .caFile = endpoint.caFile()},
                   WorkerProcess::Events{.tell =
                                             [this](const std::string& line) {
                                               const std::scoped_lock lock(mutex);
                                               lines.push_back(line);
                                             },
                                         .servers = [] { return NameServers(); },
                                         .reached = [](const auto&, const auto&) {},
                                         .lastGood = [] { return LinkBootstrap::LastGood(); }});
    worker->take(endpoint.url());
    running = std::thread([this] {
      const auto work = boost::asio::make_work_guard(context);
      context.run();
    });
  }
  void TearDown() override {
    context.stop();
    if (running.joinable()) {
      running.join();
    }
  }

  // The result of one query, whichever worker answers it.
  std::string ask(const std::string& name, Channel channel = Channel::udp) const {
    const auto header = readHeader(askServer(port, queryText({.name = name}), channel));
    return !header                ? "nothing"
           : header->answers == 1 ? "an answer"
                                  : "code " + std::to_string(header->rcode());
  }
  // The child processes of all threads.
  static std::vector<pid_t> children() {
    std::vector<pid_t> all;
    for (const auto& task : fs::directory_iterator("/proc/self/task")) {
      std::ifstream list(task.path() / "children");
      for (pid_t child = 0; list >> child;) {
        all.push_back(child);
      }
    }
    return all;
  }
  static pid_t process() {
    const auto all = children();
    EXPECT_THAT(all, SizeIs(1));
    return all.empty() ? 0 : all.front();
  }
  static void killWorker() {
    const auto worker = process();
    ASSERT_GT(worker, 0) << "everything else would be killed";
    pollfd death{static_cast<int>(::syscall(SYS_pidfd_open, worker, 0)), POLLIN, 0};
    EXPECT_EQ(::kill(worker, SIGKILL), 0);
    EXPECT_EQ(::poll(&death, 1, 30'000), 1);
    ::close(death.fd);
  }
  static std::map<std::string, std::string> status(pid_t process) {
    std::map<std::string, std::string> fields;
    std::ifstream file("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(file, line);) {
      const auto colon = line.find(':');
      fields[line.substr(0, colon)] = line.substr(std::min(line.size(), colon + 2));
    }
    return fields;
  }
  std::vector<std::string> told() {
    const std::scoped_lock lock(mutex);
    return lines;
  }

  TestEndpoint endpoint{[](TestPeer& peer, std::int32_t stream, const std::string& question) {
    peer.answer(stream, answerTo(question));
  }};
  boost::asio::io_context context{1};
  int port = 0;
  std::mutex mutex;
  std::vector<std::string> lines;
  std::optional<WorkerProcess> worker;
  std::thread running;
};

TEST_F(TunnelWorker, answers_in_its_cage) {
  EXPECT_EQ(ask("a.example"), "an answer");
  EXPECT_EQ(ask("b.example", Channel::tcp), "an answer");
  EXPECT_THAT(told(), IsEmpty());
}

TEST_F(TunnelWorker, has_no_rights) {
  ASSERT_EQ(ask("a.example"), "an answer");
  const auto shown = status(process());
  for (const auto* identity : {"Uid", "Gid"}) {
    const std::string number = identity == std::string("Uid") ? "60853" : "60854";
    EXPECT_EQ(shown.at(identity), number + '\t' + number + '\t' + number + '\t' + number);
  }
  EXPECT_THAT(shown.at("Groups"), testing::MatchesRegex(" *"));
  for (const auto* set : {"CapInh", "CapPrm", "CapEff", "CapBnd", "CapAmb"}) {
    EXPECT_EQ(shown.at(set), "0000000000000000") << set;
  }
  EXPECT_EQ(shown.at("NoNewPrivs"), "1");
#ifndef QUILLMAR_IS_SANITIZED
  EXPECT_EQ(shown.at("Seccomp"), "2");
  EXPECT_EQ(shown.at("Threads"), "1");
#endif
}

TEST_F(TunnelWorker, has_only_sockets_and_wait_descriptors_open) {
  ASSERT_EQ(ask("a.example"), "an answer");
  std::map<std::string, int> kinds;
  for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(process()) + "/fd")) {
    const auto target = fs::read_symlink(entry.path()).string();
    ++kinds[target.starts_with("socket:") ? "socket" : target];
  }
  // The sockets: one to the service, two listeners, and one to the endpoint.
  EXPECT_THAT(kinds, ElementsAre(std::pair("/dev/null", 3), std::pair("anon_inode:[eventfd]", 1),
                                 std::pair("anon_inode:[eventpoll]", 1), std::pair("anon_inode:[timerfd]", 3),
                                 std::pair("socket", 4)));
}

TEST(TunnelWorkerWithoutAuthorities, says_so_and_is_tried_again) {
  boost::asio::io_context context{1};
  std::vector<std::string> lines;
  WorkerProcess worker(
      context,
      {.program = QUILLMAR_TUNNEL, .words = {"quillmar-tunnel", "worker"}, .caFile = "/nowhere/ca.pem"},
      {.tell = [&](const std::string& line) { lines.push_back(line); },
       .servers = {},
       .reached = {},
       .lastGood = [] { return LinkBootstrap::LastGood(); }});
  while (lines.size() < 2) {
    context.run_one();
  }
  EXPECT_THAT(lines[0], testing::StartsWith(
                            "The worker can't begin: the certificate authorities in '/nowhere/ca.pem'"));
  EXPECT_EQ(lines[1], "The worker ended with status 1; it is started again.");
}

TEST_F(TunnelWorker, is_limited) {
  ASSERT_EQ(ask("a.example"), "an answer");
  const auto limits =
      (std::ostringstream() << std::ifstream("/proc/" + std::to_string(process()) + "/limits").rdbuf()).str();
  for (const auto* limit : {"Max core file size +0 +0 ", "Max file size +0 +0 ", "Max processes +0 +0 ",
                            "Max open files +256 +256 ", "Max locked memory +0 +0 "}) {
    EXPECT_THAT(limits, testing::ContainsRegex(limit));
  }
}

TEST_F(TunnelWorker, comes_back_with_its_endpoint_as_often_as_it_is_killed) {
  for (int round = 0; round < Restarts::mostAtOnce; ++round) {
    EXPECT_EQ(ask("before" + std::to_string(round) + ".example"), "an answer");
    ASSERT_NO_FATAL_FAILURE(killWorker());
    // The query waits in the socket until the next worker runs.
    EXPECT_EQ(ask("after" + std::to_string(round) + ".example"), "an answer");
    EXPECT_EQ(ask("tcp" + std::to_string(round) + ".example", Channel::tcp), "an answer");
  }
  EXPECT_THAT(told(), ElementsAre(killedAgain, killedAgain, killedAgain));
}

// Stopped like by a debugger; an endless loop has the same effect.
TEST_F(TunnelWorker, is_replaced_when_it_hangs) {
  EXPECT_EQ(ask("before.example"), "an answer");
  const auto hanging = process();
  ASSERT_GT(hanging, 0);
  ::kill(hanging, SIGSTOP);
  EXPECT_EQ(ask("after.example"), "an answer");
  EXPECT_NE(process(), hanging);
  EXPECT_THAT(told(), ElementsAre("The worker does not answer: it is ended.", killedAgain));
}

}  // namespace
}  // namespace quillmar::tunnel
