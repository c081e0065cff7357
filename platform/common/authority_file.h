#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace quillmar {

// What is wrong with a file of certificate authorities (PEM) that a person named, as a sentence; nothing
// where they can be trusted from it, or where no file was named.
std::optional<std::string> problemWithAuthorities(const std::filesystem::path& path);

// What every program ends with then, before it begins anything.
inline constexpr int unusableAuthorities = 7;

}  // namespace quillmar
