#pragma once

#include <optional>
#include <string>

namespace quillmar {

// The agent at each login of this user: a unit of systemd where that looks after the session, an entry of the
// desktop's autostart elsewhere. Nothing is success; otherwise what went wrong, as a sentence.

// From now on, and at once; an agent that runs already goes on.
std::optional<std::string> enableAutostart();
// No more.
std::optional<std::string> disableAutostart();

}  // namespace quillmar
