#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <chrono>
#include <functional>
#include <vector>

#include "tunnel/link/open_file.h"
#include "tunnel/network/timer.h"

namespace quillmar::tunnel {

// Notices a worker that hangs. The service has the worker's listening sockets, too: a question wakes it, and
// it asks the worker for a sign of life. Then it looks away for a while, so that it does not wake up for each
// question. While nobody asks no timer runs.
class WorkerPulse {
 public:
  struct Pace {
    // Together less than the four seconds for which clients wait. The machine may have slept meanwhile, so
    // that one missed deadline proves nothing.
    std::chrono::milliseconds patience{1000};
    int mostMissed = 2;
    std::chrono::milliseconds rest{1000};
  };
  struct Events {
    std::function<void()> ask;
    std::function<void()> isSilent;
  };

  // The sockets have to outlive it.
  WorkerPulse(boost::asio::io_context& context, const std::vector<OpenFile>& sockets, Events events,
              Pace pace);
  WorkerPulse(const WorkerPulse&) = delete;
  WorkerPulse& operator=(const WorkerPulse&) = delete;

  // Call it when another worker has been started.
  void startAnew();
  // Call it when the worker has answered.
  void beat();

 private:
  using Descriptor = boost::asio::posix::stream_descriptor;

  void watch();
  void ask();
  void missed();

  const std::vector<OpenFile>& sockets_;
  const Events events_;
  const Pace pace_;
  Descriptor questions_;  // an epoll(7) instance of its own, whose events are one-shot
  Timer timer_;
  int missed_ = 0;
  bool isWaiting_ = false;  // an answer is pending
};

}  // namespace quillmar::tunnel
