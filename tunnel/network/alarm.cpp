#include "tunnel/network/alarm.h"

namespace quillmar::tunnel {

void Alarm::setFor(Time now, std::optional<Time> time) {
  if (!time || (goesOff_ && *goesOff_ <= *time)) {
    return;
  }
  goesOff_ = time;
  timer_.start(*time - now, [this] { goesOff_.reset(); });
}

}  // namespace quillmar::tunnel
