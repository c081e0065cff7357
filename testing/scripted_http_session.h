#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/dispatch.h"
#include "platform/http_session.h"
#include "platform/transport_error.h"

namespace quillmar {

// The value of a request's header, in whatever case its name was written.
std::optional<std::string> header(const HttpRequest& request, std::string_view name);

// What a data task may bring, the odd ends included.
DataTaskResult httpAnswer(int status, std::string body = {});
DataTaskResult transportFailure(TransportError::Kind kind, std::string host = {});
DataTaskResult answerWithoutData(int status);
DataTaskResult answerWithoutResponse(std::string body);
DataTaskResult answerThatIsNotHttp(std::string body);

// A session without a network: it records what is sent and answers by a script. A request is answered when
// its turn comes on the session's queue, so that a script written after the call but before the queues run
// counts. Completions run on that queue one after another, never inside `dataTask` and never on the main
// thread.
//
// A request is named by method and path. The path is what follows "/api/v1" in the URL, or the URL's whole
// path where that isn't in it; with a query it must be the same, without one any query matches. Any thread.
class ScriptedHttpSession final : public HttpSession {
 public:
  explicit ScriptedHttpSession(Dispatch& dispatch);
  ~ScriptedHttpSession() override;

  void dataTask(HttpRequest request, Completion completion) override;

  // The next request of this name gets this answer; several make a queue, each used once.
  void answer(std::string_view method, std::string_view path, int status, std::string body = {});
  void answer(std::string_view method, std::string_view path, DataTaskResult result);
  void fail(std::string_view method, std::string_view path, TransportError::Kind kind);
  // Every request of this name that finds its queue empty gets this one; replaces the one before.
  void answerAlways(std::string_view method, std::string_view path, int status, std::string body = {});
  void answerAlways(std::string_view method, std::string_view path, DataTaskResult result);
  void failAlways(std::string_view method, std::string_view path, TransportError::Kind kind);
  // Requests that no script names fail with `cannotConnectToHost` unless told otherwise here.
  void answerEverythingElse(DataTaskResult result);
  void forgetScript();

  // All requests in the order of sending.
  std::vector<HttpRequest> requests() const;
  std::vector<HttpRequest> requests(std::string_view method, std::string_view path) const;
  std::size_t count(std::string_view method, std::string_view path) const;
  // "POST /auth/login" for each request, in order.
  std::vector<std::string> calls() const;
  void forgetRequests();

  // From now on requests stay pending until they are released or completed by hand.
  void hold();
  void hold(std::string_view method, std::string_view path);
  std::vector<HttpRequest> held() const;
  // Lets the held request at `index` of `held()` have its scripted answer, or the given one.
  void release(std::size_t index = 0);
  void complete(std::size_t index, DataTaskResult result);
  // Ends all holding; what is held gets its scripted answer, in the order of sending.
  void releaseAll();

  // Every body of an answer passes through this on its way.
  void alterBodies(std::function<std::string(const std::string&)> alter);

  // Answers take this long. Nothing at first.
  void setLatency(Duration latency);

 private:
  using Name = std::pair<std::string, std::string>;
  struct Script {
    std::deque<DataTaskResult> next;
    std::optional<DataTaskResult> always;
    bool hold = false;
  };
  struct Pending {
    HttpRequest request;
    Completion completion;
  };
  struct State;

  std::shared_ptr<State> state_;
};

}  // namespace quillmar
