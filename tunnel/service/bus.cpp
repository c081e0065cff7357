#include "tunnel/service/bus.h"

#include <fcntl.h>
#include <poll.h>

#include <chrono>
#include <cstdint>
#include <limits>

namespace quillmar::tunnel {
namespace {

// NetworkManager normally answers within milliseconds.
constexpr std::chrono::seconds patience{5};

// Asio closes its descriptor, so it gets a duplicate of the bus's.
int copyOf(int descriptor) { return ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0); }

}  // namespace

Bus::Bus(boost::asio::io_context& context)
    : connection_(sdbus::createSystemBusConnection()),
      descriptor_(context, copyOf(connection_->getEventLoopPollData().fd)),
      timer_(context) {
  connection_->setMethodCallTimeout(patience);
}

void Bus::process() {
  while (connection_->processPendingRequest()) {
  }
  const auto wanted = connection_->getEventLoopPollData();
  if ((wanted.events & POLLIN) != 0) {
    await(Descriptor::wait_read, awaitsRead_);
  }
  if ((wanted.events & POLLOUT) != 0) {
    await(Descriptor::wait_write, awaitsWrite_);
  }
  constexpr auto never = std::numeric_limits<std::uint64_t>::max();
  const auto time = wanted.getRelativeTimeout();
  if (time && wanted.timeout_usec != never && timeout_ != wanted.timeout_usec) {
    timeout_ = wanted.timeout_usec;
    timer_.start(*time, [this] { timeout_.reset(); });
  }
}

void Bus::await(Descriptor::wait_type what, bool& isAwaited) {
  if (isAwaited) {
    return;
  }
  isAwaited = true;
  descriptor_.async_wait(what, [&isAwaited](boost::system::error_code) { isAwaited = false; });
}

}  // namespace quillmar::tunnel
