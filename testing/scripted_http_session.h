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

// The value of a request's header, ignoring the name's case.
std::optional<std::string> header(const HttpRequest& request, std::string_view name);

// Results of a data task, including malformed ones.
DataTaskResult httpAnswer(int status, std::string body = {});
DataTaskResult transportFailure(TransportError::Kind kind, std::string host = {});
DataTaskResult answerWithoutData(int status);
DataTaskResult answerWithoutResponse(std::string body);
DataTaskResult answerThatIsNotHttp(std::string body);

// A session without a network: records requests and answers them from a script. The answer is chosen when the
// request's turn comes on the session's queue, so a script may be written after the call. Completions run on
// that queue one at a time, never inside `dataTask` and never on the main thread.
//
// A request is named by method and path. The path is the part of the URL after "/api/v1", or the whole path
// if that is missing. A name with a query matches only the same query; one without matches any. Thread-safe.
class ScriptedHttpSession final : public HttpSession {
 public:
  explicit ScriptedHttpSession(Dispatch& dispatch);
  ~ScriptedHttpSession() override;

  void dataTask(HttpRequest request, Completion completion) override;
  void beginBatch() override;
  void endBatch() override;

  // The answer to the next request of this name. Several form a queue.
  void answer(std::string_view method, std::string_view path, int status, std::string body = {});
  void answer(std::string_view method, std::string_view path, DataTaskResult result);
  void fail(std::string_view method, std::string_view path, TransportError::Kind kind);
  // The answer to every request of this name whose queue is empty. Replaces the previous one.
  void answerAlways(std::string_view method, std::string_view path, int status, std::string body = {});
  void answerAlways(std::string_view method, std::string_view path, DataTaskResult result);
  void failAlways(std::string_view method, std::string_view path, TransportError::Kind kind);
  // For requests without a script; `cannotConnectToHost` by default.
  void answerEverythingElse(DataTaskResult result);
  void forgetScript();

  // In the order of sending.
  std::vector<HttpRequest> requests() const;
  std::vector<HttpRequest> requests(std::string_view method, std::string_view path) const;
  std::size_t count(std::string_view method, std::string_view path) const;
  // Each as "POST /auth/login", in the order of sending.
  std::vector<std::string> calls() const;
  // The calls that may change something: all but GET.
  std::vector<std::string> changes() const;
  // The number of requests of each batch that has ended. `forgetRequests` forgets them too.
  std::vector<std::size_t> batches() const;
  void forgetRequests();

  // Requests stay pending until `release`, `complete` or `releaseAll`.
  void hold();
  void hold(std::string_view method, std::string_view path);
  std::vector<HttpRequest> held() const;
  // `index` refers to `held()`. `release` uses the scripted answer, `complete` the given one.
  void release(std::size_t index = 0);
  void complete(std::size_t index, DataTaskResult result);
  // Ends holding and answers the held requests from the script, in the order of sending.
  void releaseAll();

  // Applied to the body of each answer.
  void alterBodies(std::function<std::string(const std::string&)> alter);

  // The delay of each answer. Zero by default.
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
