#pragma once

#include <optional>
#include <string>

namespace quillmar {

// Starts the agent at each login of this user: by a systemd unit if systemd runs the session, else by a
// desktop autostart entry. Both return nullopt on success, else the error as a sentence.

// Starts it now too; a running agent is left alone.
std::optional<std::string> enableAutostart();
std::optional<std::string> disableAutostart();

}  // namespace quillmar
