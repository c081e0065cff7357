#pragma once

#include <chrono>
#include <filesystem>
#include <optional>

#include "platform/linux/local_socket.h"
#include "programs/control/control_messages.h"

namespace quillmar::control {

struct Answer {
  ControlReply reply;
  FileDescriptor file;  // the lock, if it is handed over
};

// Asks the process that does the installation's work, and waits for the answer. nullopt if there is no such
// process, or no valid answer within `timeout`.
std::optional<Answer> ask(const std::filesystem::path& dataDirectory, const ControlRequest& request,
                          std::chrono::milliseconds timeout);

}  // namespace quillmar::control
