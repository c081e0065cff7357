#include "platform/linux/service_manager.h"

#include <systemd/sd-daemon.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace quillmar {

ServiceManager::ServiceManager(Dispatch& dispatch) {
  std::uint64_t microseconds = 0;
  if (::sd_watchdog_enabled(0, &microseconds) > 0) {
    // Half of what it waits, as it asks for.
    const auto period = std::chrono::duration_cast<Duration>(std::chrono::microseconds(microseconds)) / 2;
    alive_ = dispatch.scheduleRepeating(period, [] { ::sd_notify(0, "WATCHDOG=1"); });
  }
  ::sd_notify(0, "READY=1");
}

ServiceManager::~ServiceManager() { ::sd_notify(0, "STOPPING=1"); }

void ServiceManager::tellStatus(std::string_view status) const {
  ::sd_notify(0, ("STATUS=" + std::string(status)).c_str());
}

}  // namespace quillmar
