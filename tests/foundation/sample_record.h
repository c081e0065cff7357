#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/record.h"

namespace quillmar {

struct Owner {
  std::string name;
};

template <>
inline constexpr auto wire<Owner> = record(required("name", &Owner::name));

// One field of each type and rule.
struct Pet {
  std::string name;
  std::int64_t legs = 0;
  bool isFurry = false;
  std::vector<std::string> toys;
  Owner owner;
  std::optional<std::string> nickName;
  std::optional<std::int64_t> age;
  std::optional<bool> isTame;
  std::optional<Owner> vet;
  std::vector<Owner> friends;
  std::int64_t order = 7;
};

template <>
inline constexpr auto wire<Pet> = record(required("name", &Pet::name), required("legs", &Pet::legs),
                                         required("is_furry", &Pet::isFurry), required("toys", &Pet::toys),
                                         required("owner", &Pet::owner),
                                         optional("nick_name", &Pet::nickName), optional("age", &Pet::age),
                                         optional("is_tame", &Pet::isTame), optional("vet", &Pet::vet),
                                         orEmpty("friends", &Pet::friends), orElse("order", &Pet::order, 4));

}  // namespace quillmar
