#pragma once

#include <filesystem>
#include <optional>

namespace quillmar {

// The directory of an installation's files: `quillmar` in $XDG_DATA_HOME if that is an absolute path, else in
// ~/.local/share. Does not create it.
std::filesystem::path dataDirectory();

// The directory of what can be lost without harm: `quillmar` in $XDG_STATE_HOME, else in ~/.local/state.
std::filesystem::path stateDirectory();

// $XDG_CONFIG_HOME if that is an absolute path, else ~/.config.
std::filesystem::path configDirectory();

// The directory of its sockets: `quillmar` in $XDG_RUNTIME_DIR. nullopt unless that is an absolute path to a
// directory of this user's that nobody else may enter.
std::optional<std::filesystem::path> runtimeDirectory();

}  // namespace quillmar
