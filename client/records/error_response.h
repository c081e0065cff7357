#pragma once

#include <string>

#include "foundation/record.h"

namespace quillmar {

// The service's words for what went wrong; shown to the person as they stand.
struct ErrorResponse {
  std::string error;
};

template <>
inline constexpr auto wire<ErrorResponse> = record(required("error", &ErrorResponse::error));

}  // namespace quillmar
