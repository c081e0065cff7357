#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/dispatch.h"
#include "platform/linux/local_socket.h"

namespace quillmar::control {

// Lets other processes of this user speak to the one that does an installation's work: a line each way, then
// the end. Whoever says nothing, too much, or is somebody else's process is let go; of a crowd, those first
// who have gone or say nothing. On a thread of its own, which sleeps while nobody speaks.
class ControlServer {
 public:
  // May be called once, on any thread, while the process lives; nobody hears it once the guest or the server
  // has gone.
  using Reply = std::function<void(LocalMessage)>;
  // On the main thread.
  using Handler = std::function<void(std::string line, Reply reply)>;

  ControlServer(std::filesystem::path dataDirectory, Dispatch& dispatch, Handler handler);
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;
  // Takes its socket away and ends what is under way.
  ~ControlServer();

  // Puts the socket up again where it was taken away or a better place has come up. Costs a look at the file
  // when there is nothing to do.
  void keepReachable();

 private:
  class Loop;
  std::shared_ptr<Loop> loop_;
};

}  // namespace quillmar::control
