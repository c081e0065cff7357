#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace quillmar {

// The error of calls that are pending or made while there is no bus.
sdbus::Error busWentAway();

// Asynchronous calls while connected to a bus. Bus thread only. Each call ends in exactly one of its two
// functions; an sdbus::Error thrown by the first one goes to the second.
class BusCalls {
 public:
  using Then = std::function<void(sdbus::MethodReply&)>;
  using Failed = std::function<void(const sdbus::Error&)>;
  struct Method {
    std::string service;
    std::string path;
    std::string interface;
    std::string name;
  };

  void joined(sdbus::IConnection& bus) { bus_ = &bus; }
  // Fails all pending calls.
  void left();

  template <class... Args>
  void send(const Method& method, std::chrono::milliseconds timeout, Then then, const Failed& failed,
            const Args&... arguments) {
    if (!bus_) {
      failed(busWentAway());
      return;
    }
    const auto id = ++lastCall_;
    pending_.emplace(id, failed);
    try {
      auto& object = lastingObject(method);
      auto call = object.createMethodCall(method.interface, method.name);
      (static_cast<void>(call << arguments), ...);
      object.callMethod(
          call,
          [this, id, then = std::move(then)](sdbus::MethodReply& reply, const sdbus::Error* error) {
            answered(id, reply, error, then);
          },
          timeout);
    } catch (const sdbus::Error& error) {
      fail(id, error);
    }
  }

 private:
  void answered(std::uint64_t id, sdbus::MethodReply& reply, const sdbus::Error* error, const Then& then);
  void fail(std::uint64_t id, const sdbus::Error& error);
  sdbus::IProxy& lastingObject(const Method& method);

  sdbus::IConnection* bus_ = nullptr;
  // The proxy must exist until the reply.
  std::map<std::string, std::unique_ptr<sdbus::IProxy>> objects_;
  std::map<std::uint64_t, Failed> pending_;
  std::uint64_t lastCall_ = 0;
};

}  // namespace quillmar
