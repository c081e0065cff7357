#pragma once

#include <string>

#include "foundation/record.h"

namespace quillmar {

// The service's error message; shown unchanged.
struct ErrorResponse {
  std::string error;
};

template <>
inline constexpr auto wire<ErrorResponse> = record(required("error", &ErrorResponse::error));

}  // namespace quillmar
