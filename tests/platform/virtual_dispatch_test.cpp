#include "testing/virtual_dispatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace quillmar {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

class VirtualDispatchTest : public testing::Test {
 protected:
  Task note(std::string what) {
    return [this, what = std::move(what)] { notes.push_back(what); };
  }
  std::chrono::milliseconds elapsed() const { return dispatch.now() - VirtualDispatch::defaultStart; }

  VirtualDispatch dispatch;
  std::vector<std::string> notes;
};

TEST_F(VirtualDispatchTest, nothing_runs_before_it_is_settled) {
  dispatch.main().async(note("main"));
  EXPECT_TRUE(dispatch.hasReadyWork());
  EXPECT_THAT(notes, IsEmpty());
  EXPECT_TRUE(dispatch.settle());
  EXPECT_THAT(notes, ElementsAre("main"));
  EXPECT_FALSE(dispatch.hasReadyWork());
}

TEST_F(VirtualDispatchTest, settling_moves_no_time_and_leaves_what_is_due_later) {
  dispatch.main().asyncAfter(milliseconds(1), note("later"));
  dispatch.settle();
  EXPECT_THAT(notes, IsEmpty());
  EXPECT_EQ(elapsed(), milliseconds(0));
  EXPECT_EQ(dispatch.nextDue(), dispatch.now() + milliseconds(1));
}

TEST_F(VirtualDispatchTest, what_is_due_at_one_moment_runs_in_the_order_of_posting_whatever_its_queue) {
  const auto serial = dispatch.makeSerialQueue("test");
  dispatch.main().asyncAfter(seconds(1), note("second"));
  dispatch.main().async(note("main"));
  serial->async(note("serial"));
  dispatch.global(QualityOfService::background).async(note("global"));
  serial->asyncAfter(milliseconds(500), note("first"));
  dispatch.advance(seconds(1));
  EXPECT_THAT(notes, ElementsAre("main", "serial", "global", "first", "second"));
}

TEST_F(VirtualDispatchTest, each_task_sees_the_time_at_which_it_was_due) {
  std::vector<milliseconds> seen;
  for (const int delay : {700, 200}) {
    dispatch.main().asyncAfter(milliseconds(delay), [&] { seen.push_back(elapsed()); });
  }
  dispatch.advance(seconds(3));
  EXPECT_THAT(seen, ElementsAre(milliseconds(200), milliseconds(700)));
  EXPECT_EQ(elapsed(), seconds(3));
}

TEST_F(VirtualDispatchTest, what_a_task_posts_on_the_way_is_run_when_due_in_the_same_advance) {
  dispatch.main().asyncAfter(seconds(1), [&] { dispatch.main().asyncAfter(seconds(1), note("inner")); });
  dispatch.advance(seconds(2));
  EXPECT_THAT(notes, ElementsAre("inner"));
}

TEST_F(VirtualDispatchTest, background_tasks_are_not_on_the_main_thread_and_nor_are_other_threads) {
  bool inMain = false;
  bool inSerial = true;
  bool inGlobal = true;
  bool elsewhere = true;
  dispatch.main().async([&] { inMain = dispatch.isMainThread(); });
  dispatch.makeSerialQueue("test")->async([&] { inSerial = dispatch.isMainThread(); });
  dispatch.global(QualityOfService::userInitiated).async([&] { inGlobal = dispatch.isMainThread(); });
  dispatch.settle();
  std::thread([&] { elsewhere = dispatch.isMainThread(); }).join();
  EXPECT_TRUE(dispatch.isMainThread());
  EXPECT_TRUE(inMain);
  EXPECT_FALSE(inSerial);
  EXPECT_FALSE(inGlobal);
  EXPECT_FALSE(elsewhere);
}

TEST_F(VirtualDispatchTest, a_timer_keeps_to_its_schedule_for_hours) {
  std::vector<milliseconds> firings;
  const auto timer = dispatch.scheduleRepeating(seconds(60), [&] { firings.push_back(elapsed()); });
  dispatch.advance(hours(1));
  ASSERT_EQ(firings.size(), 60U);
  EXPECT_EQ(firings.front(), seconds(60));
  EXPECT_EQ(firings.back(), hours(1));
}

TEST_F(VirtualDispatchTest, firings_missed_in_a_suspended_process_merge_into_one_and_the_schedule_stays) {
  std::vector<milliseconds> firings;
  const auto timer = dispatch.scheduleRepeating(seconds(10), [&] { firings.push_back(elapsed()); });
  dispatch.jump(seconds(35));
  EXPECT_THAT(firings, IsEmpty());
  dispatch.settle();
  EXPECT_THAT(firings, ElementsAre(seconds(35)));
  dispatch.advance(seconds(5));
  EXPECT_THAT(firings, ElementsAre(seconds(35), seconds(40)));
}

TEST_F(VirtualDispatchTest, a_timer_destroyed_by_a_task_before_it_does_not_fire) {
  std::unique_ptr<Timer> timer;
  dispatch.main().asyncAfter(seconds(1), [&] { timer.reset(); });
  timer = dispatch.scheduleRepeating(seconds(1), note("timer"));
  dispatch.advance(seconds(5));
  EXPECT_THAT(notes, IsEmpty());
}

TEST_F(VirtualDispatchTest, posts_of_another_thread_wake_a_wait) {
  dispatch.setPatience(seconds(20));
  std::thread poster([&] { dispatch.main().async(note("posted")); });
  EXPECT_TRUE(dispatch.waitForWork());
  poster.join();
  dispatch.settle();
  EXPECT_THAT(notes, ElementsAre("posted"));
}

TEST_F(VirtualDispatchTest, a_wait_for_what_never_comes_ends_with_the_patience) {
  dispatch.setPatience(milliseconds(1));
  EXPECT_FALSE(dispatch.waitForWork());
  EXPECT_FALSE(dispatch.settleUntil([] { return false; }));
  const auto work = dispatch.beginExternalWork();
  EXPECT_FALSE(dispatch.settle());
  EXPECT_FALSE(dispatch.advance(seconds(1)));
  EXPECT_EQ(elapsed(), milliseconds(0));
}

TEST_F(VirtualDispatchTest, time_stands_still_while_external_work_is_under_way) {
  auto work = dispatch.beginExternalWork();
  dispatch.main().asyncAfter(seconds(1), note("due"));
  std::thread worker([&, work = std::move(work)]() mutable {
    dispatch.main().async([&] { notes.push_back("answer after " + std::to_string(elapsed().count())); });
    work.reset();
  });
  EXPECT_TRUE(dispatch.advance(seconds(1)));
  worker.join();
  EXPECT_THAT(notes, ElementsAre("answer after 0", "due"));
}

TEST_F(VirtualDispatchTest, a_closed_dispatch_drops_what_was_posted_and_what_is_posted_afterwards) {
  const auto held = std::make_shared<int>(1);
  dispatch.main().async([held, this] { notes.emplace_back("before"); });
  dispatch.close();
  dispatch.main().async(note("after"));
  dispatch.settle();
  EXPECT_THAT(notes, IsEmpty());
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace quillmar
