#pragma once

#include <boost/asio/io_context.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tunnel/network/link_bootstrap.h"
#include "tunnel/worker/server.h"

namespace quillmar::tunnel {

// What the worker has to tell and to ask, on its own thread.
struct WorkerEvents {
  std::function<void(const std::string& line)> tell;
  LinkBootstrap::Servers servers;
  LinkBootstrap::Reached reached;
};

// The server on a thread of its own: all that reads bytes from outside, and nothing that needs rights. What
// passes between it and who has them are values: an endpoint in; lines, addresses and the question for
// servers out.
class Worker {
 public:
  struct Given {
    std::unique_ptr<boost::asio::io_context> context;  // of the sockets
    std::vector<Sockets> sockets;
    std::unique_ptr<TlsClient> tls;
    SocketMark mark{};
    LinkBootstrap::LastGood lastGood{};
  };

  Worker(Given given, WorkerEvents events);
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  // Nobody is answered any more.
  ~Worker();

  void take(std::optional<Endpoint> endpoint);

 private:
  const std::unique_ptr<boost::asio::io_context> context_;
  const std::unique_ptr<Server> server_;
  std::thread thread_;
};

}  // namespace quillmar::tunnel
