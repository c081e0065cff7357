#pragma once

namespace quillmar {

// Leaves the process's signals to its main thread, and keeps a write to a closed connection from ending it.
void blockSignalsOfThisThread();

}  // namespace quillmar
