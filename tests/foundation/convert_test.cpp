#include "foundation/convert.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/foundation/sample_record.h"

namespace quillmar {

enum class Size { small, large };

template <>
inline constexpr std::array rawNames<Size> = rawCases<Size>({{Size::small, "S"}, {Size::large, "L"}});

namespace {

TEST(Conversion, converts_each_type) {
  EXPECT_EQ(toValue(5), Value(5));
  EXPECT_EQ(toValue(2.5), Value(2.5));
  EXPECT_EQ(toValue(true), Value(true));
  EXPECT_EQ(toValue(std::string("x")), Value("x"));
  EXPECT_EQ(toValue(Size::large), Value("L"));
  EXPECT_EQ(toValue(Date(Duration(1500))), Value(1500));
  EXPECT_EQ(toValue(std::optional<int>()), Value());
  EXPECT_EQ(toValue(std::optional(3)), Value(3));
  EXPECT_EQ(toValue(std::vector{Size::small, Size::large}), (Value::List{"S", "L"}));
  EXPECT_EQ(toValue(Value("x")), Value("x"));
}

TEST(Conversion, converts_a_record_to_a_map_without_nil_fields) {
  Pet pet;
  pet.name = "Rex";
  pet.age = 3;
  pet.friends = {{"Bob"}};
  EXPECT_EQ(toValue(pet), (Value::Map{{"name", "Rex"},
                                      {"legs", 0},
                                      {"is_furry", false},
                                      {"toys", Value::List()},
                                      {"owner", Value::Map{{"name", ""}}},
                                      {"age", 3},
                                      {"friends", Value::List{Value::Map{{"name", "Bob"}}}},
                                      {"order", 7}}));
}

TEST(Conversion, takes_a_value_of_the_fields_own_type) {
  EXPECT_EQ(fromValue<bool>(true), true);
  EXPECT_EQ(fromValue<std::string>("x"), "x");
  EXPECT_EQ(fromValue<std::int64_t>(5), 5);
  EXPECT_EQ(fromValue<Size>("L"), Size::large);
  EXPECT_EQ(fromValue<double>(2.5), 2.5);
  EXPECT_EQ(fromValue<double>(2), 2.0);
  EXPECT_EQ(fromValue<Value>("x"), Value("x"));
  EXPECT_EQ(fromValue<std::optional<std::string>>("x"), std::optional<std::string>("x"));
}

TEST(Conversion, takes_nil_for_an_optional_field_only) {
  const auto nil = fromValue<std::optional<std::string>>(Value());
  ASSERT_TRUE(nil);
  EXPECT_EQ(*nil, std::nullopt);
  EXPECT_EQ(fromValue<std::string>(Value()), std::nullopt);
  EXPECT_EQ(fromValue<bool>(Value()), std::nullopt);
}

TEST(Conversion, refuses_a_value_of_another_type) {
  EXPECT_EQ(fromValue<bool>(1), std::nullopt);
  EXPECT_EQ(fromValue<bool>("true"), std::nullopt);
  EXPECT_EQ(fromValue<std::string>(5), std::nullopt);
  EXPECT_EQ(fromValue<std::int64_t>("5"), std::nullopt);
  EXPECT_EQ(fromValue<std::int64_t>(5.0), std::nullopt);
  EXPECT_EQ(fromValue<Size>("XL"), std::nullopt);
  EXPECT_EQ(fromValue<Size>(0), std::nullopt);
  EXPECT_EQ(fromValue<double>("2.5"), std::nullopt);
  EXPECT_EQ(fromValue<std::optional<bool>>("x"), std::nullopt);
}

TEST(Conversion, refuses_a_number_that_the_field_cannot_hold) {
  EXPECT_EQ(fromValue<std::uint8_t>(255), 255);
  EXPECT_EQ(fromValue<std::uint8_t>(256), std::nullopt);
  EXPECT_EQ(fromValue<std::uint8_t>(-1), std::nullopt);
}

}  // namespace
}  // namespace quillmar
