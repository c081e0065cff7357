#pragma once

#include <nlohmann/json.hpp>

namespace quillmar::sandbox {

// Keys keep the order in which they were written, so that answers read like their records.
using Json = nlohmann::ordered_json;

}  // namespace quillmar::sandbox
