#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace quillmar {

// Disconnects the listener when destroyed.
class [[nodiscard]] Subscription {
 public:
  Subscription() = default;
  explicit Subscription(std::shared_ptr<void> connection) : connection_(std::move(connection)) {}
  void cancel() { connection_.reset(); }
  explicit operator bool() const { return connection_ != nullptr; }

 private:
  std::shared_ptr<void> connection_;
};

// Calls listeners in the order of connection. Main thread only. A listener may connect and disconnect
// listeners and may destroy the signal. One that is connected during a call is first called by the next.
template <class... Args>
class Signal {
 public:
  using Listener = std::function<void(Args...)>;

  Subscription connect(Listener listener) {
    auto connection = std::make_shared<Listener>(std::move(listener));
    std::erase_if(listeners_, [](const auto& known) { return known.expired(); });
    listeners_.push_back(connection);
    return Subscription(std::move(connection));
  }

  void emit(Args... args) const {
    const auto present = listeners_;
    for (const auto& known : present) {
      if (const auto listener = known.lock()) {
        (*listener)(args...);
      }
    }
  }

 private:
  std::vector<std::weak_ptr<Listener>> listeners_;
};

}  // namespace quillmar
