#pragma once

#include <optional>
#include <string>

#include "sandbox/call.h"
#include "sandbox/input.h"
#include "sandbox/text.h"

// Helpers of several groups of calls.
namespace quillmar::sandbox::calls {

// The caller's family, created for a caller without one.
[[nodiscard]] std::string ownFamily(Call& call);

[[nodiscard]] Json devices(Call& call, std::string_view condition, std::string_view argument);

// Records of the caller's family only; others are not found.
[[nodiscard]] std::optional<Json> findDevice(Call& call, std::string_view id);
[[nodiscard]] bool childExists(Call& call, std::string_view id);

[[nodiscard]] std::string dohEndpoint(Call& call, std::string_view deviceId);

// Validates a new account.
void requireAccountFields(Input& input, std::string_view email, std::string_view password,
                          std::string_view name);
[[nodiscard]] bool emailIsTaken(Call& call, std::string_view email);

// A random code that the query `taken` doesn't find.
[[nodiscard]] std::string unusedCode(Call& call, std::size_t length, std::string_view taken);

[[nodiscard]] std::string issueToken(Call& call, std::string_view parentId);

// Transfers what this member added to the caller's family to the primary parent.
void handOver(Call& call, std::string_view parentId);

}  // namespace quillmar::sandbox::calls
