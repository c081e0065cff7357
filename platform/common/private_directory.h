#pragma once

#include <filesystem>

namespace quillmar {

// Whether the directory is there and not this user's own.
bool belongsToAnother(const std::filesystem::path& directory);

// Makes the directory, and whatever is missing above it, for its user only. One that others may enter is
// closed to them, unless it is there for everybody, as /tmp is. False when there is none of this user's
// afterwards; `errno` then says why.
bool createPrivateDirectory(const std::filesystem::path& directory);

}  // namespace quillmar
