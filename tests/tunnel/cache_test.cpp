#include "tunnel/resolver/cache.h"

#include <gtest/gtest.h>

#include "tests/tunnel/support/messages.h"

namespace quillmar::tunnel {
namespace {

using namespace std::chrono_literals;
using namespace test;

constexpr Time start{};

Answer answer(std::size_t size = 4) {
  const auto asked = std::get<Query>(parseQuery(queryText({})));
  return std::get<Answer>(
      Answer::parse(answerText({.answers = {{.data = std::string(size, 'x')}}}), asked.question, 0s));
}

TEST(TunnelCache, returns_an_entry_until_it_expires) {
  Cache cache;
  cache.put(start, "key", answer(), 30s);
  ASSERT_NE(cache.find(start + 29s, "key"), nullptr);
  EXPECT_EQ(cache.find(start + 29s, "key")->came, start);
  EXPECT_EQ(cache.find(start, "other"), nullptr);
  EXPECT_EQ(cache.find(start + 30s, "key"), nullptr);
  EXPECT_EQ(cache.answers(), 0U);
  EXPECT_EQ(cache.bytes(), 0U);
}

TEST(TunnelCache, does_not_keep_an_entry_without_a_lifetime) {
  Cache cache;
  cache.put(start, "key", answer(), 0s);
  EXPECT_EQ(cache.answers(), 0U);
}

TEST(TunnelCache, is_empty_after_clear) {
  Cache cache;
  cache.put(start, "key", answer(), 30s);
  cache.clear();
  EXPECT_EQ(cache.find(start, "key"), nullptr);
  EXPECT_EQ(cache.answers(), 0U);
  EXPECT_EQ(cache.bytes(), 0U);
}

TEST(TunnelCache, keeps_the_newer_of_two_answers) {
  Cache cache;
  cache.put(start, "key", answer(), 30s);
  const auto bytes = cache.bytes();
  cache.put(start + 1s, "key", Failure{Cause::late}, 1s);
  EXPECT_EQ(cache.answers(), 1U);
  EXPECT_LT(cache.bytes(), bytes);
  EXPECT_TRUE(std::holds_alternative<Failure>(cache.find(start + 1s, "key")->outcome));
}

TEST(TunnelCache, drops_the_least_recently_used_entry_when_it_is_full) {
  Cache cache;
  for (std::size_t number = 0; number < Cache::mostAnswers; ++number) {
    cache.put(start, std::to_string(number), Failure{Cause::late}, 60s);
  }
  ASSERT_EQ(cache.answers(), Cache::mostAnswers);
  ASSERT_NE(cache.find(start, "0"), nullptr);
  cache.put(start, "one more", Failure{Cause::late}, 60s);
  EXPECT_EQ(cache.answers(), Cache::mostAnswers);
  EXPECT_NE(cache.find(start, "0"), nullptr);
  EXPECT_EQ(cache.find(start, "1"), nullptr);
}

TEST(TunnelCache, is_limited_in_bytes) {
  Cache cache;
  for (int number = 0; number < 100; ++number) {
    cache.put(start, std::to_string(number), answer(60'000), 60s);
    EXPECT_LE(cache.bytes(), Cache::mostBytes);
  }
  EXPECT_GT(cache.answers(), 30U);
  EXPECT_LT(cache.answers(), 35U);
  EXPECT_EQ(cache.find(start, "0"), nullptr);
  EXPECT_NE(cache.find(start, "99"), nullptr);
}

}  // namespace
}  // namespace quillmar::tunnel
