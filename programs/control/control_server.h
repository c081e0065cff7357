#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/dispatch.h"
#include "platform/linux/local_socket.h"

namespace quillmar::control {

// Serves the other processes of this user on a Unix socket: one line as the request, one as the reply, then
// the connection ends. It drops processes of other users, silent peers and lines that are too long; with too
// many connections, first those that have gone or say nothing. It runs on its own thread.
class ControlServer {
 public:
  // May be called once, on any thread. Does nothing once the peer or the server has gone.
  using Reply = std::function<void(LocalMessage)>;
  // Called on the main thread.
  using Handler = std::function<void(std::string line, Reply reply)>;

  ControlServer(std::filesystem::path dataDirectory, Dispatch& dispatch, Handler handler);
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;
  // Removes the socket and ends open connections.
  ~ControlServer();

  // Creates the socket again if it was removed or a better path is available. Cheap if there is nothing to
  // do.
  void keepReachable();

 private:
  class Loop;
  std::shared_ptr<Loop> loop_;
};

}  // namespace quillmar::control
