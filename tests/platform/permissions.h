#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillmar {

// Stands in for polkit: answers requests for permission as an administrator has decided.
class Permissions {
 public:
  explicit Permissions(const std::string& busAddress)
      : bus_(sdbus::createSessionBusConnectionWithAddress(busAddress)),
        object_(sdbus::createObject(*bus_, "/org/freedesktop/PolicyKit1/Authority")) {
    using Subject = sdbus::Struct<std::string, std::map<std::string, sdbus::Variant>>;
    object_->registerMethod("CheckAuthorization")
        .onInterface("org.freedesktop.PolicyKit1.Authority")
        .implementedAs([this](Answer&& answer, const Subject&, const std::string&, const Texts&,
                              std::uint32_t, const std::string&) { decide(std::move(answer)); });
    object_->finishRegistration();
    bus_->requestName("org.freedesktop.PolicyKit1");
    bus_->enterEventLoopAsync();
  }
  ~Permissions() { bus_->leaveEventLoop(); }
  Permissions(const Permissions&) = delete;
  Permissions& operator=(const Permissions&) = delete;

  // Answers the pending requests and all later ones.
  void grant(bool granted) {
    std::unique_lock lock(mutex_);
    granted_ = granted;
    const auto waiting = std::exchange(waiting_, {});
    lock.unlock();
    for (const Answer& answer : waiting) {
      reply(answer, granted);
    }
  }
  // Holds requests back, as an unanswered prompt would, and counts them.
  void hold() {
    const std::scoped_lock lock(mutex_);
    granted_.reset();
    asked_ = 0;
  }
  std::size_t asked() const {
    const std::scoped_lock lock(mutex_);
    return asked_;
  }
  bool waitUntilAsked() {
    std::unique_lock lock(mutex_);
    return wasAsked_.wait_for(lock, std::chrono::minutes(1), [this] { return asked_ > 0; });
  }

 private:
  using Texts = std::map<std::string, std::string>;
  using Answer = sdbus::Result<sdbus::Struct<bool, bool, Texts>>;

  void decide(Answer answer) {
    std::unique_lock lock(mutex_);
    ++asked_;
    wasAsked_.notify_all();
    if (!granted_) {
      waiting_.push_back(std::move(answer));
      return;
    }
    const bool granted = *granted_;
    lock.unlock();
    reply(answer, granted);
  }
  // No lock of ours is held: sending takes the bus's lock, which is also held during a request.
  static void reply(const Answer& answer, bool granted) { answer.returnResults({granted, false, Texts()}); }

  std::unique_ptr<sdbus::IConnection> bus_;
  std::unique_ptr<sdbus::IObject> object_;
  mutable std::mutex mutex_;
  std::condition_variable wasAsked_;
  std::optional<bool> granted_ = true;
  std::vector<Answer> waiting_;
  std::size_t asked_ = 0;
};

}  // namespace quillmar
