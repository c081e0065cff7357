#pragma once

// What every Dispatch promises. An adapter's test writes a harness and instantiates the suite once:
//   INSTANTIATE_TEST_SUITE_P(Qt, DispatchContract, testing::Values(factory<DispatchHarness,
//   QtHarness>("Qt")));

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "platform/dispatch.h"
#include "platform/dispatch_group.h"
#include "tests/contracts/factory.h"

namespace quillmar {

// A dispatch and the means to run its main queue. Main thread only.
class DispatchHarness : public Harness {
 public:
  virtual Dispatch& dispatch() = 0;
  // Runs and waits for tasks of the main queue until `done` returns true after one of them. False after a
  // timeout.
  virtual bool runUntil(const std::function<bool()>& done) = 0;
  // Blocks the main thread for this long.
  virtual void stall(Duration duration) = 0;
};

class DispatchContract : public testing::TestWithParam<Factory<DispatchHarness>> {
 protected:
  static constexpr Duration period{20};

  Dispatch& dispatch() { return harness_->dispatch(); }
  DispatchQueue& main() { return dispatch().main(); }
  DispatchQueue& global() { return dispatch().global(QualityOfService::background); }
  bool runUntil(const std::function<bool()>& done) { return harness_->runUntil(done); }
  void stall(Duration duration) { harness_->stall(duration); }

  // Runs everything that is already in the main queue.
  void drain() {
    bool reached = false;
    main().async([&] { reached = true; });
    ASSERT_TRUE(runUntil([&] { return reached; }));
  }
  // Runs the main queue until `arrive` was called `total` times on it.
  bool runUntilArrived(int total) {
    return runUntil([&] { return arrived_ == total; });
  }
  void arrive() {
    main().async([this] { ++arrived_; });
  }

