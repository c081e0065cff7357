#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "sandbox/guesses.h"
#include "sandbox/misbehaviour.h"
#include "sandbox/recorder.h"
#include "sandbox/seed.h"
#include "sandbox/store/database.h"
#include "sandbox/time.h"

namespace quillmar::sandbox {

// The service's URLs, without a slash at the end.
struct Addresses {
  std::string plain;   // http://127.0.0.1:8790
  std::string secure;  // https://127.0.0.1:8791

  // The URL through which the request came.
  [[nodiscard]] std::string rootOf(const Request& request) const {
    if (request.authority.empty()) {
      return request.secure ? secure : plain;
    }
    return (request.secure ? "https://" : "http://") + request.authority;
  }

  [[nodiscard]] bool isOwn(std::string_view root) const { return root == plain || root == secure; }

  // The base URL of all devices' endpoints.
  [[nodiscard]] std::string dohBase() const { return secure + "/dns-query"; }
};

// A service's data and state, for its calls.
struct World {
  World(Database& tables, FaultInjector& injector, Recorder& record, Addresses reachedAt, Clock time)
      : database{tables},
        faultInjector{injector},
        recorder{record},
        addresses{std::move(reachedAt)},
        clock{std::move(time)} {}

  Database& database;
  FaultInjector& faultInjector;
  Recorder& recorder;
  Addresses addresses;
  Clock clock;
  std::optional<std::string> upstream;           // a DNS server that resolves allowed names
  Seed seed = Seed::empty;                       // restored by a reset
  Guesses guesses{};                             // within a transaction only
  std::function<void(bool)> hold = [](bool) {};  // HttpServer::hold
  std::atomic<std::int64_t> ahead{0};            // milliseconds by which the clock was moved

  [[nodiscard]] Time now() const {
    return std::chrono::floor<std::chrono::milliseconds>(clock()) + std::chrono::milliseconds{ahead.load()};
  }
};

inline constexpr std::chrono::minutes onlineFor{3};  // since the device was last seen
inline constexpr std::chrono::minutes enrollmentLifetime{10};
inline constexpr std::chrono::hours invitationLifetime{24};
inline constexpr std::chrono::hours tokenLifetime{24};
inline constexpr std::chrono::hours tokenGrace{7 * 24};  // after expiry, for a refresh only
// Stands for the public address of a home, because every request comes from this machine.
inline constexpr std::string_view publicAddress = "203.0.113.24";
inline constexpr std::string_view dnsServer = "192.0.2.53";  // for consoles and TVs

}  // namespace quillmar::sandbox
