#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <cstdint>
#include <memory>
#include <optional>

#include "tunnel/network/timer.h"

namespace quillmar::tunnel {

// The system message bus, handled on the context's thread.
class Bus {
 public:
  // Throws sdbus::Error if there is no bus.
  explicit Bus(boost::asio::io_context& context);

  sdbus::IConnection& connection() { return *connection_; }

  // Handles received messages and waits for more. To be called after each handler of the context. Throws
  // sdbus::Error when the bus has disconnected.
  void process();

 private:
  using Descriptor = boost::asio::posix::stream_descriptor;
  void await(Descriptor::wait_type what, bool& isAwaited);

  const std::unique_ptr<sdbus::IConnection> connection_;
  Descriptor descriptor_;
  Timer timer_;
  bool awaitsRead_ = false;
  bool awaitsWrite_ = false;
  std::optional<std::uint64_t> timeout_;
};

}  // namespace quillmar::tunnel
