#pragma once

#include <memory>
#include <utility>

#include "platform/tunnel.h"

namespace quillmar {

// A configuration of a service that may end before it, and the one connection that it shares with all other
// objects of the same configuration.
template <class State, class Connection>
class ServiceConfiguration : public TunnelConfiguration {
 public:
  ServiceConfiguration(std::weak_ptr<State> state, std::shared_ptr<Connection> connection)
      : state_(std::move(state)), connection_(std::move(connection)) {}

  TunnelConnection& connection() final { return *connection_; }

 protected:
  // Null where the service has ended.
  std::shared_ptr<State> service() const { return state_.lock(); }
  const std::shared_ptr<Connection>& sharedConnection() const { return connection_; }

 private:
  const std::weak_ptr<State> state_;
  const std::shared_ptr<Connection> connection_;
};

}  // namespace quillmar
