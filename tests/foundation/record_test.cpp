#include "foundation/record.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/foundation/sample_record.h"

namespace quillmar {

namespace zoo {
struct Lion {
  std::string name;
};
}  // namespace zoo

template <>
inline constexpr auto wire<zoo::Lion> = record(required("name", &zoo::Lion::name));

namespace {

struct NoRecord {};

static_assert(Record<Pet>);
static_assert(!Record<NoRecord>);

TEST(ARecord, equals_one_whose_every_field_equals) {
  Pet pet;
  EXPECT_EQ(pet, Pet());
  pet.toys = {"ball"};
  EXPECT_FALSE(pet == Pet());
  pet = {};
  pet.nickName = "";
  EXPECT_FALSE(pet == Pet());
  pet = {};
  pet.owner.name = "Ann";
  EXPECT_FALSE(pet == Pet());
}

TEST(ARecord, visits_its_fields_in_the_order_of_the_table) {
  std::vector<std::string_view> keys;
  forEachField<Pet>([&](const auto& field) { keys.push_back(field.key); });
  EXPECT_THAT(keys, testing::ElementsAre("name", "legs", "is_furry", "toys", "owner", "nick_name", "age",
                                         "is_tame", "vet", "friends", "order"));
}

TEST(ARecord, knows_its_bare_name) {
  EXPECT_EQ(recordName<Pet>(), "Pet");
  EXPECT_EQ(recordName<zoo::Lion>(), "Lion");
}

}  // namespace
}  // namespace quillmar
