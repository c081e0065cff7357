#pragma once

#include <nlohmann/json.hpp>
#include <optional>

namespace quillmar::sandbox {

// Keeps keys in insertion order, so that answers are in the order of the records.
using Json = nlohmann::ordered_json;

template <class T>
[[nodiscard]] Json orNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json(nullptr);
}

}  // namespace quillmar::sandbox
