#pragma once

#include <memory>
#include <string_view>

#include "platform/dispatch.h"

namespace quillmar {

// systemd, where it started this program and wants to hear how it does; otherwise nobody.
class ServiceManager {
 public:
  // From now on the program is ready, and alive for as long as its main thread goes round.
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
