#pragma once

#include <boost/asio/io_context.hpp>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tunnel/network/link_bootstrap.h"
#include "tunnel/network/tls.h"
#include "tunnel/worker/message_socket.h"
#include "tunnel/worker/messages.h"
#include "tunnel/worker/rate_limit.h"
#include "tunnel/worker/server.h"

namespace quillmar::tunnel {

// Where the worker's process finds what it was given: the socket to the service, then the pairs that it
// listens at, UDP before TCP.
inline constexpr int messagesDescriptor = 3;
inline constexpr int firstListenerDescriptor = 4;

// The server, in a process that has no rights, with the service at the other end of a socket: all that reads
// bytes from outside.
class Worker {
 public:
  // Lines, at most: the service ends who says much more.
  static constexpr int mostLines = 20;
  static constexpr std::chrono::seconds eachLine{5};

  Worker(boost::asio::io_context& context, int messages, std::vector<Sockets> sockets,
         std::unique_ptr<TlsClient> tls, const Begin& begin);

  // Until the service is gone.
  void run();

 private:
  void take(std::string_view text);
  void tell(const std::string& line);
  void say(const FromWorker& message);

  MessageSocket messages_;
  RateLimit lines_{mostLines, eachLine};
  std::vector<std::function<void(NameServers)>> waitForServers_;
  Server server_;
};

// The whole process. It does nothing before it has lost its rights but to read files and to take what it was
// given.
int runWorker();

// Whether the service has started this process.
bool isWorkersProcess();

}  // namespace quillmar::tunnel
