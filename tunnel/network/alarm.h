#pragma once

#include <boost/asio/io_context.hpp>
#include <optional>

#include "tunnel/network/timer.h"
#include "tunnel/resolver/time.h"

namespace quillmar::tunnel {

// The one timer of those who say when they want to be woken. It is moved only to an earlier time: most of
// what is waited for comes before its deadline, and a timer that is moved costs a system call.
class Alarm {
 public:
  explicit Alarm(boost::asio::io_context& context) : timer_(context) {}

  // It goes off by making the context's loop turn once; whoever runs that looks at the time.
  void setFor(Time now, std::optional<Time> time);

 private:
  Timer timer_;
  std::optional<Time> goesOff_;
};

}  // namespace quillmar::tunnel
