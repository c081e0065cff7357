#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "platform/http_session.h"

namespace quillmar {

// An HttpSession by libcurl. Its thread starts with the first request and sleeps while idle. Connections are
// kept alive and shared; HTTP/2 is used if the server offers it. Completions run on that thread and delay all
// others, so keep them short. The destructor cancels all requests and runs their completions; it must not run
// inside a completion.
class CurlHttpSession final : public HttpSession {
 public:
  struct Options {
    // Trusted authorities: a directory with OpenSSL's hashed names, of which a connection reads only the one
    // that it needs (reading all costs 1.4 MiB and 40 ms). The file, one PEM bundle, is used on systems
    // without such a directory.
    std::string caDirectory = "/etc/ssl/certs";
    std::string caFile = "/etc/ssl/certs/ca-certificates.crt";
    // Additional authorities, for a service with a private certificate. Empty for none.
    std::string extraCaFile;
    // The largest response body.
    std::size_t sizeLimit = std::size_t{8} * 1024 * 1024;
    // Limits a transfer that makes slow progress without end.
    std::chrono::seconds longestTransfer{600};
    // A request that changes something doesn't reuse an HTTP/1.1 connection that was idle for longer. Many
    // servers close such connections after a minute, and a request lost in the close must not be repeated.
    // The price is a handshake (docs/performance.md).
    std::chrono::seconds longestIdle{30};
    // The clock of all timeouts. The thread sleeps by the real clock, so a jump of this one takes effect with
    // the next request.
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
    // Tells an unreachable host from a missing network.
    std::function<bool()> hasNetwork = hasNetworkInterface;
  };

  CurlHttpSession();
  explicit CurlHttpSession(Options options);
  ~CurlHttpSession() override;

  void dataTask(HttpRequest request, Completion completion) override;
  void beginBatch() override;
  void endBatch() override;

  // Whether any interface other than loopback is up and has an address.
  static bool hasNetworkInterface();

 private:
  class Loop;
  std::unique_ptr<Loop> loop_;
};

}  // namespace quillmar
