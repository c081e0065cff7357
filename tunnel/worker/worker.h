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

// The worker's file descriptors: the socket to the service, then the listening pairs, UDP before TCP.
inline constexpr int messagesDescriptor = 3;
inline constexpr int firstListenerDescriptor = 4;

// The server in an unprivileged process, connected to the service by a socket. All bytes from the network are
// read here.
class Worker {
 public:
  // At most this many log lines at once. The service ends a worker that exceeds its own, higher limit.
  static constexpr int mostLines = 20;
  static constexpr std::chrono::seconds eachLine{5};

  Worker(boost::asio::io_context& context, int messages, std::vector<Sockets> sockets,
         std::unique_ptr<TlsClient> tls, const Begin& begin);

  // Runs until the service closes the socket.
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

// The worker's main function. Before it drops its rights it only reads files and the messages and sockets
// from the service.
int runWorker();

// Whether the service started this process.
bool isWorkersProcess();

}  // namespace quillmar::tunnel
