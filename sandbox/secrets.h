#pragma once

#include <string>
#include <string_view>

namespace quillmar::sandbox {

// All of these use the system's cryptographic random source.

// A version 4 UUID in lower case.
[[nodiscard]] std::string newId();

// 256 bits, in characters that are valid in a header and in a path.
[[nodiscard]] std::string newToken();

// Capital letters and digits that are not easily confused.
[[nodiscard]] std::string newCode(std::size_t length);

// A hash of the token, stored in its place: enough to recognise it, useless to a thief.
[[nodiscard]] std::string fingerprint(std::string_view token);

[[nodiscard]] std::string hashPassword(const std::string& password);
[[nodiscard]] bool passwordFits(const std::string& password, const std::string& hash);

}  // namespace quillmar::sandbox
