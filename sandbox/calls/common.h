#pragma once

#include <optional>
#include <string>

#include "sandbox/call.h"

// What several groups of calls need.
namespace quillmar::sandbox::calls {

// The caller's family, made now for one who belongs to none.
[[nodiscard]] std::string ownFamily(Call& call);

[[nodiscard]] Json devices(Call& call, std::string_view condition, std::string_view argument);

// Records of the caller's own family; anything else isn't found.
[[nodiscard]] std::optional<Json> findDevice(Call& call, std::string_view id);
[[nodiscard]] bool childExists(Call& call, std::string_view id);

[[nodiscard]] std::string dohEndpoint(Call& call, std::string_view deviceId);

// True for a text that holds anything but blanks.
[[nodiscard]] bool isFilled(std::string_view text);

}  // namespace quillmar::sandbox::calls
