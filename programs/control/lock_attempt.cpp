#include "programs/control/lock_attempt.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/common/private_directory.h"
#include "programs/control/control_client.h"
#include "programs/control/holder_watch.h"

namespace quillmar::control {
namespace {

using Clock = std::chrono::steady_clock;

std::optional<Worker> workerIn(const std::optional<Answer>& answer) {
  return answer && answer->reply.worker ? fromRawValue<Worker>(*answer->reply.worker) : std::nullopt;
}

// The requests of one attempt; all end with its deadline.
class Requests {
 public:
  Requests(const std::filesystem::path& directory, Clock::time_point deadline)
      : directory_(directory), deadline_(deadline) {}

  std::optional<Answer> send(const ControlRequest& request) const {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now());
    return ask(directory_, request, std::max(left, std::chrono::milliseconds(0)));
  }

 private:
  const std::filesystem::path& directory_;
  const Clock::time_point deadline_;
};

LockAttempt askForLock(const Requests& requests, const std::filesystem::path& directory,
                       const std::optional<ControlRequest>& show) {
  auto answer = requests.send({.operation = std::string(rawValue(Operation::yield))});
  const auto worker = workerIn(answer);
  if (worker == Worker::window && show) {
    return {.lock = {}, .holder = workerIn(requests.send(*show))};
  }
  if (auto lock = answer ? InstanceLock::receive(std::move(answer->file), directory) : std::nullopt) {
    return {.lock = std::move(lock), .holder = {}};
  }
  return {.lock = {}, .holder = worker};
}

}  // namespace

LockAttempt attemptLock(const std::filesystem::path& directory, const std::optional<ControlRequest>& show,
                        std::chrono::milliseconds timeout) {
  if (auto lock = InstanceLock::acquire(directory)) {
    return {.lock = std::move(lock), .holder = {}};
  }
  const auto deadline = Clock::now() + timeout;
  const Requests requests(directory, deadline);
  HolderWatch watch(directory);
  do {
    watch.listen();
    if (auto lock = watch.takeLock()) {
      return {.lock = std::move(lock), .holder = {}};
    }
    if (auto attempt = askForLock(requests, directory, show); attempt.lock || attempt.holder) {
      return attempt;
    }
  } while (watch.waitUntil(deadline));
  return {};
}

std::optional<std::string> problemWithFolder(const std::filesystem::path& directory) {
  if (belongsToAnother(directory)) {
    return "The folder " + directory.string() + " can't be used: it belongs to another user.";
  }
  std::error_code error = InstanceLock::obstacle(directory);
  if (!error && ::access(directory.c_str(), W_OK | X_OK) != 0) {
    error = std::error_code(errno, std::generic_category());
  }
  return error
             ? std::optional("The folder " + directory.string() + " can't be used: " + error.message() + '.')
             : std::nullopt;
}

bool isAgentWaiting(const std::filesystem::path& directory) {
  return InstanceLock::attempt(directory, agentLock).isElsewhere();
}

}  // namespace quillmar::control
