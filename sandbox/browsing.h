#pragma once

#include <random>
#include <string_view>

namespace quillmar::sandbox {

using Dice = std::mt19937_64;

struct Lookup {
  std::string_view domain;
  std::string_view type;
};

// A site that a child might open on a device of this type, and the record type of the query.
[[nodiscard]] Lookup anyLookup(std::string_view deviceType, Dice& dice);

}  // namespace quillmar::sandbox
