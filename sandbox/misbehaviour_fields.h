#pragma once

#include "sandbox/input.h"
#include "sandbox/misbehaviour.h"

namespace quillmar::sandbox {

// A Misbehaviour as JSON. Reading changes only what the object holds; null puts a field back to good
// behaviour.
void readMisbehaviour(Input& input, const Json& object, Misbehaviour& misbehaviour);
[[nodiscard]] Json describe(const Misbehaviour& misbehaviour);

}  // namespace quillmar::sandbox
