#include "programs/control/control_client.h"

#include <sys/socket.h>

#include <utility>

#include "foundation/json.h"

namespace quillmar::control {
namespace {

FileDescriptor connectTo(const std::filesystem::path& path) {
  const auto address = LocalSocketAddress::of(path);
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const bool isConnected = address && socket &&
                           ::connect(socket.get(), address->address(), LocalSocketAddress::size()) == 0 &&
                           isProcessOfThisUser(socket.get());
  return isConnected ? std::move(socket) : FileDescriptor();
}

}  // namespace

std::optional<Answer> ask(const std::filesystem::path& dataDirectory, const ControlRequest& request,
                          std::chrono::milliseconds timeout) {
  const auto line = encodeJson(request);
  for (const auto& path : localSocketPaths(dataDirectory)) {
    const FileDescriptor socket = connectTo(path);
    if (!socket || !line.ok() || !sendMessage(socket.get(), {.line = line.value()})) {
      continue;
    }
    auto message = receiveMessage(socket.get(), timeout);
    const auto reply =
        message ? decodeJson<ControlReply>(message->line) : Result<ControlReply>(Error(CodingError{}));
    return reply.ok() ? std::optional(Answer{reply.value(), std::move(message->file)}) : std::nullopt;
  }
  return std::nullopt;
}

}  // namespace quillmar::control
