#pragma once

#include <string>
#include <string_view>

namespace quillmar::sandbox {

// All of these come from the system's source for cryptography.

// A version 4 UUID in lower case.
[[nodiscard]] std::string newId();

// 256 bits, in letters that may stand in a header or a path.
[[nodiscard]] std::string newToken();

// Capitals and digits that nobody takes for one another.
[[nodiscard]] std::string newCode(std::size_t length);

// What is kept of a token in its place: enough to know it again, of no use to a thief.
[[nodiscard]] std::string fingerprint(std::string_view token);

[[nodiscard]] std::string hashPassword(const std::string& password);
[[nodiscard]] bool passwordFits(const std::string& password, const std::string& hash);

}  // namespace quillmar::sandbox
