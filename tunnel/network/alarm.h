#pragma once

#include <boost/asio/io_context.hpp>
#include <optional>

#include "tunnel/network/timer.h"
#include "tunnel/resolver/time.h"

namespace quillmar::tunnel {

// One timer for all deadlines. It is only ever moved to an earlier time, because most answers arrive before
// their deadline and moving a timer costs a system call.
class Alarm {
 public:
  explicit Alarm(boost::asio::io_context& context) : timer_(context) {}

  // When it expires, the context's loop runs once, and its owner checks the time.
  void setFor(Time now, std::optional<Time> time);

 private:
  Timer timer_;
  std::optional<Time> goesOff_;
};

}  // namespace quillmar::tunnel
