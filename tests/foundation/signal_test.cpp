#include "foundation/signal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SignalTest : public testing::Test {
 protected:
  Subscription listen(const std::string& name) {
    return signal->connect([this, name](int value) { heard.push_back(name + std::to_string(value)); });
  }

  std::optional<Signal<int>> signal{std::in_place};
  std::vector<std::string> heard;
};

using ASignal = SignalTest;

TEST_F(ASignal, without_listeners_does_nothing) {
  signal->emit(1);
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(ASignal, calls_its_listeners_in_the_order_in_which_they_connected) {
  const auto a = listen("a");
  const auto b = listen("b");
  const auto c = listen("c");
  signal->emit(1);
  EXPECT_THAT(heard, ElementsAre("a1", "b1", "c1"));
}

TEST_F(ASignal, forgets_a_listener_whose_subscription_was_destroyed) {
  { const auto a = listen("a"); }
  const auto b = listen("b");
  signal->emit(1);
  EXPECT_THAT(heard, ElementsAre("b1"));
}

TEST_F(ASignal, forgets_a_listener_that_cancelled) {
  auto a = listen("a");
  EXPECT_TRUE(a);
  a.cancel();
  EXPECT_FALSE(a);
  signal->emit(1);
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(ASignal, keeps_a_listener_whose_subscription_moved) {
  Subscription kept;
  {
    auto a = listen("a");
    kept = std::move(a);
  }
  signal->emit(1);
  EXPECT_THAT(heard, ElementsAre("a1"));
}

TEST_F(ASignal, does_not_call_a_listener_that_another_disconnected_during_the_call) {
  Subscription b;
  const auto a = signal->connect([&](int) { b.cancel(); });
  b = listen("b");
  signal->emit(1);
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(ASignal, lets_a_listener_disconnect_itself) {
  Subscription self;
  self = signal->connect([&](int value) {
    self.cancel();
    heard.push_back(std::to_string(value));
  });
  signal->emit(1);
  signal->emit(2);
  EXPECT_THAT(heard, ElementsAre("1"));
}

TEST_F(ASignal, calls_a_listener_that_connects_during_a_call_from_the_next_one_on) {
  Subscription late;
  const auto a = signal->connect([&](int) {
    if (!late) {
      late = listen("late");
    }
  });
  signal->emit(1);
  EXPECT_THAT(heard, IsEmpty());
  signal->emit(2);
  EXPECT_THAT(heard, ElementsAre("late2"));
}

TEST_F(ASignal, may_be_destroyed_by_a_listener) {
  const auto a = signal->connect([&](int) { signal.reset(); });
  const auto b = listen("b");
  signal->emit(1);
  EXPECT_FALSE(signal);
  EXPECT_THAT(heard, ElementsAre("b1"));
}

TEST_F(ASignal, may_be_destroyed_before_its_listeners) {
  const auto a = listen("a");
  signal.reset();
  EXPECT_TRUE(a);
}

TEST_F(ASignal, may_be_emitted_by_a_listener) {
  const auto a = signal->connect([&](int value) {
    heard.push_back(std::to_string(value));
    if (value > 0) {
      signal->emit(value - 1);
    }
  });
  signal->emit(2);
  EXPECT_THAT(heard, ElementsAre("2", "1", "0"));
}

}  // namespace
}  // namespace quillmar
