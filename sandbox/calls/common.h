#pragma once

#include <optional>
#include <string>

#include "sandbox/call.h"
#include "sandbox/input.h"
#include "sandbox/text.h"

// What several groups of calls need.
namespace quillmar::sandbox::calls {

// The caller's family, made now for one who belongs to none.
[[nodiscard]] std::string ownFamily(Call& call);

[[nodiscard]] Json devices(Call& call, std::string_view condition, std::string_view argument);

// Records of the caller's own family; anything else isn't found.
[[nodiscard]] std::optional<Json> findDevice(Call& call, std::string_view id);
[[nodiscard]] bool childExists(Call& call, std::string_view id);

[[nodiscard]] std::string dohEndpoint(Call& call, std::string_view deviceId);

// The rules for whoever opens an account.
void requireAccountFields(Input& input, std::string_view email, std::string_view password,
                          std::string_view name);
[[nodiscard]] bool emailIsTaken(Call& call, std::string_view email);

// A new code that this query does not find.
[[nodiscard]] std::string unusedCode(Call& call, std::size_t length, std::string_view taken);

// A new token for this parent.
[[nodiscard]] std::string issueToken(Call& call, std::string_view parentId);

// What this member brought into the caller's family becomes the primary parent's.
void handOver(Call& call, std::string_view parentId);

}  // namespace quillmar::sandbox::calls
