#include "programs/control/work_place.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/common/private_directory.h"
#include "programs/control/control_client.h"

namespace quillmar::control {
namespace {

constexpr auto answerPatience = std::chrono::seconds(3);
constexpr auto startPause = std::chrono::milliseconds(100);
constexpr int attempts = 30;

ControlRequest yieldRequest() { return {.operation = std::string(rawValue(Operation::yield))}; }

std::optional<Worker> workerIn(const std::optional<Answer>& answer) {
  return answer && answer->reply.worker ? fromRawValue<Worker>(*answer->reply.worker) : std::nullopt;
}

WorkPlace askForPlace(const std::filesystem::path& directory, const std::optional<ControlRequest>& show) {
  auto answer = ask(directory, yieldRequest(), answerPatience);
  const auto worker = workerIn(answer);
  if (worker == Worker::window && show) {
    return {.lock = {}, .occupant = workerIn(ask(directory, *show, answerPatience))};
  }
  if (auto lock = answer ? InstanceLock::receive(std::move(answer->file), directory) : std::nullopt) {
    return {.lock = std::move(lock), .occupant = {}};
  }
  return {.lock = {}, .occupant = worker};
}

}  // namespace

WorkPlace takeWorkPlace(const std::filesystem::path& directory, const std::optional<ControlRequest>& show) {
  WorkPlace place;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    if (auto lock = InstanceLock::acquire(directory)) {
      return {.lock = std::move(lock), .occupant = {}};
    }
    if (place = askForPlace(directory, show); place.lock || place.occupant) {
      return place;
    }
    std::this_thread::sleep_for(startPause);
  }
  return place;
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
  return !InstanceLock::acquire(directory, agentLock) && !InstanceLock::obstacle(directory, agentLock);
}

}  // namespace quillmar::control
