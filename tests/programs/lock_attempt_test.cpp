#include "programs/control/lock_attempt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <future>
#include <optional>
#include <string>
#include <utility>

#include "platform/common/asio_dispatch.h"
#include "programs/control/control_server.h"
#include "programs/control/holder_watch.h"
#include "testing/scoped_environment.h"
#include "testing/temporary_directory.h"

namespace quillmar::control {
namespace {

namespace fs = std::filesystem;

// Much longer than anything here takes.
constexpr std::chrono::seconds longTimeout{60};

// An installation whose lock another process holds.
class LockAttemptTest : public testing::Test {
 protected:
  LockAttemptTest() { fs::permissions(runtime.path(), fs::perms::owner_all); }

  std::future<LockAttempt> attempt(std::optional<ControlRequest> show = {}) const {
    return std::async(std::launch::async,
                      [this, show = std::move(show)] { return attemptLock(data, show, longTimeout); });
  }

  // The other process, which answers every request with this line while `meanwhile` runs.
  void serve(const std::string& line, const std::function<void()>& meanwhile) {
    AsioDispatch dispatch;
    const ControlServer server(data, dispatch,
                               [this, line](const std::string& request, const ControlServer::Reply& reply) {
                                 requests.push_back(request);
                                 reply({line, lockToGive()});
                               });
    auto done = std::async(std::launch::async, [&] {
      meanwhile();
      // Through the queue, because a stop before run() would be lost.
      dispatch.main().async([&dispatch] { dispatch.stop(); });
    });
    dispatch.run();
  }

  FileDescriptor lockToGive() {
    return givesLock ? InstanceLock::handOver(std::move(*std::exchange(held, std::nullopt)))
                     : FileDescriptor();
  }

  const TemporaryDirectory runtime;
  const ScopedEnvironment session{"XDG_RUNTIME_DIR", runtime.path().c_str()};
  const TemporaryDirectory home;
  const fs::path data = home.path() / "data";
  std::optional<InstanceLock> held = InstanceLock::acquire(data);
  bool givesLock = false;
  std::vector<std::string> requests;
};

TEST_F(LockAttemptTest, reports_nothing_without_an_event) {
  HolderWatch watch(data);
  watch.listen();
  EXPECT_FALSE(watch.waitUntil(std::chrono::steady_clock::now()));
  EXPECT_FALSE(watch.takeLock());
}

TEST_F(LockAttemptTest, reports_a_socket_created_after_it_started_to_listen) {
  for (const char* directory : {runtime.path().c_str(), static_cast<const char*>(nullptr)}) {
    const ScopedEnvironment variable("XDG_RUNTIME_DIR", directory);
    HolderWatch watch(data);
    watch.listen();
    AsioDispatch dispatch;
    const ControlServer server(data, dispatch, {});
    EXPECT_TRUE(watch.waitUntil(std::chrono::steady_clock::now() + longTimeout)) << localSocketPaths(data)[0];
    EXPECT_FALSE(watch.takeLock());
  }
}

TEST_F(LockAttemptTest, reports_a_socket_in_a_directory_that_already_existed) {
  fs::create_directories(localSocketPaths(data).front().parent_path());
  HolderWatch watch(data);
  watch.listen();
  AsioDispatch dispatch;
  const ControlServer server(data, dispatch, {});
  EXPECT_TRUE(watch.waitUntil(std::chrono::steady_clock::now() + longTimeout));
}

TEST_F(LockAttemptTest, reports_that_the_lock_is_free) {
  HolderWatch watch(data);
  watch.listen();
  held.reset();
  EXPECT_TRUE(watch.waitUntil(std::chrono::steady_clock::now() + longTimeout));
  EXPECT_TRUE(watch.takeLock());
}

TEST_F(LockAttemptTest, takes_a_free_lock) {
  held.reset();
  EXPECT_TRUE(attemptLock(data, {}, std::chrono::seconds(0)).lock);
}

TEST_F(LockAttemptTest, ends_empty_if_nobody_answers_in_time) {
  const auto result = attemptLock(data, {}, std::chrono::seconds(0));
  EXPECT_FALSE(result.lock);
  EXPECT_FALSE(result.holder);
}

TEST_F(LockAttemptTest, takes_the_lock_of_a_process_that_ends_without_answering) {
  auto result = attempt();
  held.reset();
  EXPECT_TRUE(result.get().lock);
}

TEST_F(LockAttemptTest, finds_a_process_that_answers_only_after_a_while) {
  auto result = attempt();
  serve(R"({"worker":"window"})", [&] {
    const auto answered = result.get();
    EXPECT_EQ(answered.holder, Worker::window);
    EXPECT_FALSE(answered.lock);
  });
}

TEST_F(LockAttemptTest, finds_a_process_in_the_data_directory_too) {
  const ScopedEnvironment nowhere("XDG_RUNTIME_DIR", nullptr);
  auto result = attempt();
  serve(R"({"worker":"window"})", [&] { EXPECT_EQ(result.get().holder, Worker::window); });
}

TEST_F(LockAttemptTest, gets_the_lock_from_a_process_that_starts_and_yields) {
  givesLock = true;
  auto result = attempt();
  serve(R"({"worker":"agent"})", [&] {
    const auto answered = result.get();
    EXPECT_TRUE(answered.lock);
    EXPECT_FALSE(answered.holder);
    EXPECT_FALSE(InstanceLock::acquire(data)) << "it is free at no moment";
  });
}

TEST_F(LockAttemptTest, shows_a_window_that_does_not_yield) {
  serve(R"({"worker":"window"})", [&] {
    EXPECT_EQ(attempt(ControlRequest{.operation = "show", .activationToken = "t-1"}).get().holder,
              Worker::window);
  });
  EXPECT_THAT(requests, testing::ElementsAre(R"({"operation":"yield"})",
                                             R"({"operation":"show","activationToken":"t-1"})"));
}

TEST_F(LockAttemptTest, ignores_an_invalid_answer) {
  auto result = attempt();
  serve("nonsense", [&] {
    held.reset();
    EXPECT_TRUE(result.get().lock);
  });
}

TEST_F(LockAttemptTest, leaves_the_lock_alone_after_it_has_ended) {
  EXPECT_FALSE(attemptLock(data, {}, std::chrono::seconds(0)).lock);
  held.reset();
  std::promise<std::optional<InstanceLock>> next;
  InstanceLock::whenFree(data,
                         [&next](std::optional<InstanceLock> lock) { next.set_value(std::move(lock)); });
  EXPECT_TRUE(next.get_future().get());
}

}  // namespace
}  // namespace quillmar::control
