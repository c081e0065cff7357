#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>

namespace quillmar {

// A world that is expensive to create, so all tests of a program share it. If it has an obstacle, the tests
// are skipped.
template <class World>
class SharedWorld final : public testing::Environment {
 public:
  using Make = std::function<std::unique_ptr<World>()>;

  // Call it during static initialisation.
  static SharedWorld& forAllTests(Make make = [] { return std::make_unique<World>(); }) {
    return *static_cast<SharedWorld*>(testing::AddGlobalTestEnvironment(new SharedWorld(std::move(make))));
  }

  void SetUp() override {
    if (const auto obstacle = World::obstacle(); !obstacle.empty()) {
      GTEST_SKIP() << obstacle;
    }
    world_ = make_();
    if constexpr (requires { world_->running(); }) {
      ASSERT_TRUE(world_->running());
    }
  }
  void TearDown() override { world_.reset(); }
  World& operator()() const { return *world_; }

 private:
  explicit SharedWorld(Make make) : make_(std::move(make)) {}

  const Make make_;
  std::unique_ptr<World> world_;
};

}  // namespace quillmar
