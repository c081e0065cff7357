#pragma once

#include <boost/asio/io_context.hpp>
#include <chrono>
#include <functional>

#include "tunnel/link/route_watch.h"
#include "tunnel/link/sleep_watch.h"
#include "tunnel/network/timer.h"

namespace quillmar::tunnel {

// Reports that existing connections may be dead and that failed ones may work now: a link is back, a route is
// new, or the machine has slept. Several such events within `gathering` are reported once.
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
