#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace quillmar {

// Who may do what, as polkit would answer for the machine's administrator.
class Permissions {
 public:
  explicit Permissions(const std::string& busAddress)
      : bus_(sdbus::createSessionBusConnectionWithAddress(busAddress)),
        object_(sdbus::createObject(*bus_, "/org/freedesktop/PolicyKit1/Authority")) {
    using Subject = sdbus::Struct<std::string, std::map<std::string, sdbus::Variant>>;
    using Texts = std::map<std::string, std::string>;
    object_->registerMethod("CheckAuthorization")
        .onInterface("org.freedesktop.PolicyKit1.Authority")
        .implementedAs(
            [this](const Subject&, const std::string&, const Texts&, std::uint32_t, const std::string&) {
              return sdbus::Struct<bool, bool, Texts>(granted_.load(), false, Texts());
            });
    object_->finishRegistration();
    bus_->requestName("org.freedesktop.PolicyKit1");
    bus_->enterEventLoopAsync();
  }
  ~Permissions() { bus_->leaveEventLoop(); }
  Permissions(const Permissions&) = delete;
  Permissions& operator=(const Permissions&) = delete;

  void grant(bool granted) { granted_ = granted; }

 private:
  std::unique_ptr<sdbus::IConnection> bus_;
  std::unique_ptr<sdbus::IObject> object_;
  std::atomic<bool> granted_ = true;
};

}  // namespace quillmar
