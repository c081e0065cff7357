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

}  // namespace quillmar
