#include "tunnel/network/address_race.h"

#include <utility>

namespace quillmar::tunnel {

AddressRace::AddressRace(boost::asio::io_context& context, TcpEndpoints endpoints, Won won)
    : context_(context),
      timer_(context),
      endpoints_(std::move(endpoints)),
      next_(endpoints_.begin()),
      won_(std::move(won)) {}

void AddressRace::cancel() {
  won_ = nullptr;
  timer_.cancel();
  runners_.clear();
}

void AddressRace::startNext() {
  if (!won_ || next_ == endpoints_.end()) {
    return;
  }
  const auto runner = runners_.emplace(runners_.end(), context_);
  const auto& endpoint = *next_++;
  boost::system::error_code problem;
  runner->open(endpoint.protocol(), problem);
  if (problem) {
    return ended(runner, problem);
  }
  runner->async_connect(endpoint, [self = shared_from_this(), runner](boost::system::error_code error) {
    if (self->won_) {
      self->ended(runner, error);
    }
  });
  timer_.start(headStart, [self = shared_from_this()] { self->startNext(); });
}

void AddressRace::ended(std::list<Socket>::iterator runner, boost::system::error_code error) {
  Socket socket = std::move(*runner);
  runners_.erase(runner);
  if (error && (next_ != endpoints_.end() || !runners_.empty())) {
    return startNext();
  }
  const auto won = std::exchange(won_, nullptr);
  cancel();
  won(error, std::move(socket));
}

}  // namespace quillmar::tunnel
