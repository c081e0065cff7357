#pragma once

#include <sys/types.h>

#include <boost/asio/io_context.hpp>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tunnel/link/open_file.h"
#include "tunnel/network/timer.h"
#include "tunnel/service/worker_guard.h"
#include "tunnel/worker/cage.h"
#include "tunnel/worker/message_socket.h"

namespace quillmar::tunnel {

// The worker as a child process: started with what it needs, started again when it is gone, ended with this
// object and with this process. The sockets at which it answers stay open here, so that questions wait for
// the next one.
class WorkerProcess {
 public:
  struct Given {
    std::string program;
    std::vector<std::string> words;     // the first one is its name
    std::vector<OpenFile> listeners{};  // UDP before TCP, pair by pair
    WorkerUser user{};
    std::string caFile{};
  };
  struct Events {
    std::function<void(const std::string& line)> tell;
    std::function<NameServers()> servers;
    LinkBootstrap::Reached reached;
    // What the next worker starts with.
    std::function<LinkBootstrap::LastGood()> lastGood;
  };

  WorkerProcess(boost::asio::io_context& context, Given given, Events events);
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;
  ~WorkerProcess();

  // As it was written; no text is no endpoint.
  void take(const std::string& endpoint);
  void networkChanged();

 private:
  void start();
  // The process, or what became of the attempt as an errno.
  int spawn(OpenFile itsEnd);
  void say(const ToWorker& message);
  void came(std::string_view message);
  void misbehaved(const std::string& how);
  void ended();
  void startLater(const std::string& cause);

  boost::asio::io_context& context_;
  Given given_;
  const Events events_;
  WorkerGuard guard_;
  Restarts restarts_;
  Timer pause_;
  std::string endpoint_;
  std::optional<MessageSocket> messages_;
  pid_t process_ = -1;
  Time started_{};
};

// As whom it runs: the user of this program's name, or a number that no machine gives to anybody. The rules
// let pass what it sends, so it must not be one that other programs share.
WorkerUser workersUser();

}  // namespace quillmar::tunnel
