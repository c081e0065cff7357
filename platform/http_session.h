#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/date.h"
#include "foundation/error.h"
#include "platform/port.h"

namespace quillmar {

struct HttpRequest {
  std::string method = "GET";
  std::string url;
  // Nothing else is sent, except what HTTP requires.
  std::vector<std::pair<std::string, std::string>> headers;
  std::optional<std::string> body;
  // Without progress.
  std::chrono::seconds timeout{60};

  // Replaces a header of the same name.
  void setHeader(const std::string& name, std::string value);
  // Called when the request is no longer needed: headers and body may hold a token or a password.
  void wipeSecrets();
};

struct Response {
  // nullopt if the answer was not HTTP.
  std::optional<int> status;
  // The answer's Date header.
  std::optional<Date> date = std::nullopt;
};

// Each member may be absent.
struct DataTaskResult {
  std::optional<std::string> data;
  std::optional<Response> response;
  std::optional<Error> error;
};

// The shared session. `dataTask` is thread-safe, returns at once and calls its completion exactly once, on
// the session's background thread, one completion at a time. Errors are TransportErrors. Rules:
// - Certificates and host names are always verified. TLS is 1.2 or newer. Plain HTTP is allowed to loopback
//   only.
// - A request is sent once. A GET whose kept connection ended before the answer began is sent once more.
// - An answer whose headers were cut is an error. A body is at most 8 MiB.
// - Up to 16 redirects within http(s) are followed, without Authorization to another host.
class HttpSession : public Port {
 public:
  using Completion = std::function<void(DataTaskResult)>;

  virtual void dataTask(HttpRequest request, Completion completion) = 0;

  // Requests that are made while it exists leave together at its end: each alone would wake the session's
  // thread. Thread-safe; of several the last end counts. Don't wait for an answer meanwhile.
  class [[nodiscard]] Batch {
   public:
    explicit Batch(HttpSession& session) : session_(session) { session_.beginBatch(); }
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;
    ~Batch() { session_.endBatch(); }

   private:
    HttpSession& session_;
  };

  // Called by a Batch, and by a session that passes requests to another. A session without a network may
  // ignore them.
  virtual void beginBatch() {}
  virtual void endBatch() {}
};

}  // namespace quillmar
