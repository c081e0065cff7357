#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace quillmar {

// Why the file of certificate authorities (PEM) that a person named can't be used, as a sentence. nullopt if
// it can, or if none was named.
std::optional<std::string> problemWithAuthorities(const std::filesystem::path& path);

// The exit status of every program that is given an unusable file. It does nothing else first.
inline constexpr int unusableAuthorities = 7;

}  // namespace quillmar
