#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/client/client_test.h"

namespace quillmar {
namespace {

constexpr std::size_t requestCount = 100;
constexpr std::size_t workerCount = 4;
constexpr std::size_t callerCount = 8;

// A service on several threads. Requests with the old token get 401. The refresh is answered only after every
// request got its 401 and handled it.
class RefusingSession final : public HttpSession {
 public:
  RefusingSession() {
    for (std::size_t i = 0; i < workerCount; ++i) {
      workers_.emplace_back([this] { work(); });
    }
  }
  ~RefusingSession() override {
    {
      const std::scoped_lock lock(mutex_);
      isClosing_ = true;
    }
    changed_.notify_all();
    for (std::thread& worker : workers_) {
      worker.join();
    }
  }

  void dataTask(HttpRequest request, Completion completion) override {
    const std::scoped_lock lock(mutex_);
    requests_.push_back(request);
    tasks_.push_back([this, request = std::move(request), completion = std::move(completion)] {
      answer(request, completion);
    });
    changed_.notify_all();
  }

  std::vector<HttpRequest> requests() {
    const std::scoped_lock lock(mutex_);
    return requests_;
  }

 private:
  void answer(const HttpRequest& request, const Completion& completion) {
    if (request.url.ends_with("/auth/refresh")) {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return refused_ == requestCount; });
      lock.unlock();
      completion(httpAnswer(200, authBody(newToken)));
    } else if (header(request, "Authorization") == "Bearer " + newToken) {
      completion(httpAnswer(200, request.url));
    } else {
      completion(httpAnswer(401));
      const std::scoped_lock lock(mutex_);
      ++refused_;
      changed_.notify_all();
    }
  }

  void work() {
    std::unique_lock lock(mutex_);
    while (true) {
      changed_.wait(lock, [this] { return isClosing_ || !tasks_.empty(); });
      if (tasks_.empty()) {
        return;
      }
      const auto task = std::move(tasks_.front());
      tasks_.pop_front();
      lock.unlock();
      task();
      lock.lock();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  bool isClosing_ = false;
  std::size_t refused_ = 0;
  std::deque<std::function<void()>> tasks_;
  std::vector<HttpRequest> requests_;
  std::vector<std::thread> workers_;
};

class Answers {
 public:
  void add(std::size_t index, std::string body) {
    const std::scoped_lock lock(mutex_);
    bodies_[index].push_back(std::move(body));
    ++count_;
    changed_.notify_all();
  }
  // Waits for one answer per request, then returns each request's answers.
  std::vector<std::vector<std::string>> wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return count_ >= requestCount; });
    return bodies_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::size_t count_ = 0;
  std::vector<std::vector<std::string>> bodies_ = std::vector<std::vector<std::string>>(requestCount);
};

std::string urlOf(std::size_t index) { return "https://au.example/api/v1/things/" + std::to_string(index); }

TEST(RefreshThreads, a_hundred_401s_at_once_cause_one_refresh_and_one_retry_each) {
  MemorySettingsStore settings;
  settings.set(NetworkService::regionKey, "australia");
  settings.set(NetworkService::authTokenKey, oldToken);
  RecordingLog log;
  Answers answers;
  auto session = std::make_unique<RefusingSession>();
  VirtualDispatch dispatch;
  const auto service =
      NetworkService::make(*session, settings, log, dispatch, Deployments::all("https://au.example"));

  std::vector<std::thread> callers;
  for (std::size_t caller = 0; caller < callerCount; ++caller) {
    callers.emplace_back([&, caller] {
      for (std::size_t i = caller; i < requestCount; i += callerCount) {
        service->performRequest(
            {.method = "GET", .url = urlOf(i), .headers = {}, .body = {}}, false,
            [&answers, i](const Result<NetworkService::Answer>& answer) {
              answers.add(i, answer.ok() ? answer.value().data : answer.error().localizedDescription());
            });
      }
    });
  }
  for (std::thread& caller : callers) {
    caller.join();
  }
  const auto bodies = answers.wait();
  const auto requests = session->requests();
  session.reset();

  const auto count = [&](const std::string& url, const std::string& token) {
    return std::ranges::count_if(requests, [&](const HttpRequest& request) {
      return request.url == url && header(request, "Authorization") == "Bearer " + token;
    });
  };
  EXPECT_EQ(count("https://au.example/api/v1/auth/refresh", oldToken), 1);
  for (std::size_t i = 0; i < requestCount; ++i) {
    EXPECT_EQ(count(urlOf(i), oldToken), 1) << i;
    EXPECT_EQ(count(urlOf(i), newToken), 1) << i;
    EXPECT_THAT(bodies[i], testing::ElementsAre(urlOf(i)));
  }
  EXPECT_EQ(requests.size(), 2 * requestCount + 1);
  EXPECT_FALSE(service->isRefreshingToken());
  EXPECT_EQ(settings.string(NetworkService::authTokenKey), newToken);
  EXPECT_EQ(settings.synchronizations(), 1);
  EXPECT_EQ(log.countPrinted("[NetworkService] Attempting token refresh..."), 1);
  EXPECT_EQ(log.countPrinted("[NetworkService] Token refreshed successfully, retrying request..."),
            requestCount);
}

}  // namespace
}  // namespace quillmar
