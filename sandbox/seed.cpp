#include "sandbox/seed.h"

namespace quillmar::sandbox {

void plant(Seed, Database&, Time) {}

}  // namespace quillmar::sandbox
