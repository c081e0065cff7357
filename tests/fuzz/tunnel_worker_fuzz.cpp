// The input is a message between the processes of the tunnel. Both processes decode it.

#include <chrono>

#include "tests/fuzz/fuzz.h"
#include "tunnel/service/worker_guard.h"

using namespace quillmar::tunnel;
using quillmar::fuzz::require;

namespace {

constexpr std::string_view host = "doh.example";

void checkGuard(std::string_view bytes) {
  int heard = 0;
  WorkerGuard guard({.tell =
                         [&](const std::string& line) {
                           ++heard;
                           require(line.size() <= longestLine, "a line is short");
                           require(line.find_first_of("\n\r\x1b") == std::string::npos, "a line is one line");
                         },
                     .serversWanted = [&] { ++heard; },
                     .ponged = [&] { ++heard; },
                     .reached =
                         [&](const std::string& reached, const boost::asio::ip::address& address) {
                           ++heard;
                           require(reached == host && !address.is_loopback() && !address.is_multicast(),
                                   "only the endpoint's own address is kept");
                         }});
  guard.expect(std::string(host));
  const auto now = Time{} + std::chrono::hours(1);
  const bool isTaken = guard.take(now, bytes);
  require(isTaken == decodeFromWorker(bytes).has_value(), "nonsense is no message");
  require(isTaken || heard == 0, "nothing follows from nonsense");
  for (int count = 0; count < 2 * WorkerGuard::mostMessages; ++count) {
    static_cast<void>(guard.take(now, bytes));
  }
  require(heard <= WorkerGuard::mostMessages, "nobody is heard for ever");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto bytes = quillmar::fuzz::textOf(data, size);
  const auto toWorker = decodeToWorker(bytes);
  const auto fromWorker = decodeFromWorker(bytes);
  require(!toWorker || !fromWorker, "a message goes one way");
  require(!toWorker || encode(*toWorker) == bytes, "a message to the worker is written in one way");
  require(!fromWorker || encode(*fromWorker) == bytes, "a message from the worker is written in one way");
  require((!toWorker && !fromWorker) || size <= largestWorkerMessage, "a message is short");
  checkGuard(bytes);
  return 0;
}
