#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/http_session.h"

namespace quillmar {

constexpr std::chrono::seconds farTooLong{30};

// Sends the request and blocks until its completion has run.
inline DataTaskResult fetch(HttpSession& session, HttpRequest request) {
  const auto promise = std::make_shared<std::promise<DataTaskResult>>();
  auto future = promise->get_future();
  session.dataTask(std::move(request),
                   [promise](DataTaskResult result) { promise->set_value(std::move(result)); });
  return future.wait_for(farTooLong) == std::future_status::ready ? future.get() : DataTaskResult();
}

inline HttpRequest get(std::string url) {
  return {.method = "GET", .url = std::move(url), .headers = {}, .body = std::nullopt};
}

// Blocks a test until a condition holds, which is checked after each completed request.
class WatchedSession final : public HttpSession {
 public:
  explicit WatchedSession(HttpSession& inner) : inner_(inner) {}

  void dataTask(HttpRequest request, Completion completion) override {
    inner_.dataTask(std::move(request), Watched{std::make_shared<Notice>(state_), std::move(completion)});
  }
  void beginBatch() override { inner_.beginBatch(); }
  void endBatch() override { inner_.endBatch(); }

  bool waitUntil(const std::function<bool()>& done) {
    std::unique_lock lock(state_->mutex);
    return state_->changed.wait_for(lock, farTooLong, done);
  }

 private:
  // Shared, because it can outlive the session while a completion is destroyed.
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
  };
  // Destroyed after the completion and its captures.
  struct Notice {
    explicit Notice(std::shared_ptr<State> state) : state(std::move(state)) {}
    Notice(const Notice&) = delete;
    Notice& operator=(const Notice&) = delete;
    ~Notice() {
      const std::scoped_lock lock(state->mutex);
      state->changed.notify_all();
    }
    const std::shared_ptr<State> state;
  };
  struct Watched {
    std::shared_ptr<Notice> notice;
    Completion completion;
    // Under the lock, so that a predicate sees all of the completion's effects or none.
    void operator()(DataTaskResult result) const {
      const std::scoped_lock lock(notice->state->mutex);
      completion(std::move(result));
    }
  };

  HttpSession& inner_;
  const std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace quillmar
