#include "foundation/error.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>

#include "foundation/result.h"

namespace quillmar {
namespace {

struct Leak {
  int drops = 0;
  std::string localizedDescription() const { return std::to_string(drops) + " drops"; }
  friend bool operator==(const Leak&, const Leak&) = default;
};

struct Fire {
  std::string localizedDescription() const { return "It burns."; }
  friend bool operator==(const Fire&, const Fire&) = default;
};

TEST(Error, has_the_description_of_its_kind) {
  EXPECT_EQ(Error(Leak{3}).localizedDescription(), "3 drops");
  EXPECT_EQ(Error(Fire{}).localizedDescription(), "It burns.");
}

TEST(Error, casts_to_its_own_kind_only) {
  const Error error(Leak{3});
  EXPECT_EQ(error.as<Fire>(), nullptr);
  ASSERT_NE(error.as<Leak>(), nullptr);
  EXPECT_EQ(error.as<Leak>()->drops, 3);
}

TEST(Error, equals_an_error_of_the_same_kind_and_value_only) {
  EXPECT_EQ(Error(Leak{3}), Error(Leak{3}));
  EXPECT_FALSE(Error(Leak{3}) == Error(Leak{4}));
  EXPECT_FALSE(Error(Leak{3}) == Error(Fire{}));
  EXPECT_EQ(Error(Leak{3}), Leak{3});
  EXPECT_FALSE(Error(Leak{3}) == Leak{4});
  EXPECT_FALSE(Error(Leak{3}) == Fire{});
}

TEST(Error, keeps_its_value_when_it_is_copied) {
  Error error(Leak{3});
  const Error copy = error;
  error = Error(Fire{});
  EXPECT_EQ(copy, Leak{3});
  EXPECT_EQ(error, Fire{});
}

Result<int> halved(int number) {
  if (number % 2 != 0) {
    return Error(Leak{number});
  }
  return number / 2;
}

TEST(Result, holds_a_value_or_an_error) {
  const auto good = halved(4);
  EXPECT_TRUE(good);
  EXPECT_TRUE(good.ok());
  EXPECT_EQ(good.value(), 2);

  const auto bad = halved(3);
  EXPECT_FALSE(bad);
  EXPECT_FALSE(bad.ok());
  EXPECT_EQ(bad.error(), Leak{3});
}

TEST(Result, moves_out_a_value_that_cannot_be_copied) {
  Result<std::unique_ptr<int>> result(std::make_unique<int>(5));
  const auto taken = std::move(result).value();
  EXPECT_EQ(*taken, 5);
}

TEST(Result, of_void_is_a_success_or_an_error) {
  EXPECT_TRUE(success());
  const Result<void> failed = Error(Fire{});
  EXPECT_FALSE(failed.ok());
  EXPECT_EQ(failed.error(), Fire{});
}

}  // namespace
}  // namespace quillmar
