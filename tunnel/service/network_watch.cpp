#include "tunnel/service/network_watch.h"

#include <utility>

namespace quillmar::tunnel {

NetworkWatch::NetworkWatch(boost::asio::io_context& context, std::function<void()> changed)
    : changed_(std::move(changed)),
      pause_(context),
      routes_(context, [this] { heard(); }),
      sleep_(context, [this] { heard(); }) {}

void NetworkWatch::heard() {
  if (std::exchange(isPausing_, true)) {
    return;
  }
  pause_.start(gathering, [this] {
    isPausing_ = false;
    changed_();
  });
}

}  // namespace quillmar::tunnel
