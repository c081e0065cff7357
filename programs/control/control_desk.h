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

// What went wrong with a check-in, as a sentence that tells a service that is not there from one that answers
// with an error.
std::string checkinFailure(const Error& error);

// Answers what other processes ask of the one that does the work. Main thread only.
class ControlDesk {
 public:
  // What this process is, and what only one of its kind can do.
  struct Duties {
    Worker worker = Worker::agent;
    std::function<void(const std::string& activationToken)> show = {};
    // Ends the work, then gives the lock to whoever asked. None where this process gives nothing up.
    std::function<void(std::function<void(FileDescriptor)> give)> yield = {};
  };

  ControlDesk(Environment& environment, Duties duties);

  void handle(const std::string& line, ControlServer::Reply reply);

 private:
  std::string answerTo(Operation operation, const ControlRequest& request);
  std::string answer(const std::optional<std::string>& error = {});
  void yield(ControlServer::Reply reply);
  void sync(ControlServer::Reply reply);
  void endSync();

  Environment& environment_;
  const Duties duties_;
  // They wait for the end of a check-in.
  std::vector<ControlServer::Reply> syncing_;
  Subscription checkins_;
};

}  // namespace quillmar::control
