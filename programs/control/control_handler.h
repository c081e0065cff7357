#pragma once

#include <functional>
#include <string>
#include <vector>

#include "app/session/environment.h"
#include "foundation/error.h"
#include "foundation/signal.h"
#include "programs/control/control_messages.h"
#include "programs/control/control_server.h"

namespace quillmar::control {

DeviceStatus statusOf(Environment& environment);

// Why a check-in failed, as a sentence. It distinguishes an unreachable service from one that answers with
// an error.
std::string checkinFailure(const Error& error);

// Answers the requests of other processes. Main thread only.
class ControlHandler {
 public:
  // The parts that differ between agent and window.
  struct Duties {
    Worker worker = Worker::agent;
    std::function<void(const std::string& activationToken)> show = {};
    // Ends the work, then gives the lock to the process that asked. Empty if this process does not yield.
    std::function<void(std::function<void(FileDescriptor)> give)> yield = {};
  };

  ControlHandler(Environment& environment, Duties duties);

  void handle(const std::string& line, ControlServer::Reply reply);

 private:
  std::string answerTo(Operation operation, const ControlRequest& request);
  std::string answer(const std::optional<std::string>& error = {});
  void yield(ControlServer::Reply reply);
  void sync(ControlServer::Reply reply);
  void endSync();

  Environment& environment_;
  const Duties duties_;
  // Replies that wait for the end of a check-in.
  std::vector<ControlServer::Reply> syncing_;
  Subscription checkins_;
};

}  // namespace quillmar::control
