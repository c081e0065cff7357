#pragma once

// What every HttpSession promises:
//   INSTANTIATE_TEST_SUITE_P(Curl, HttpSessionContract, testing::Values(factory<HttpSessionHarness,
//   CurlHarness>("Curl")));

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/http_session.h"
#include "platform/transport_error.h"
#include "tests/contracts/factory.h"

namespace quillmar {

// A session and the service that it calls.
class HttpSessionHarness : public Harness {
 public:
  virtual HttpSession& session() = 0;
  // The answer to every following request.
  virtual void answerWith(int status, const std::string& body) = 0;
  // A URL that refuses connections.
  virtual std::string unreachableUrl() = 0;
  virtual std::string url() = 0;
  // False on the thread of completions.
  virtual bool isMainThread() = 0;
  // Runs the session until `done` returns true; `done` may be called on any thread. False after a timeout.
  virtual bool runUntil(const std::function<bool()>& done) = 0;
};

class HttpSessionContract : public testing::TestWithParam<Factory<HttpSessionHarness>> {
 protected:
  HttpSession& session() { return harness_->session(); }
  HttpSessionHarness& harness() { return *harness_; }

  HttpRequest request() {
    return {.method = "GET", .url = harness_->url(), .headers = {}, .body = std::nullopt};
  }

  void send(HttpRequest request) {
    session().dataTask(std::move(request), [this](DataTaskResult result) { take(std::move(result)); });
  }
  DataTaskResult fetch(HttpRequest request) {
    const std::size_t before = completed_;
    send(std::move(request));
    EXPECT_TRUE(runUntilCompleted(before + 1));
    return last();
  }
  // `sendTen` sends ten requests.
  void expectAnswersOnFourThreads(const std::function<void()>& sendTen) {
    harness_->answerWith(200, "");
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) {
      callers.emplace_back(sendTen);
    }
    const bool all = runUntilCompleted(40);
    for (std::thread& caller : callers) {
      caller.join();
    }
    EXPECT_TRUE(all);
    EXPECT_EQ(completed(), 40U);
  }
  void take(DataTaskResult result) {
    EXPECT_FALSE(harness_->isMainThread());
    {
      const std::scoped_lock lock(mutex_);
      results_.push_back(std::move(result));
    }
    ++completed_;
  }
  bool runUntilCompleted(std::size_t count) {
    return harness_->runUntil([this, count] { return completed_ >= count; });
  }
  std::size_t completed() const { return completed_; }
  DataTaskResult last() {
    const std::scoped_lock lock(mutex_);
    return results_.empty() ? DataTaskResult() : results_.back();
  }

 private:
  std::mutex mutex_;
  std::vector<DataTaskResult> results_;
  std::atomic<std::size_t> completed_ = 0;
  // Last, so that it is destroyed first: its destructor may complete requests.
  std::unique_ptr<HttpSessionHarness> harness_ = GetParam()();
};

TEST_P(HttpSessionContract, an_answer_brings_its_status_and_its_bytes_as_they_are) {
  using namespace std::string_literals;
  const std::string body = "{\"a\":\"\xff\xfe \0 ü\"}"s;
  harness().answerWith(200, body);
  const DataTaskResult result = fetch(request());
  EXPECT_EQ(result.data, body);
  ASSERT_TRUE(result.response);
  EXPECT_EQ(result.response->status, 200);
  EXPECT_FALSE(result.error);
}

TEST_P(HttpSessionContract, every_status_is_an_answer) {
  for (const int status : {201, 304, 400, 401, 403, 404, 500, 599}) {
    harness().answerWith(status, status == 304 ? "" : "body");
    const DataTaskResult result = fetch(request());
    ASSERT_TRUE(result.response) << status;
    EXPECT_EQ(result.response->status, status);
    EXPECT_FALSE(result.error);
  }
}

TEST_P(HttpSessionContract, empty_data_is_present) {
  for (const int status : {200, 204}) {
    harness().answerWith(status, "");
    EXPECT_EQ(fetch(request()).data, "");
  }
}

