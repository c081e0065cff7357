// Ten million queries through the tunnel program, none of them cached, to an endpoint that answers at once. A
// tenth of the answers are faulty. All must be answered, and the program's memory must not grow.

#include <linux/sock_diag.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <bitset>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "bench/endurance/outcome.h"
#include "bench/endurance/program.h"
#include "tests/tunnel/support/served_endpoint.h"
#include "tunnel/network/sockets.h"

namespace quillmar::endurance {
namespace {

using namespace tunnel::test;

constexpr std::uint64_t allQueries = 10'000'000;
constexpr std::uint64_t shortForm = 40'000;
// Few enough for the buffers of both sockets: what is not answered was then lost by the program.
constexpr std::uint64_t inFlight = 64;
constexpr double mostGrowth = 1.05;

// Of every thousand questions that reach the endpoint.
enum class Conduct { good, error, reset, goAway, hangUp };
Conduct conductAt(std::uint64_t number) {
  switch (number % 1000) {
    case 500:
      return Conduct::goAway;
    case 999:
      return Conduct::hangUp;
    default:
      return number % 20 == 7 ? Conduct::error : number % 20 == 13 ? Conduct::reset : Conduct::good;
  }
}

class Endpoint {
 public:
  std::uint64_t faults() const { return faults_; }
  TestEndpoint& served() { return endpoint_; }

 private:
  void answer(TestPeer& peer, std::int32_t stream, const std::string& question) {
    const Conduct conduct = conductAt(asked_++);
    faults_ += conduct == Conduct::good ? 0 : 1;
    switch (conduct) {
      case Conduct::good:
        return peer.answer(stream, answerTo(question));
      case Conduct::error:
        return peer.answer(stream, "", {}, "500");
      case Conduct::reset:
        return peer.reset(stream);
      case Conduct::goAway:
        return peer.goAway(stream - 2);
      case Conduct::hangUp:
        return peer.hangUp();
    }
  }

  std::atomic<std::uint64_t> asked_ = 0;
  std::atomic<std::uint64_t> faults_ = 0;
  TestEndpoint endpoint_{[this](TestPeer& peer, std::int32_t stream, const std::string& question) {
    answer(peer, stream, question);
  }};
};

// The datagrams that the kernel dropped because the socket's buffer was full.
std::uint32_t droppedAt(int socket) {
  std::array<std::uint32_t, SK_MEMINFO_VARS> memory{};
  socklen_t size = sizeof memory;
  ::getsockopt(socket, SOL_SOCKET, SO_MEMINFO, memory.data(), &size);
  return memory.at(SK_MEMINFO_DROPS);
}

// A client that always has some queries in flight. Each has the id of its number.
class Load {
 public:
  explicit Load(int port) : client_(port, tunnel::Channel::udp) {}

  // A fault if one stays without an answer for half a minute.
  void ask(std::uint64_t count) {
    for (std::uint64_t begun = 0, ended = 0; ended < count;) {
      while (begun < count && begun - ended < inFlight) {
        send();
        ++begun;
      }
      receive();
      ++ended;
    }
  }

  std::uint64_t answered() const { return answered_; }
  std::uint64_t failed() const { return failed_; }

 private:
  using Id = std::uint16_t;

  void send() {
    do {
      ++id_;
    } while (isOpen_.test(id_));
    isOpen_.set(id_);
    client_.send(queryText({.name = "n" + std::to_string(number_++) + ".example", .id = id_}));
  }

  void receive() {
    const std::string reply = client_.receive();
    const auto header = tunnel::readHeader(reply);
    require(header.has_value(), std::to_string(isOpen_.count()) + " queries are not answered after " +
                                    std::to_string(answered_ + failed_) +
                                    " that were, and the kernel dropped " +
                                    std::to_string(droppedAt(client_.socket())) + " answers.");
    require(isOpen_.test(header->id), "An answer is to no question, or to one that was answered.");
    isOpen_.reset(header->id);
    const bool isGood = header->rcode() == tunnel::rcode::noError && header->answers == 1;
    require(isGood || header->rcode() == tunnel::rcode::servFail, "An answer is wrong.");
    ++(isGood ? answered_ : failed_);
  }

  ClientSocket client_;
  std::bitset<std::numeric_limits<Id>::max() + 1> isOpen_;
  Id id_ = 0;
  std::uint64_t number_ = 0;
  std::uint64_t answered_ = 0;
  std::uint64_t failed_ = 0;
};

std::string kibibytes(long long count) { return std::to_string(count) + " KiB"; }

// The long form is measured after the first million. The short one begins to be even later, in relation.
void carryOut(bool isShort) {
  const std::uint64_t count = isShort ? shortForm : allQueries;
  const std::uint64_t first = isShort ? count / 2 : count / 10;
  Endpoint endpoint;
  Program program({QUILLMAR_TUNNEL, "serve", "--endpoint", endpoint.served().url("127.0.0.1"), "--listen",
                   "127.0.0.1:0", "--ca-file", endpoint.served().caFile()});
  const std::string said = program.readUntil("Answers at");
  const auto portAt = said.find("127.0.0.1:");
  require(portAt != std::string::npos, "The tunnel does not start: " + said);
  Load load(std::stoi(said.substr(portAt + 10)));

  // The proportional memory would change when another process shares or stops sharing a library.
  const auto memory = [&] { return processFigure(program.process(), "smaps_rollup", "Anonymous"); };
  const auto start = std::chrono::steady_clock::now();
  load.ask(first);
  const auto memoryBefore = memory();
  const auto filesBefore = openFilesOf(program.process());
  // Its lines would fill the pipe.
  for (std::uint64_t asked = first; asked < count; asked += first / 10) {
    program.readAll();
    load.ask(std::min(first / 10, count - asked));
  }
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  const auto memoryAfter = memory();
  const auto filesAfter = openFilesOf(program.process());

  tell("Queries", std::to_string(load.answered() + load.failed()));
  tell("Faults of the endpoint", std::to_string(endpoint.faults()));
  tell("Connections to the endpoint", std::to_string(endpoint.served().connections()));
  tell("Answered with the endpoint's answer", std::to_string(load.answered()));
  tell("Answered with a failure", std::to_string(load.failed()));
  tell("Not answered", std::to_string(count - load.answered() - load.failed()));
  tell("Queries a second", std::to_string(static_cast<int>(static_cast<double>(count) / passed.count())));
  tell("Memory of its own after " + std::to_string(first) + " and at the end",
       kibibytes(memoryBefore) + ", " + kibibytes(memoryAfter));
  tell("Open files then and at the end", std::to_string(filesBefore) + ", " + std::to_string(filesAfter));
  tell("Processor time of the tunnel for a query",
       std::to_string(
           static_cast<int>(1e6 * processorSecondsOf(program.process()) / static_cast<double>(count))) +
           " µs");
  require(endpoint.faults() * 11 > count, "The endpoint was not faulty enough.");
  require(static_cast<double>(memoryAfter) <= static_cast<double>(memoryBefore) * mostGrowth,
          "The memory grows.");
  require(filesAfter <= filesBefore + 1, "Descriptors are lost.");
  require(program.end(SIGTERM) == 0, "The tunnel does not end well.");
}

}  // namespace
}  // namespace quillmar::endurance

int main(int count, char** arguments) {
  using namespace quillmar::endurance;
  const bool isShortForm = isShort(count, arguments);
  try {
    carryOut(isShortForm);
  } catch (const std::exception& fault) {
    expect(false, fault.what());
  }
}
