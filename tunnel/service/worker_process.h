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
#include "tunnel/service/worker_pulse.h"
#include "tunnel/worker/cage.h"
#include "tunnel/worker/message_socket.h"

namespace quillmar::tunnel {

// Runs the worker as a child process: passes it its sockets, starts it again when it dies or hangs, and kills
// it in the destructor. The worker also ends when this process dies. This process keeps the listening sockets
// open, so that queries wait for the next worker.
class WorkerProcess {
 public:
  struct Given {
    std::string program;
    std::vector<std::string> words;     // argv; the first one is the program's name
    std::vector<OpenFile> listeners{};  // UDP before TCP, pair by pair
    WorkerUser user{};
    std::string caFile{};
    WorkerPulse::Pace pace{};
  };
  struct Events {
    std::function<void(const std::string& line)> tell;
    std::function<NameServers()> servers;
    LinkBootstrap::Reached reached;
    // The addresses that the next worker tries first.
    std::function<LinkBootstrap::LastGood()> lastGood;
  };

  WorkerProcess(boost::asio::io_context& context, Given given, Events events);
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;
  ~WorkerProcess();

  // The endpoint's URL as configured; empty for none.
  void take(const std::string& endpoint);
  void networkChanged();

 private:
  void start();
  // Returns an errno, or zero for success.
  int spawn(OpenFile itsEnd);
  void say(const ToWorker& message);
  void came(std::string_view message);
  // Kills the worker, if there is one.
  void misbehaved(const std::string& how);
  void ended();
  void startLater(const std::string& cause);

  boost::asio::io_context& context_;
  Given given_;
  const Events events_;
  WorkerGuard guard_;
  WorkerPulse pulse_;
  Restarts restarts_;
  Timer pause_;
  std::string endpoint_;
  std::optional<MessageSocket> messages_;
  pid_t process_ = -1;
  Time started_{};
};

// The user that the worker runs as: the one with this program's name, or else a number that no system
// assigns. No other program may use it, because the rules don't redirect its packets.
WorkerUser workersUser();

}  // namespace quillmar::tunnel
