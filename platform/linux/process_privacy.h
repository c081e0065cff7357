#pragma once

namespace quillmar {

// New files are readable by the user only, whatever umask was inherited.
void keepNewFilesPrivate();

// Memory holds a token, and for a moment a password: a crash must not write them to the disk.
void forbidCoreDumps();

// No other process of this user may attach to this one or read its memory. Services that inspect callers
// through /proc, as portals do, can't see this process any more.
void forbidInspection();

}  // namespace quillmar
