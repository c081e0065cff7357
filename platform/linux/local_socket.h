#pragma once

#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/common/file_descriptor.h"

// Sends lines between two processes of one user, over sockets in the file system.
namespace quillmar {

// The longest line that is read, including its newline.
inline constexpr std::size_t localLineLimit = 4096;

// A line, and the file descriptor sent with it, if any.
struct LocalMessage {
  std::string line;
  FileDescriptor file = {};
};

// The paths of the socket at which the working process of an installation listens, the preferred one first.
// The first one is in the session's runtime directory, with a name derived from the data directory. That
// directory may be missing or be removed at any time, so the second one is in the data directory itself.
std::vector<std::filesystem::path> localSocketPaths(const std::filesystem::path& dataDirectory);

// The address of a socket whose path may be longer than an address holds. It refers to the open directory.
class LocalSocketAddress {
 public:
  // nullopt if the directory can't be opened.
  static std::optional<LocalSocketAddress> of(const std::filesystem::path& socketPath);

  const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&address_); }
  static constexpr socklen_t size() { return sizeof(sockaddr_un); }

 private:
  LocalSocketAddress(FileDescriptor directory, const sockaddr_un& address)
      : directory_(std::move(directory)), address_(address) {}

  FileDescriptor directory_;
  sockaddr_un address_;
};

// Whether the process at the other end runs as this user.
bool isProcessOfThisUser(int socket);

// Sends the whole message, or returns false.
bool sendMessage(int socket, const LocalMessage& message);
// nullopt if the connection ends, if the line is too long, or if it is not complete within `timeout`.
std::optional<LocalMessage> receiveMessage(int socket, std::chrono::milliseconds timeout);

}  // namespace quillmar
