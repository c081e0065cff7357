#pragma once

#include <chrono>
#include <filesystem>
#include <optional>

#include "platform/linux/local_socket.h"
#include "programs/control/control_messages.h"

namespace quillmar::control {

struct Answer {
  ControlReply reply;
  FileDescriptor file;  // the lock, where it is handed over
};

// Asks the process that does the work of the installation, and waits. Nothing where there is none, or where
// it says nothing that makes sense within `patience`.
std::optional<Answer> ask(const std::filesystem::path& dataDirectory, const ControlRequest& request,
                          std::chrono::milliseconds patience);

}  // namespace quillmar::control
