#pragma once

#include <memory>
#include <utility>

#include "platform/tunnel.h"

namespace quillmar {

// A configuration that may outlive its service. All objects of one configuration share its connection.
template <class State, class Connection>
class ServiceConfiguration : public TunnelConfiguration {
 public:
  ServiceConfiguration(std::weak_ptr<State> state, std::shared_ptr<Connection> connection)
      : state_(std::move(state)), connection_(std::move(connection)) {}

  TunnelConnection& connection() final { return *connection_; }

 protected:
  // Null if the service was destroyed.
  std::shared_ptr<State> service() const { return state_.lock(); }
  const std::shared_ptr<Connection>& sharedConnection() const { return connection_; }

 private:
  const std::weak_ptr<State> state_;
  const std::shared_ptr<Connection> connection_;
};

}  // namespace quillmar
