#pragma once

namespace quillmar {

// Files that this process makes are its user's only, whatever its parent's umask is.
void keepNewFilesPrivate();

// A token, and for a moment a password, are in memory: a crash must not write it to the disk.
void forbidCoreDumps();

// No other process of this user may attach to this one or read its memory. What looks at its callers through
// /proc, as portals do, sees nothing of it any more.
void forbidInspection();

}  // namespace quillmar
