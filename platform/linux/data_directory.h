#pragma once

#include <filesystem>
#include <optional>

namespace quillmar {

// Where an installation keeps its files: `quillmar` under $XDG_DATA_HOME when that is an absolute path, else
// under ~/.local/share. Only named here, not made.
std::filesystem::path dataDirectory();

// Where programs keep what their user sets: $XDG_CONFIG_HOME when that is an absolute path, else ~/.config.
std::filesystem::path configDirectory();

// Where its sockets are: `quillmar` under $XDG_RUNTIME_DIR, when that is an absolute path to a directory that
// belongs to this user and that nobody else may enter. Nothing otherwise.
std::optional<std::filesystem::path> runtimeDirectory();

// Whether the directory is there and not this user's own.
bool belongsToAnother(const std::filesystem::path& directory);

// Makes the directory, and whatever is missing above it, for its user only. One that others may enter is
// closed to them, unless it is there for everybody, as /tmp is. False when there is none of this user's
// afterwards; `errno` then says why.
bool createPrivateDirectory(const std::filesystem::path& directory);

}  // namespace quillmar
