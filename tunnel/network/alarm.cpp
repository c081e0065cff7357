#include "tunnel/network/alarm.h"

#include <algorithm>

namespace quillmar::tunnel {

void Alarm::setFor(Time now, std::optional<Time> time) {
  if (!time || (goesOff_ && *goesOff_ <= *time)) {
    return;
  }
  goesOff_ = time;
  timer_.expires_after(std::max(*time - now, BootClock::duration::zero()));
  timer_.async_wait([this](boost::system::error_code error) {
    if (!error) {
      goesOff_.reset();
    }
  });
}

}  // namespace quillmar::tunnel
