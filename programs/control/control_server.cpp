#include "programs/control/control_server.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <cstdio>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/common/private_directory.h"
#include "platform/common/thread_signals.h"

namespace quillmar::control {
namespace {

namespace asio = boost::asio;
namespace fs = std::filesystem;
using Protocol = asio::local::stream_protocol;
using ErrorCode = boost::system::error_code;

constexpr auto requestTimeout = std::chrono::seconds(5);
constexpr auto acceptPause = std::chrono::seconds(1);
constexpr std::size_t mostGuests = 16;

// Identifies the file behind a socket's path.
struct FileIdentity {
  dev_t device = 0;
  ino_t number = 0;
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

std::optional<FileIdentity> identityOf(const fs::path& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 ? std::optional(FileIdentity{status.st_dev, status.st_ino})
                                             : std::nullopt;
}

// The caller holds the installation's lock, so an existing file was left by a killed process. The socket is
// renamed to `path` once it listens, so that clients never find a path that refuses them.
FileDescriptor listenAt(const fs::path& path) {
  std::error_code error;
  const fs::path unfinished = path.string() + ".new";
  fs::remove(unfinished, error);
  const auto address =
      createPrivateDirectory(path.parent_path()) ? LocalSocketAddress::of(unfinished) : std::nullopt;
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!address || !socket || ::bind(socket.get(), address->address(), LocalSocketAddress::size()) != 0 ||
      ::chmod(unfinished.c_str(), S_IRUSR | S_IWUSR) != 0 ||
      ::listen(socket.get(), static_cast<int>(mostGuests)) != 0 ||
      ::rename(unfinished.c_str(), path.c_str()) != 0) {
    fs::remove(unfinished, error);
    return {};
  }
  return socket;
}

// A peer that only shut down its writing side is still listening.
bool hasGone(int socket) {
  pollfd state{.fd = socket, .events = 0, .revents = 0};
  return ::poll(&state, 1, 0) == 1 && (state.revents & (POLLHUP | POLLERR)) != 0;
}

}  // namespace

// Runs on its own thread, except `keepReachable` and the handler.
class ControlServer::Loop : public std::enable_shared_from_this<Loop> {
 public:
  Loop(fs::path dataDirectory, Dispatch& dispatch, Handler handler)
      : dataDirectory_(std::move(dataDirectory)), dispatch_(dispatch), handler_(std::move(handler)) {}

  void run() {
    keepReachable();
    thread_ = std::thread([this] {
      blockSignalsOfThisThread();
      context_.run();
    });
  }

  // Sends the answers given so far, then stops.
  void end() {
    asio::post(context_, [this] { context_.stop(); });
    thread_.join();
    leave();
  }

  void keepReachable() {
    const auto places = localSocketPaths(dataDirectory_);
    if (path_ == places.front() && identity_ && identityOf(path_) == identity_) {
      return;
    }
    leave();
    for (const fs::path& place : places) {
      if (FileDescriptor socket = listenAt(place)) {
        path_ = place;
        identity_ = identityOf(place);
        asio::post(context_, [this, socket = std::make_shared<FileDescriptor>(std::move(socket))] {
          listen(std::move(*socket));
        });
        return;
      }
    }
  }

 private:
  struct Guest {
    explicit Guest(Protocol::socket accepted) : socket(std::move(accepted)), timeout(socket.get_executor()) {}
    Protocol::socket socket;
    asio::steady_timer timeout;
    std::string line;
    bool hasAsked = false;
  };
  using GuestPtr = std::shared_ptr<Guest>;

  // Removes the socket's file, unless another process has replaced it, and its folder if that is empty.
  void leave() {
    std::error_code error;
    if (identity_ && identityOf(path_) == identity_) {
      fs::remove(path_, error);
      fs::remove(path_.parent_path(), error);
    }
    identity_.reset();
  }

  void listen(FileDescriptor socket) {
    ErrorCode error;
    acceptor_.close(error);
    acceptor_ = Protocol::acceptor(context_, Protocol(), ::fcntl(socket.get(), F_DUPFD_CLOEXEC, 0));
    accept();
  }

  void accept() {
    acceptor_.async_accept([this](ErrorCode error, Protocol::socket socket) {
      if (error == asio::error::operation_aborted) {
        return;
      }
      if (error) {
        acceptLater();
        return;
      }
      if (isProcessOfThisUser(socket.native_handle()) && makeRoom()) {
        hear(guests_.emplace_back(std::make_shared<Guest>(std::move(socket))));
      }
      accept();
    });
  }

  // Makes room for one more connection: drops closed ones, then one that has not sent a request yet.
  bool makeRoom() {
    if (guests_.size() >= mostGuests) {
      std::erase_if(guests_, [](const GuestPtr& guest) { return hasGone(guest->socket.native_handle()); });
    }
    if (guests_.size() >= mostGuests) {
      const auto silent =
          std::ranges::find_if(guests_, [](const GuestPtr& guest) { return !guest->hasAsked; });
      if (silent != guests_.end()) {
        ErrorCode error;
        (*silent)->socket.close(error);
        guests_.erase(silent);
      }
    }
    return guests_.size() < mostGuests;
  }

  // The process may be out of file descriptors, so it tries again after a pause.
  void acceptLater() {
    pause_.expires_after(acceptPause);
    pause_.async_wait([this](ErrorCode /*never cancelled*/) { accept(); });
  }

  void hear(const GuestPtr& guest) {
    guest->timeout.expires_after(requestTimeout);
    guest->timeout.async_wait([guest](ErrorCode error) {
      if (!error) {
        guest->socket.cancel(error);
      }
    });
    asio::async_read_until(guest->socket, asio::dynamic_buffer(guest->line, localLineLimit), '\n',
                           [this, guest](ErrorCode error, std::size_t size) {
                             guest->timeout.cancel();
                             if (error) {
                               std::erase(guests_, guest);
                             } else {
                               guest->hasAsked = true;
                               ask(guest, guest->line.substr(0, size - 1));
                             }
                           });
  }

  void ask(const std::weak_ptr<Guest>& guest, std::string line) {
    dispatch_.main().async([known = weak_from_this(), guest, line = std::move(line)] {
      if (const auto self = known.lock()) {
        self->handler_(line, [known, guest](LocalMessage message) {
          if (const auto there = known.lock()) {
            there->send(guest, std::move(message));
          }
        });
      }
    });
  }

  void send(const std::weak_ptr<Guest>& known, LocalMessage message) {
    asio::post(context_, [this, known, message = std::make_shared<LocalMessage>(std::move(message))] {
      if (const auto guest = known.lock()) {
        sendMessage(guest->socket.native_handle(), *message);
        std::erase(guests_, guest);
      }
    });
  }

  const fs::path dataDirectory_;
  Dispatch& dispatch_;
  const Handler handler_;
  asio::io_context context_{1};
  const asio::executor_work_guard<asio::io_context::executor_type> work_{context_.get_executor()};
  Protocol::acceptor acceptor_{context_};
  asio::steady_timer pause_{context_};
  std::vector<GuestPtr> guests_;  // oldest first
  fs::path path_;
  std::optional<FileIdentity> identity_;
  std::thread thread_;
};

ControlServer::ControlServer(fs::path dataDirectory, Dispatch& dispatch, Handler handler)
    : loop_(std::make_shared<Loop>(std::move(dataDirectory), dispatch, std::move(handler))) {
  loop_->run();
}

ControlServer::~ControlServer() { loop_->end(); }

void ControlServer::keepReachable() { loop_->keepReachable(); }

}  // namespace quillmar::control
