#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "platform/common/curl_http_session.h"
#include "testing/scripted_http_session.h"
#include "testing/virtual_dispatch.h"
#include "tests/contracts/http_session_contract.h"
#include "tests/platform/fetching.h"
#include "tests/platform/raw_server.h"

namespace quillmar {
namespace {

class ScriptedHarness final : public HttpSessionHarness {
 public:
  HttpSession& session() override { return session_; }
  void answerWith(int status, const std::string& body) override {
    session_.answerAlways("GET", "/", status, body);
  }
  std::string unreachableUrl() override { return "https://h/elsewhere"; }
  std::string url() override { return "https://h/"; }
  bool isMainThread() override { return dispatch_.isMainThread(); }
  bool runUntil(const std::function<bool()>& done) override { return dispatch_.settleUntil(done); }

 private:
  VirtualDispatch dispatch_;
  ScriptedHttpSession session_{dispatch_};
};

class CurlHarness final : public HttpSessionHarness {
 public:
  HttpSession& session() override { return watched_; }
  void answerWith(int status, const std::string& body) override {
    const std::scoped_lock lock(mutex_);
    const bool hasBody = status != 204 && status != 304;
    response_ =
        hasBody ? httpResponse(status, body) : "HTTP/1.1 " + std::to_string(status) + " Reason\r\n\r\n";
  }
  std::string unreachableUrl() override {
    const RawServer gone([](RawConnection&) {});
    return gone.url("/");
  }
  std::string url() override { return server_.url("/"); }
  bool isMainThread() override { return std::this_thread::get_id() == main_; }
  bool runUntil(const std::function<bool()>& done) override { return watched_.waitUntil(done); }

 private:
  std::string response() {
    const std::scoped_lock lock(mutex_);
    return response_;
  }

  const std::thread::id main_ = std::this_thread::get_id();
  std::mutex mutex_;
  std::string response_;
  RawServer server_{[this](RawConnection& connection) {
    while (connection.readRequest() && connection.send(response())) {
    }
  }};
  CurlHttpSession session_;
  WatchedSession watched_{session_};
};

INSTANTIATE_TEST_SUITE_P(Scripted, HttpSessionContract,
                         testing::Values(factory<HttpSessionHarness, ScriptedHarness>("scripted")));
INSTANTIATE_TEST_SUITE_P(Curl, HttpSessionContract,
                         testing::Values(factory<HttpSessionHarness, CurlHarness>("libcurl")));

TEST(ScriptedHttpSession, holds_the_requests_of_a_batch_until_its_end) {
  VirtualDispatch dispatch;
  ScriptedHttpSession session(dispatch);
  bool isAnswered = false;
  {
    const HttpSession::Batch batch(session);
    session.dataTask(get("https://h/"), [&](const DataTaskResult&) { isAnswered = true; });
    dispatch.settle();
    EXPECT_FALSE(isAnswered);
  }
  dispatch.settle();
  EXPECT_TRUE(isAnswered);
}

// The requests of another session on another thread show that there was time to send.
TEST(CurlHttpSession, sends_nothing_before_the_end_of_a_batch) {
  std::atomic<int> held = 0;
  const RawServer server([&](RawConnection& connection) {
    while (const auto request = connection.readRequest()) {
      held += request->starts_with("GET /held") ? 1 : 0;
      connection.send(httpResponse(200, ""));
    }
  });
  CurlHttpSession session;
  CurlHttpSession other;
  WatchedSession watched(session);
  fetch(session, get(server.url("/")));
  int answered = 0;
  {
    const HttpSession::Batch batch(watched);
    for (int i = 0; i < 5; ++i) {
      watched.dataTask(get(server.url("/held")), [&](const DataTaskResult&) { ++answered; });
      fetch(other, get(server.url("/")));
    }
    EXPECT_EQ(held, 0);
  }
  EXPECT_TRUE(watched.waitUntil([&] { return answered == 5; }));
  EXPECT_EQ(held, 5);
}

TEST(CurlHttpSession, cancels_requests_even_if_their_batch_has_not_ended) {
  DataTaskResult result;
  {
    CurlHttpSession session;
    session.beginBatch();
    session.dataTask(get("https://h/"), [&](DataTaskResult ended) { result = std::move(ended); });
  }
  ASSERT_TRUE(result.error);
  EXPECT_EQ(result.error->as<TransportError>()->kind, TransportError::Kind::cancelled);
}

}  // namespace
}  // namespace quillmar
