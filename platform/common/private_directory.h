#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace quillmar {

// Whether the directory exists and belongs to another user.
bool belongsToAnother(const std::filesystem::path& directory);

// Creates the directory and its missing parents for this user only. Removes others' access from an existing
// one, except from a shared one like /tmp. Returns false, with `errno` set, if there is then no such
// directory of this user's.
bool createPrivateDirectory(const std::filesystem::path& directory);

// Why nothing can be written at this place, which need not exist; nullopt if it can.
std::optional<std::string> stateOfDisk(std::filesystem::path place);

}  // namespace quillmar