TEST_P(HttpSessionContract, a_refused_connection_is_an_error_without_data_or_response) {
  HttpRequest nowhere = request();
  nowhere.url = harness().unreachableUrl();
  const DataTaskResult result = fetch(std::move(nowhere));
  ASSERT_TRUE(result.error);
  EXPECT_EQ(*result.error, (TransportError{TransportError::Kind::cannotConnectToHost, {}}));
  EXPECT_FALSE(result.data);
  EXPECT_FALSE(result.response);
}

TEST_P(HttpSessionContract, a_completion_runs_once_and_never_inside_the_call) {
  harness().answerWith(200, "");
  const std::thread::id caller = std::this_thread::get_id();
  thread_local bool inCall = false;
  std::atomic<int> runs = 0;
  std::atomic<bool> inside = false;
  inCall = true;
  session().dataTask(request(), [&, caller](const DataTaskResult&) {
    inside = std::this_thread::get_id() == caller && inCall;
    ++runs;
  });
  inCall = false;
  ASSERT_TRUE(harness().runUntil([&] { return runs > 0; }));
  fetch(request());
  EXPECT_EQ(runs, 1);
  EXPECT_FALSE(inside);
}

TEST_P(HttpSessionContract, completions_run_one_after_another) {
  harness().answerWith(200, "body");
  constexpr std::size_t count = 30;
  std::atomic<int> inside = 0;
  std::atomic<bool> overlapped = false;
  for (std::size_t i = 0; i < count; ++i) {
    session().dataTask(request(), [&](DataTaskResult result) {
      overlapped = overlapped || ++inside > 1;
      take(std::move(result));
      --inside;
    });
  }
  EXPECT_TRUE(runUntilCompleted(count));
  EXPECT_FALSE(overlapped);
}

TEST_P(HttpSessionContract, a_completion_may_send_the_next_request) {
  harness().answerWith(200, "");
  session().dataTask(request(), [this](const DataTaskResult&) { send(request()); });
  EXPECT_TRUE(runUntilCompleted(1));
}

TEST_P(HttpSessionContract, requests_may_come_from_many_threads) {
  expectAnswersOnFourThreads([this] {
    for (int i = 0; i < 10; ++i) {
      send(request());
    }
  });
}

TEST_P(HttpSessionContract, requests_of_a_batch_are_answered_after_its_end) {
  harness().answerWith(200, "");
  for (const std::size_t expected : {2U, 4U}) {  // on a new connection and on a kept one
    {
      const HttpSession::Batch batch(session());
      send(request());
      const HttpSession::Batch second(session());
      send(request());
    }
    EXPECT_TRUE(runUntilCompleted(expected));
  }
}

TEST_P(HttpSessionContract, a_batch_without_requests_changes_nothing) {
  harness().answerWith(200, "");
  { const HttpSession::Batch batch(session()); }
  EXPECT_EQ(fetch(request()).error, std::nullopt);
  { const HttpSession::Batch batch(session()); }
  EXPECT_EQ(fetch(request()).error, std::nullopt);
}

TEST_P(HttpSessionContract, batches_may_come_from_many_threads) {
  expectAnswersOnFourThreads([this] {
    for (int i = 0; i < 5; ++i) {
      const HttpSession::Batch batch(session());
      send(request());
      send(request());
    }
  });
}

TEST_P(HttpSessionContract, what_a_completion_holds_is_released_once_it_has_run) {
  harness().answerWith(200, "");
  const auto held = std::make_shared<int>(0);
  session().dataTask(request(), [held](const DataTaskResult&) {});
  fetch(request());
  EXPECT_TRUE(harness().runUntil([&] { return held.use_count() == 1; }));
}

TEST(HttpRequest, setting_a_header_replaces_it) {
  HttpRequest request;
  request.setHeader("Authorization", "Bearer old");
  request.setHeader("Content-Type", "application/json");
  request.setHeader("Authorization", "Bearer new");
  using Header = std::pair<std::string, std::string>;
  EXPECT_THAT(request.headers, testing::ElementsAre(Header("Authorization", "Bearer new"),
                                                    Header("Content-Type", "application/json")));
}

}  // namespace quillmar
