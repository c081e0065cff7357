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
  // Only these go out, beside what HTTP itself needs.
  std::vector<std::pair<std::string, std::string>> headers;
  std::optional<std::string> body;
  // The longest time without progress.
  std::chrono::seconds timeout{60};

  // Replaces a header of the same name.
  void setHeader(const std::string& name, std::string value);
  // For whoever is done with it: headers and body may hold a token or a password.
  void wipeSecrets();
};

struct Response {
  // Empty where the answer was not HTTP.
  std::optional<int> status;
  // The answer's own time; nothing where it does not say.
  std::optional<Date> date = std::nullopt;
};

// What the end of a data task brings. Error, data and response are each there or not.
struct DataTaskResult {
  std::optional<std::string> data;
  std::optional<Response> response;
  std::optional<Error> error;
};

// The one shared session. `dataTask` may be called from any thread, returns at once, and runs its completion
// exactly once on the session's own background thread; completions run one after another. Errors are
// TransportErrors. Rules: certificates and host names are always verified; TLS 1.2 or newer; plain http only
// to a loopback address; a request is sent once, but for a GET whose kept connection ended before an answer
// began, which is sent once more; an answer whose headers were cut is none; an answer is at most 8 MiB;
// redirects are followed within http(s), at most 16, without Authorization to another host.
class HttpSession : public Port {
 public:
  using Completion = std::function<void(DataTaskResult)>;

  virtual void dataTask(HttpRequest request, Completion completion) = 0;
};

}  // namespace quillmar
