#pragma once

#include <nlohmann/json.hpp>
#include <optional>

namespace quillmar::sandbox {

// Keys keep the order in which they were written, so that answers read like their records.
using Json = nlohmann::ordered_json;

template <class T>
[[nodiscard]] Json orNull(const std::optional<T>& value) {
  return value ? Json(*value) : Json(nullptr);
}

}  // namespace quillmar::sandbox
