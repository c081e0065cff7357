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

// Where this service is reached, without a slash at the end.
struct Addresses {
  std::string plain;   // http://127.0.0.1:8790
  std::string secure;  // https://127.0.0.1:8791

  // The root through which a request came.
  [[nodiscard]] std::string rootOf(const Request& request) const {
    if (request.authority.empty()) {
      return request.secure ? secure : plain;
    }
    return (request.secure ? "https://" : "http://") + request.authority;
  }

  [[nodiscard]] bool isOwn(std::string_view root) const { return root == plain || root == secure; }

  // The root of all devices' endpoints.
  [[nodiscard]] std::string dohBase() const { return secure + "/dns-query"; }
};

// What every call works with: one service's data and circumstances.
struct World {
  World(Database& tables, Saboteur& mischief, Recorder& record, Addresses reachedAt, Clock time)
      : database{tables},
        saboteur{mischief},
        recorder{record},
        addresses{std::move(reachedAt)},
        clock{std::move(time)} {}

  Database& database;
  Saboteur& saboteur;
  Recorder& recorder;
  Addresses addresses;
  Clock clock;
  std::optional<std::string> upstream;           // a DNS server's address, asked for allowed names
  Seed seed = Seed::empty;                       // what a reset goes back to
  Guesses guesses{};                             // within a transaction only
  std::function<void(bool)> hold = [](bool) {};  // whether answers that ask to be held are
  std::atomic<std::int64_t> ahead{0};            // milliseconds by which a steered clock differs

  [[nodiscard]] Time now() const {
    return std::chrono::floor<std::chrono::milliseconds>(clock()) + std::chrono::milliseconds{ahead.load()};
  }
};

inline constexpr std::chrono::minutes onlineFor{3};  // after a device was last heard of
inline constexpr std::chrono::minutes enrollmentLifetime{10};
inline constexpr std::chrono::hours invitationLifetime{24};
inline constexpr std::chrono::hours tokenLifetime{24};
inline constexpr std::chrono::hours tokenGrace{7 * 24};  // in which a token is still good for a refresh
// Every caller comes from this machine; this stands for the public address that its home would have.
inline constexpr std::string_view publicAddress = "203.0.113.24";
inline constexpr std::string_view dnsServer = "192.0.2.53";  // what consoles and TVs are told to use

}  // namespace quillmar::sandbox
