#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/instance_lock.h"
#include "programs/control/control_messages.h"

namespace quillmar::control {

// The agent holds it while it runs, whether it does the work or waits for it.
inline constexpr std::string_view agentLock = "agent.lock";

// The result of an attempt to take an installation's lock.
struct LockAttempt {
  // Set if this process may do the work.
  std::optional<InstanceLock> lock = {};
  // Otherwise the process that holds the lock and can't yield; nullopt if none answers.
  std::optional<Worker> holder = {};
};

// Takes the lock, also from an agent that holds it. A window does not yield; `show` brings it to the front.
// If the holder does not answer, because it is starting, ending or hanging, this waits until that changes or
// `timeout` has passed.
LockAttempt attemptLock(const std::filesystem::path& dataDirectory,
                        const std::optional<ControlRequest>& show = {},
                        std::chrono::milliseconds timeout = std::chrono::seconds(10));

// Why the installation's directory can't be used, as a sentence; nullopt if it can.
std::optional<std::string> problemWithFolder(const std::filesystem::path& dataDirectory);

// Whether an agent waits to take over when this process ends.
bool isAgentWaiting(const std::filesystem::path& dataDirectory);

}  // namespace quillmar::control
