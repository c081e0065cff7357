#include "foundation/raw_enum.h"

#include <gtest/gtest.h>

#include <optional>

namespace quillmar {

enum class Light { red, amber, green };
enum class Plain { one };

template <>
inline constexpr std::array rawNames<Light> =
    rawCases<Light>({{Light::red, "red"}, {Light::amber, "AMBER"}, {Light::green, "go"}});

namespace {

static_assert(RawEnum<Light>);
static_assert(!RawEnum<Plain>);
static_assert(rawNames<Light>.front().first == Light::red);

TEST(RawEnum, gives_the_raw_value_of_each_case) {
  EXPECT_EQ(rawValue(Light::red), "red");
  EXPECT_EQ(rawValue(Light::amber), "AMBER");
  EXPECT_EQ(rawValue(Light::green), "go");
}

TEST(RawEnum, is_read_from_its_exact_raw_value_only) {
  EXPECT_EQ(fromRawValue<Light>("AMBER"), Light::amber);
  for (const auto* text : {"amber", "", " red", "red ", "green", "RED"}) {
    EXPECT_EQ(fromRawValue<Light>(text), std::nullopt) << text;
  }
}

TEST(RawEnum, of_no_known_case_has_no_raw_value) { EXPECT_EQ(rawValue(static_cast<Light>(9)), ""); }

}  // namespace
}  // namespace quillmar
