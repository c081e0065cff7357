#pragma once

#include "sandbox/input.h"
#include "sandbox/misbehaviour.h"

namespace quillmar::sandbox {

// A Misbehaviour as JSON. Reading changes only the fields in the object; null resets a field.
void readMisbehaviour(Input& input, const Json& object, Misbehaviour& misbehaviour);
[[nodiscard]] Json describe(const Misbehaviour& misbehaviour);

}  // namespace quillmar::sandbox