 private:
  std::unique_ptr<DispatchHarness> harness_ = GetParam()();
  int arrived_ = 0;
};

TEST_P(DispatchContract, a_task_never_runs_inside_the_call_that_posts_it) {
  bool ran = false;
  main().async([&] { ran = true; });
  EXPECT_FALSE(ran);
  drain();
  EXPECT_TRUE(ran);
}

TEST_P(DispatchContract, a_task_that_the_main_thread_posts_from_a_task_runs_after_that_task) {
  std::vector<int> order;
  main().async([&] {
    main().async([&] { order.push_back(2); });
    main().asyncAfter(Duration(0), [&] { order.push_back(3); });
    main().asyncAfter(Duration(-5), [&] { order.push_back(4); });
    order.push_back(1);
  });
  ASSERT_TRUE(runUntil([&] { return order.size() == 4; }));
  EXPECT_THAT(order, testing::ElementsAre(1, 2, 3, 4));
}

TEST_P(DispatchContract, the_main_queue_is_first_in_first_out) {
  std::vector<int> order;
  for (int i = 0; i < 500; ++i) {
    main().async([&order, i] { order.push_back(i); });
  }
  drain();
  EXPECT_EQ(order.size(), 500U);
  EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST_P(DispatchContract, the_main_queue_keeps_the_order_between_threads) {
  std::vector<int> order;
  main().async([&] {
    main().async([&] { order.push_back(1); });
    std::thread([&] { main().async([&] { order.push_back(2); }); }).join();
    main().async([&] { order.push_back(3); });
  });
  ASSERT_TRUE(runUntil([&] { return order.size() == 3; }));
  EXPECT_THAT(order, testing::ElementsAre(1, 2, 3));
}

TEST_P(DispatchContract, tasks_of_the_main_queue_run_on_the_main_thread_whoever_posts_them) {
  EXPECT_TRUE(dispatch().isMainThread());
  std::thread::id ranOn;
  bool inMain = false;
  std::thread([&] {
    EXPECT_FALSE(dispatch().isMainThread());
    main().async([&] {
      ranOn = std::this_thread::get_id();
      inMain = dispatch().isMainThread();
    });
  }).join();
  drain();
  EXPECT_EQ(ranOn, std::this_thread::get_id());
  EXPECT_TRUE(inMain);
}

TEST_P(DispatchContract, many_threads_may_post_to_the_main_queue_at_once) {
  constexpr int each = 250;
  int ran = 0;
  std::vector<std::thread> posters;
  for (int poster = 0; poster < 4; ++poster) {
    posters.emplace_back([&] {
      for (int i = 0; i < each; ++i) {
        main().async([&] { ++ran; });
      }
    });
  }
  const bool all = runUntil([&] { return ran == 4 * each; });
  for (std::thread& poster : posters) {
    poster.join();
  }
  EXPECT_TRUE(all);
}

TEST_P(DispatchContract, delayed_tasks_run_in_the_order_of_their_times_and_not_before_them) {
  const Date start = dispatch().now();
  std::vector<int> order;
  for (const int delay : {30, 10, 20}) {
    main().asyncAfter(Duration(delay), [this, start, &order, delay] {
      EXPECT_GE(dispatch().now(), start + Duration(delay));
      EXPECT_TRUE(dispatch().isMainThread());
      order.push_back(delay);
    });
  }
  ASSERT_TRUE(runUntil([&] { return order.size() == 3; }));
  EXPECT_THAT(order, testing::ElementsAre(10, 20, 30));
}

TEST_P(DispatchContract, global_queues_run_tasks_away_from_the_main_thread) {
  for (const auto quality : {QualityOfService::userInitiated, QualityOfService::background}) {
    dispatch().global(quality).async([this] {
      EXPECT_FALSE(dispatch().isMainThread());
      arrive();
    });
    dispatch().global(quality).asyncAfter(Duration(5), [this] {
      EXPECT_FALSE(dispatch().isMainThread());
      arrive();
    });
  }
  EXPECT_TRUE(runUntilArrived(4));
}

TEST_P(DispatchContract, a_serial_queue_runs_its_tasks_one_after_another_in_order) {
  const auto queue = dispatch().makeSerialQueue("contract");
  std::atomic<int> inside = 0;
  std::vector<int> order;
  for (int i = 0; i < 500; ++i) {
    queue->async([&, i] {
      EXPECT_EQ(++inside, 1);
      EXPECT_FALSE(dispatch().isMainThread());
      order.push_back(i);
      --inside;
    });
  }
  queue->async([this] { arrive(); });
  ASSERT_TRUE(runUntilArrived(1));
  EXPECT_EQ(order.size(), 500U);
  EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST_P(DispatchContract, a_serial_queue_runs_its_tasks_even_if_it_was_released) {
  auto queue = dispatch().makeSerialQueue("contract");
  queue->async([this] { arrive(); });
  queue->asyncAfter(Duration(5), [this] { arrive(); });
  queue.reset();
  EXPECT_TRUE(runUntilArrived(2));
}

TEST_P(DispatchContract, what_a_task_holds_is_released_once_it_has_run) {
  const auto held = std::make_shared<int>(0);
  main().async([held] {});
  drain();
  EXPECT_EQ(held.use_count(), 1);
}

TEST_P(DispatchContract, a_timer_first_fires_after_one_full_period_and_keeps_to_its_schedule) {
  const Date start = dispatch().now();
  int firings = 0;
  const auto timer = dispatch().scheduleRepeating(period, [&] {
    ++firings;
    EXPECT_TRUE(dispatch().isMainThread());
    EXPECT_GE(dispatch().now(), start + firings * period);
  });
  EXPECT_EQ(firings, 0);
  EXPECT_TRUE(runUntil([&] { return firings == 4; }));
}

TEST_P(DispatchContract, missed_firings_merge_into_one_and_the_next_is_on_schedule) {
  const Date start = dispatch().now();
  std::vector<Date> firings;
  const auto timer = dispatch().scheduleRepeating(period, [&] { firings.push_back(dispatch().now()); });
  stall(3 * period + period / 2);
  EXPECT_TRUE(firings.empty());
  ASSERT_TRUE(runUntil([&] { return firings.size() == 2; }));
  const auto periodsUntilFirst = (firings[0] - start) / period;
  EXPECT_GE(periodsUntilFirst, 3);
  EXPECT_GE(firings[1], start + (periodsUntilFirst + 1) * period);
}

TEST_P(DispatchContract, a_destroyed_timer_never_fires_even_if_it_was_due) {
  bool fired = false;
  auto timer = dispatch().scheduleRepeating(period, [&] { fired = true; });
  stall(2 * period);
  timer.reset();
  bool later = false;
  main().asyncAfter(2 * period, [&] { later = true; });
  ASSERT_TRUE(runUntil([&] { return later; }));
  EXPECT_FALSE(fired);
}

TEST_P(DispatchContract, a_timer_may_be_destroyed_by_its_own_task) {
  int firings = 0;
  std::unique_ptr<Timer> timer;
  const auto held = std::make_shared<int>(7);
  timer = dispatch().scheduleRepeating(period, [&, held] {
    timer.reset();
    firings += *held;
  });
  bool later = false;
  main().asyncAfter(4 * period, [&] { later = true; });
  ASSERT_TRUE(runUntil([&] { return later; }));
  EXPECT_EQ(firings, 7);
  EXPECT_EQ(held.use_count(), 1);
}

TEST_P(DispatchContract, two_timers_run_independently) {
  int slow = 0;
  int quick = 0;
  const auto first = dispatch().scheduleRepeating(2 * period, [&] { ++slow; });
  const auto second = dispatch().scheduleRepeating(period, [&] { ++quick; });
  EXPECT_TRUE(runUntil([&] { return slow >= 2 && quick >= 2; }));
}

TEST_P(DispatchContract, a_group_without_work_notifies_at_once_but_not_inside_the_call) {
  const DispatchGroup group;
  bool notified = false;
  group.notify(main(), [&] { notified = true; });
  EXPECT_FALSE(notified);
  drain();
  EXPECT_TRUE(notified);
}

TEST_P(DispatchContract, a_group_notifies_once_when_the_last_of_its_work_has_left) {
  const DispatchGroup group;
  constexpr int workers = 8;
  std::atomic<int> finished = 0;
  int notified = 0;
  int finishedAtNotification = 0;
  for (int i = 0; i < workers; ++i) {
    group.enter();
    global().async([&, group] {
      ++finished;
      group.leave();
    });
  }
  group.notify(main(), [&] {
    ++notified;
    finishedAtNotification = finished;
  });
  ASSERT_TRUE(runUntil([&] { return notified > 0; }));
  drain();
  EXPECT_EQ(notified, 1);
  EXPECT_EQ(finishedAtNotification, workers);
}

TEST_P(DispatchContract, a_surplus_leave_is_ignored) {
  const DispatchGroup group;
  group.leave();
  group.enter();
  bool notified = false;
  group.notify(main(), [&] { notified = true; });
  drain();
  EXPECT_FALSE(notified);
  group.leave();
  drain();
  EXPECT_TRUE(notified);
}

}  // namespace quillmar
