#include "platform/linux/local_socket.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <system_error>

#include "platform/linux/data_directory.h"
#include "platform/linux/poll_until.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// A name from the directory's FNV-1a hash. It only has to differ between the installations of one user.
std::string nameFor(const fs::path& directory) {
  constexpr std::uint64_t prime = 0x100000001b3;
  constexpr std::string_view digits = "0123456789abcdef";
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const char c : directory.string()) {
    hash = (hash ^ static_cast<unsigned char>(c)) * prime;
  }
  std::string name;
  for (int shift = 60; shift >= 0; shift -= 4) {
    name += digits[(hash >> static_cast<unsigned>(shift)) & 0xFU];
  }
  return name + ".socket";
}

// A control message with one file descriptor.
union FileNote {
  cmsghdr header;
  std::array<char, CMSG_SPACE(sizeof(int))> bytes;
};

FileDescriptor fileIn(msghdr& received) {
  FileDescriptor file;
  for (cmsghdr* note = CMSG_FIRSTHDR(&received); note != nullptr; note = CMSG_NXTHDR(&received, note)) {
    if (note->cmsg_level == SOL_SOCKET && note->cmsg_type == SCM_RIGHTS &&
        note->cmsg_len == CMSG_LEN(sizeof(int))) {
      int number = -1;
      std::memcpy(&number, CMSG_DATA(note), sizeof number);
      file = FileDescriptor(number);
    }
  }
  return file;
}

bool awaitInput(int socket, Clock::time_point deadline) {
  std::array input{pollfd{socket, POLLIN, 0}};
  return pollUntil(input, deadline);
}

// Appends received bytes to the message. False when the connection has ended.
bool receiveSome(int socket, LocalMessage& message) {
  std::array<char, localLineLimit> buffer{};
  iovec part{buffer.data(), buffer.size()};
  FileNote note{};
  msghdr received{};
  received.msg_iov = &part;
  received.msg_iovlen = 1;
  received.msg_control = note.bytes.data();
  received.msg_controllen = note.bytes.size();
  const ssize_t size = ::recvmsg(socket, &received, MSG_CMSG_CLOEXEC);
  if (size <= 0) {
    return false;
  }
  if (FileDescriptor file = fileIn(received)) {
    message.file = std::move(file);
  }
  message.line.append(buffer.data(), static_cast<std::size_t>(size));
  return true;
}

}  // namespace

std::vector<fs::path> localSocketPaths(const fs::path& dataDirectory) {
  std::vector<fs::path> paths;
  if (const auto runtime = runtimeDirectory()) {
    std::error_code error;
    const fs::path whole = fs::weakly_canonical(dataDirectory, error);
    paths.push_back(*runtime / nameFor(error ? dataDirectory : whole));
  }
  paths.push_back(dataDirectory / "control.socket");
  return paths;
}

std::optional<LocalSocketAddress> LocalSocketAddress::of(const fs::path& socketPath) {
  FileDescriptor directory(::open(socketPath.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  const std::string name =
      "/proc/self/fd/" + std::to_string(directory.get()) + '/' + socketPath.filename().string();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (!directory || name.size() >= sizeof address.sun_path) {
    return std::nullopt;
  }
  name.copy(address.sun_path, name.size());
  return LocalSocketAddress(std::move(directory), address);
}

bool isProcessOfThisUser(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
}

bool sendMessage(int socket, const LocalMessage& message) {
  std::string line = message.line + '\n';
  iovec part{line.data(), line.size()};
  msghdr sent{};
  sent.msg_iov = &part;
  sent.msg_iovlen = 1;
  FileNote note{};
  if (message.file) {
    sent.msg_control = note.bytes.data();
    sent.msg_controllen = note.bytes.size();
    cmsghdr* const header = CMSG_FIRSTHDR(&sent);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    const int number = message.file.get();
    std::memcpy(CMSG_DATA(header), &number, sizeof number);
  }
  return ::sendmsg(socket, &sent, MSG_NOSIGNAL) == static_cast<ssize_t>(line.size());
}

std::optional<LocalMessage> receiveMessage(int socket, std::chrono::milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  LocalMessage message;
  while (message.line.size() <= localLineLimit && awaitInput(socket, deadline) &&
         receiveSome(socket, message)) {
    if (const auto end = message.line.find('\n'); end != std::string::npos) {
      message.line.resize(end);
      return message;
    }
  }
  return std::nullopt;
}

}  // namespace quillmar
