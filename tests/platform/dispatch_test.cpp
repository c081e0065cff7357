#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "platform/common/asio_dispatch.h"
#include "testing/virtual_dispatch.h"
#include "tests/contracts/dispatch_contract.h"

namespace quillmar {
namespace {

class VirtualHarness final : public DispatchHarness {
 public:
  Dispatch& dispatch() override { return dispatch_; }
  bool runUntil(const std::function<bool()>& done) override { return dispatch_.advanceUntil(done); }
  void stall(Duration duration) override { dispatch_.jump(duration); }

 private:
  VirtualDispatch dispatch_;
};

class AsioHarness final : public DispatchHarness {
 public:
  Dispatch& dispatch() override { return dispatch_; }
  bool runUntil(const std::function<bool()>& done) override {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!done()) {
      if (!dispatch_.runOne(deadline)) {
        return false;
      }
    }
    return true;
  }
  void stall(Duration duration) override {
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end) {
    }
  }

 private:
  AsioDispatch dispatch_;
};

INSTANTIATE_TEST_SUITE_P(Virtual, DispatchContract,
                         testing::Values(factory<DispatchHarness, VirtualHarness>("virtual")));
INSTANTIATE_TEST_SUITE_P(Asio, DispatchContract,
                         testing::Values(factory<DispatchHarness, AsioHarness>("Asio")));

TEST(AsioDispatch, runs_until_it_is_stopped_and_can_be_run_again) {
  AsioDispatch dispatch;
  int runs = 0;
  for (int i = 1; i <= 2; ++i) {
    std::thread([&] {
      dispatch.main().async([&] {
        ++runs;
        dispatch.stop();
      });
    }).join();
    dispatch.run();
    EXPECT_EQ(runs, i);
  }
}

TEST(AsioDispatch, what_is_left_when_it_stops_stays_in_the_queue) {
  AsioDispatch dispatch;
  bool ran = false;
  dispatch.main().async([&] { dispatch.stop(); });
  dispatch.main().async([&] { ran = true; });
  dispatch.run();
  EXPECT_FALSE(ran);
  dispatch.main().async([&] { dispatch.stop(); });
  dispatch.run();
  EXPECT_TRUE(ran);
}

TEST(AsioDispatch, goes_without_running_what_is_still_waiting) {
  const auto held = std::make_shared<int>(0);
  bool ran = false;
  {
    AsioDispatch dispatch;
    const auto note = [held, &ran] { ran = true; };
    dispatch.main().async(note);
    dispatch.main().asyncAfter(std::chrono::hours(1), note);
    dispatch.global(QualityOfService::background).asyncAfter(std::chrono::hours(1), note);
    dispatch.makeSerialQueue("test")->asyncAfter(std::chrono::hours(1), note);
  }
  EXPECT_FALSE(ran);
  EXPECT_EQ(held.use_count(), 1);
}

TEST(AsioDispatch, goes_whatever_the_waiting_tasks_hold_of_it) {
  const auto held = std::make_shared<int>(0);
  {
    AsioDispatch dispatch;
    const std::shared_ptr<DispatchQueue> queue = dispatch.makeSerialQueue("test");
    const std::shared_ptr<Timer> timer = dispatch.scheduleRepeating(std::chrono::hours(1), [held] {});
    dispatch.main().async([held, queue] {});
    dispatch.main().asyncAfter(std::chrono::hours(1), [held, queue, timer] {});
    queue->asyncAfter(std::chrono::hours(1), [held, queue, timer] {});
    dispatch.global(QualityOfService::background).asyncAfter(std::chrono::hours(1), [held, timer] {});
  }
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace quillmar
