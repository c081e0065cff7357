#include "platform/linux/bus_thread.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstdint>
#include <future>
#include <string_view>
#include <utility>

#include "platform/common/thread_signals.h"

namespace quillmar {
namespace {

using ConnectionPtr = std::unique_ptr<sdbus::IConnection>;

// Asked first, as sdbus-c++ 1.2 loses the memory of a connection that can't be made.
bool isServed(const std::string& address) {
  constexpr std::string_view prefix = "unix:path=";
  sockaddr_un at{};
  if (!address.starts_with(prefix) || address.size() - prefix.size() >= sizeof at.sun_path) {
    return false;
  }
  at.sun_family = AF_UNIX;
  address.copy(static_cast<char*>(at.sun_path), sizeof at.sun_path - 1, prefix.size());
  const FileDescriptor probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  return connect(probe.get(), reinterpret_cast<const sockaddr*>(&at), sizeof at) == 0;
}

ConnectionPtr connectTo(const std::string& address) {
  if (!isServed(address)) {
    return nullptr;
  }
  try {
    return sdbus::createSessionBusConnectionWithAddress(address);
  } catch (const sdbus::Error&) {
    return nullptr;
  }
}

// On a thread that may be left behind: the greeting of a bus that stays mute has no time limit of ours.
ConnectionPtr connectTo(const std::string& address, std::chrono::milliseconds patience) {
  std::promise<ConnectionPtr> promise;
  auto connected = promise.get_future();
  std::thread([promise = std::move(promise), address]() mutable {
    blockSignalsOfThisThread();
    promise.set_value(connectTo(address));
  }).detach();
  auto connection = connected.wait_for(patience) == std::future_status::ready ? connected.get() : nullptr;
  if (!connection) {
    throw sdbus::Error("org.freedesktop.DBus.Error.NoServer", "The system's message bus does not answer.");
  }
  return connection;
}

}  // namespace

std::string sentenceOf(const sdbus::Error& error) {
  return error.getMessage().empty() ? error.getName() : error.getMessage();
}

BusThread::BusThread(std::string address, std::chrono::milliseconds patience, BusSession& session)
    : address_(std::move(address)),
      patience_(patience),
      session_(session),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      thread_([this] { run(); }) {}

BusThread::~BusThread() {
  {
    const std::scoped_lock lock(mutex_);
    stopping_ = true;
  }
  eventfd_write(wake_.get(), 1);
  thread_.join();
}

void BusThread::post(Work work, Failure failed) { add({std::move(work), std::move(failed), true}); }

void BusThread::postIfJoined(Work work) {
  add({std::move(work), [](const sdbus::Error&) {}, false});
}

void BusThread::add(Task task) {
  {
    const std::scoped_lock lock(mutex_);
    tasks_.push_back(std::move(task));
  }
  eventfd_write(wake_.get(), 1);
}

void BusThread::run() {
  blockSignalsOfThisThread();
  while (!stopping()) {
    for (const Task& task : takeTasks()) {
      if (stopping()) {
        break;
      }
      perform(task);
    }
    processPending();
    wait();
  }
  leave();
}

void BusThread::perform(const Task& task) {
  try {
    if (!bus_ && task.joins) {
      join();
    }
    if (bus_) {
      task.work(*bus_);
    }
  } catch (const sdbus::Error& error) {
    task.failed(error);
  }
}

void BusThread::join() {
  bus_ = connectTo(address_, patience_);
  try {
    bus_->setMethodCallTimeout(patience_);
    session_.joined(*bus_);
  } catch (const sdbus::Error&) {
    leave();
    throw;
  }
}

void BusThread::leave() {
  if (bus_) {
    session_.left();
    bus_.reset();
  }
}

void BusThread::processPending() {
  try {
    while (bus_ && bus_->processPendingRequest()) {
    }
  } catch (const sdbus::Error&) {
    leave();
  }
}

void BusThread::wait() {
  std::array<pollfd, 2> sources{pollfd{wake_.get(), POLLIN, 0}, pollfd{-1, 0, 0}};
  int timeout = -1;
  try {
    if (bus_) {
      const auto bus = bus_->getEventLoopPollData();
      sources[1] = {bus.fd, bus.events, 0};
      timeout = bus.getPollTimeout();
    }
  } catch (const sdbus::Error&) {
    leave();
  }
  poll(sources.data(), sources.size(), timeout);
  eventfd_t woken = 0;
  eventfd_read(wake_.get(), &woken);
}

std::vector<BusThread::Task> BusThread::takeTasks() {
  const std::scoped_lock lock(mutex_);
  return std::exchange(tasks_, {});
}

bool BusThread::stopping() {
  const std::scoped_lock lock(mutex_);
  return stopping_;
}

}  // namespace quillmar
