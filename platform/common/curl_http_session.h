#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "platform/http_session.h"

namespace quillmar {

// The session by libcurl, on a thread of its own that starts with the first request and sleeps while there is
// nothing to do. Connections are kept alive and shared, HTTP/2 is used where it is offered. A completion runs
// on that thread and holds up all others, so it should be short.
// Destroying the session cancels what is under way, runs those completions, and must not happen inside of
// one.
class CurlHttpSession final : public HttpSession {
 public:
  struct Options {
    // The authorities to trust: a folder in which OpenSSL finds each by the hash of its name, so that a
    // connection reads only the one it needs (all of them cost 1.4 MiB and 40 ms), or, on a system without
    // such a folder, one PEM file of them all.
    std::string caDirectory = "/etc/ssl/certs";
    std::string caFile = "/etc/ssl/certs/ca-certificates.crt";
    // More of them, for a service with a certificate of its own making. Empty for none.
    std::string extraCaFile;
    // The longest body.
    std::size_t sizeLimit = std::size_t{8} * 1024 * 1024;
    // A server that sends a byte now and then makes progress; it times out after this all the same.
    std::chrono::seconds longestTransfer{600};
    // A request that changes something does not go out on an HTTP/1.1 connection that has been idle for
    // longer: servers close such connections, many of them after a minute, and a request that meets the close
    // is lost, since it may not be repeated. A connection of its own costs it a handshake
    // (docs/performance.md).
    std::chrono::seconds longestIdle{30};
    // The clock of all time-outs. The thread sleeps by the real one: a clock that jumps is noticed with the
    // next request.
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
    // Whether this device is on any network; tells an unreachable host from a missing network.
    std::function<bool()> hasNetwork = hasNetworkInterface;
  };

  CurlHttpSession();
  explicit CurlHttpSession(Options options);
  ~CurlHttpSession() override;

  void dataTask(HttpRequest request, Completion completion) override;

  // Whether any interface but the loopback one works and has an address.
  static bool hasNetworkInterface();

 private:
  class Loop;
  std::unique_ptr<Loop> loop_;
};

}  // namespace quillmar
