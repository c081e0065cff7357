#pragma once

#include <boost/asio/io_context.hpp>
#include <chrono>
#include <functional>

#include "tunnel/link/route_watch.h"
#include "tunnel/link/sleep_watch.h"
#include "tunnel/network/timer.h"

namespace quillmar::tunnel {

// Tells when connections that were good may be dead, and when those that could not be made may be possible: a
// link is back, a way out is new, the machine has slept. Such news come many at once, and are told as one.
class NetworkWatch {
 public:
  static constexpr std::chrono::milliseconds gathering{100};

  NetworkWatch(boost::asio::io_context& context, std::function<void()> changed);

 private:
  void heard();

  const std::function<void()> changed_;
  Timer pause_;
  bool isPausing_ = false;
  RouteWatch routes_;
  SleepWatch sleep_;
};

}  // namespace quillmar::tunnel
