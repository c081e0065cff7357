#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/instance_lock.h"
#include "programs/control/control_messages.h"

namespace quillmar::control {

// Held by the agent for as long as it runs, whether it has the work or waits for it.
inline constexpr std::string_view agentLock = "agent.lock";

// What came of an attempt to take an installation's lock.
struct LockAttempt {
  // There where this process may do the work.
  std::optional<InstanceLock> lock = {};
  // Otherwise who has it and can't be asked to stop; nothing where nobody answers.
  std::optional<Worker> holder = {};
};

// Takes the lock, from an agent that has it too. A window gives nothing up; with `show` it comes to the
// front. Somebody who has the lock and says nothing is only starting or just ending, or hangs: whichever it
// is, this hears of it, or ends after `timeout`.
LockAttempt attemptLock(const std::filesystem::path& dataDirectory,
                        const std::optional<ControlRequest>& show = {},
                        std::chrono::milliseconds timeout = std::chrono::seconds(10));

// Why nothing can be kept in an installation's directory, as a sentence; nothing where it can.
std::optional<std::string> problemWithFolder(const std::filesystem::path& dataDirectory);

// Whether an agent waits to do the work as soon as this process ends.
bool isAgentWaiting(const std::filesystem::path& dataDirectory);

}  // namespace quillmar::control
