#include "client/arrivals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <thread>
#include <vector>

namespace quillmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pointee;

TEST(Arrivals, are_taken_once_in_the_order_of_arrival) {
  Arrivals<int> arrivals;
  for (const int value : {3, 1, 2}) {
    arrivals.add(value);
  }
  EXPECT_THAT(arrivals.take(), ElementsAre(3, 1, 2));
  EXPECT_THAT(arrivals.take(), IsEmpty());
}

TEST(Arrivals, are_moved_in_and_out) {
  Arrivals<std::unique_ptr<int>> arrivals;
  arrivals.add(std::make_unique<int>(7));
  EXPECT_THAT(arrivals.take(), ElementsAre(Pointee(7)));
}

TEST(Arrivals, of_several_threads_are_all_kept) {
  constexpr int threads = 16;
  constexpr int each = 100;
  Arrivals<int> arrivals;
  {
    std::vector<std::jthread> adding;
    for (int thread = 0; thread < threads; ++thread) {
      adding.emplace_back([&arrivals, thread] {
        for (int i = 0; i < each; ++i) {
          arrivals.add(thread * each + i);
        }
      });
    }
  }
  auto taken = arrivals.take();
  std::ranges::sort(taken);
  std::vector<int> expected(threads * each);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(taken, expected);
}

}  // namespace
}  // namespace quillmar
