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

// Lines between two processes of one user, on sockets in the file system.
namespace quillmar {

// The longest line that is read, its end included.
inline constexpr std::size_t localLineLimit = 4096;

// A line, and the open file that came or goes with it, if any.
struct LocalMessage {
  std::string line;
  FileDescriptor file = {};
};

// Where the process that does the work of an installation can be spoken to, the best place first: the runtime
// directory of the session, under a name made from the data directory's, and the data directory itself, as a
// session's directory may be missing or go at any time.
std::vector<std::filesystem::path> localSocketPaths(const std::filesystem::path& dataDirectory);

// The name of a socket, however long its path is: it is reached through its open directory.
class LocalSocketAddress {
 public:
  // Nothing where the directory can't be opened.
  static std::optional<LocalSocketAddress> of(const std::filesystem::path& socketPath);

  const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&address_); }
  static constexpr socklen_t size() { return sizeof(sockaddr_un); }

 private:
  LocalSocketAddress(FileDescriptor directory, const sockaddr_un& address)
      : directory_(std::move(directory)), address_(address) {}

  FileDescriptor directory_;
  sockaddr_un address_;
};

// Whether the process at the other end is one of this user's.
bool isProcessOfThisUser(int socket);

// In one piece, or not at all.
bool sendMessage(int socket, const LocalMessage& message);
// Nothing when the other end goes, says too much, or nothing within `patience`.
std::optional<LocalMessage> receiveMessage(int socket, std::chrono::milliseconds patience);

}  // namespace quillmar
