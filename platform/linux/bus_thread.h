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

// The sentence of an error of the bus; there is always one.
std::string sentenceOf(const sdbus::Error& error);

// What lives as long as the connection to a bus. Called on the bus's thread only.
class BusSession {
 public:
  BusSession() = default;
  BusSession(const BusSession&) = delete;
  BusSession& operator=(const BusSession&) = delete;
  virtual ~BusSession() = default;

  // May throw sdbus::Error; then the bus counts as not joined.
  virtual void joined(sdbus::IConnection& bus) = 0;
  // The bus is gone, or this program leaves it. Whatever refers to the connection must go. Never throws.
  virtual void left() = 0;
};

// The one thread that does all D-Bus work of an adapter. It joins the bus when there is first something to
// do, stays, and joins again with the next work after the bus went away. No exception leaves it.
class BusThread {
 public:
  using Work = std::function<void(sdbus::IConnection&)>;
  // Told why a work could not be done.
  using Failure = std::function<void(const sdbus::Error&)>;

  // An address is "unix:path=" and a socket. `patience` limits the joining and each call that sets no limit
  // of its own. The session must outlive this.
  BusThread(std::string address, std::chrono::milliseconds patience, BusSession& session);
  BusThread(const BusThread&) = delete;
  BusThread& operator=(const BusThread&) = delete;
  // Waits for the work at hand; drops the rest.
  ~BusThread();

  // Any thread. Runs `work` on this one, after all that was posted before; `failed` if there is no bus or
  // `work` threw an sdbus::Error.
  void post(Work work, Failure failed);
  // Any thread. Runs `work` only if the bus is joined; what it throws is dropped.
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
  const std::chrono::milliseconds patience_;
  BusSession& session_;
  const FileDescriptor wake_;
  std::mutex mutex_;
  std::vector<Task> tasks_;
  bool stopping_ = false;
  std::unique_ptr<sdbus::IConnection> bus_;  // this thread only
  std::thread thread_;
};

}  // namespace quillmar
