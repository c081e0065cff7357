#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/common/file_descriptor.h"

namespace quillmar {

// The error's message, or its name if there is none.
std::string messageOf(const sdbus::Error& error);

// Lives as long as a connection to a bus. Bus thread only.
class BusSession {
 public:
  BusSession() = default;
  BusSession(const BusSession&) = delete;
  BusSession& operator=(const BusSession&) = delete;
  virtual ~BusSession() = default;

  // May throw sdbus::Error; the connection then counts as failed.
  virtual void joined(sdbus::IConnection& bus) = 0;
  // The bus has closed, or this program is leaving it. Release everything that refers to the connection.
  // Never throws.
  virtual void left() = 0;
};

// The thread of an adapter's D-Bus work. It connects when there is work, stays connected, and reconnects with
// the next work after the bus was lost. No exception leaves it.
class BusThread {
 public:
  using Work = std::function<void(sdbus::IConnection&)>;
  // Receives why the work could not be done.
  using Failure = std::function<void(const sdbus::Error&)>;

  // `address` is "unix:path=" and a socket. `timeout` limits connecting and each call without a limit of its
  // own. The session must outlive this.
  BusThread(std::string address, std::chrono::milliseconds timeout, BusSession& session);
  BusThread(const BusThread&) = delete;
  BusThread& operator=(const BusThread&) = delete;
  // Waits for the current work; drops the rest.
  ~BusThread();

  // Any thread. Runs `work` on the bus thread, in order. Calls `failed` if there is no bus or `work` threw an
  // sdbus::Error.
  void post(Work work, Failure failed);
  // Any thread. Runs `work` only while connected; its exceptions are dropped.
  void postIfJoined(Work work);

 private:
  struct Task {
    Work work;
    Failure failed;
    bool joins = true;
  };

  void add(Task task);
  void run();
  void perform(const Task& task);
  void join();
  void leave();
  void processPending();
  void wait();
  std::vector<Task> takeTasks();
  bool stopping();

  const std::string address_;
  const std::chrono::milliseconds timeout_;
  BusSession& session_;
  const FileDescriptor wake_;
  std::mutex mutex_;
  std::vector<Task> tasks_;
  bool stopping_ = false;
  std::unique_ptr<sdbus::IConnection> bus_;  // bus thread only
  std::thread thread_;
};

}  // namespace quillmar
