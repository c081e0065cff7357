#pragma once

#include <memory>
#include <string_view>

#include "platform/dispatch.h"

namespace quillmar {

// Notifies systemd, if it started this program and asked to be notified.
class ServiceManager {
 public:
  // Reports the program as ready, and as alive while the main queue runs.
  explicit ServiceManager(Dispatch& dispatch);
  ServiceManager(const ServiceManager&) = delete;
  ServiceManager& operator=(const ServiceManager&) = delete;
  ~ServiceManager();

  // A sentence about what the program is doing.
  void tellStatus(std::string_view status) const;

 private:
  std::unique_ptr<Timer> alive_;
};

}  // namespace quillmar
