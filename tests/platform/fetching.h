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

// Lets a test block until something holds that changes with each completed request.
class WatchedSession final : public HttpSession {
 public:
  explicit WatchedSession(HttpSession& inner) : inner_(inner) {}

  void dataTask(HttpRequest request, Completion completion) override {
    inner_.dataTask(std::move(request), Watched{std::make_shared<Notice>(*this), std::move(completion)});
  }

  bool waitUntil(const std::function<bool()>& done) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, farTooLong, done);
  }

 private:
  // Goes after the completion and what that holds.
  struct Notice {
    explicit Notice(WatchedSession& session) : session(session) {}
    Notice(const Notice&) = delete;
    Notice& operator=(const Notice&) = delete;
    ~Notice() {
      const std::scoped_lock lock(session.mutex_);
      session.changed_.notify_all();
    }
    WatchedSession& session;
  };
  struct Watched {
    std::shared_ptr<Notice> notice;
    Completion completion;
    void operator()(DataTaskResult result) const { completion(std::move(result)); }
  };

  HttpSession& inner_;
  std::mutex mutex_;
  std::condition_variable changed_;
};

}  // namespace quillmar
