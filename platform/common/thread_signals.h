#pragma once

namespace quillmar {

// Signals are left to the main thread, and a write to a closed connection doesn't raise SIGPIPE.
void blockSignalsOfThisThread();

}  // namespace quillmar
