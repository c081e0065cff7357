#include "programs/agent/commands.h"

#include <chrono>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

#include "app/application_environment.h"
#include "app/session/role_manager.h"
#include "child/vpn_dns_manager.h"
#include "foundation/json.h"
#include "platform/linux/autostart.h"
#include "platform/linux/data_directory.h"
#include "programs/agent/agent_machine.h"
#include "programs/agent/status_text.h"
#include "programs/agent/terminal.h"
#include "programs/control/control_client.h"
#include "programs/control/control_handler.h"
#include "programs/control/lock_attempt.h"
#include "programs/doctor/doctor.h"

namespace quillmar::agent {
namespace {

using control::ControlReply;
using control::ControlRequest;
using control::Operation;

// Somewhat longer than the longest check-in.
constexpr auto answerTimeout = std::chrono::seconds(75);
constexpr auto tunnelTimeout = std::chrono::seconds(2);

// Carries out one request in this process.
class OwnHandler {
 public:
  explicit OwnHandler(const Options& options)
      : machine_(options, dispatch_, log_), environment_(machine_.ports(), deploymentsFor(options)) {
    bool isLoaded = false;
    environment_.vpnManager()->loadExistingConfig([&isLoaded] { isLoaded = true; });
    const auto deadline = std::chrono::steady_clock::now() + tunnelTimeout;
    while (!isLoaded && dispatch_.runOne(deadline)) {
    }
  }

  ControlReply ask(const std::string& line) {
    if (auto problem = machine_.problemWithSettings()) {
      return {.error = std::move(problem)};
    }
    std::optional<std::string> answer;
    handler_.handle(line, [&answer](const LocalMessage& message) { answer = message.line; });
    while (!answer && dispatch_.runOne(std::chrono::steady_clock::now() + answerTimeout)) {
    }
    const auto reply = decodeJson<ControlReply>(answer.value_or(""));
    return reply.ok() ? reply.value() : ControlReply{.error = "There was no answer."};
  }

 private:
  AgentLog log_;
  AsioDispatch dispatch_;
  AgentMachine machine_;
  ApplicationEnvironment environment_;
  control::ControlHandler handler_{environment_, {}};
};

// Asks the process that does the installation's work, or does it here if there is none.
std::optional<ControlReply> carryOut(const Options& options, Operation operation) {
  const ControlRequest request{.operation = std::string(rawValue(operation))};
  if (auto answer = control::ask(options.dataDirectory, request, answerTimeout)) {
    return std::move(answer->reply);
  }
  if (SqliteSettingsStore::isAbsentFrom(options.dataDirectory)) {
    return ControlReply{.device = control::DeviceStatus{.role = std::string(rawValue(DeviceRole::unset))}};
  }
  // `status` only reads, so it may run beside another process.
  const auto attempt = InstanceLock::attempt(options.dataDirectory);
  const bool isHeld = attempt.isElsewhere();
  if (isHeld && operation != Operation::status) {
    return std::nullopt;
  }
  ControlReply reply = OwnHandler(options).ask(encodeJson(request).value());
  reply.worker.reset();
  reply.processID.reset();
  if (isHeld && reply.device) {
    reply.error = "a program that can't be asked at the moment";
  }
  return reply;
}

std::string problemIn(const ControlReply& reply) { return reply.error.value_or("There was no answer."); }

// Complains and returns the exit status, unless the device is an enrolled child's.
std::optional<ExitStatus> obstacle(const ControlReply& reply) {
  const ExitStatus status = exitStatusOf(reply);
  if (status == ExitStatus::failed) {
    complain(problemIn(reply));
  } else if (status == ExitStatus::parentsDevice) {
    complain("This is a parent's device.");
  } else if (status == ExitStatus::notEnrolled) {
    complain("This device is not enrolled.");
  } else {
    return std::nullopt;
  }
  return status;
}

bool agrees() {
  write(
      "Reset Enrollment?\nThis will remove this device from parental monitoring. You will need to enroll "
      "again."
      " [y/N] ");
  std::string word;
  std::getline(std::cin, word);
  return word == "y" || word == "Y" || word == "yes";
}

}  // namespace

ExitStatus tellNobodyAnswers() {
  complain("Another process of this installation has the work and does not answer.");
  return ExitStatus::busy;
}

ExitStatus tellStatus(const Options& options) {
  const auto reply = carryOut(options, Operation::status);
  if (!reply) {
    return tellNobodyAnswers();
  }
  if (!options.writesJson && !reply->device) {
    complain(problemIn(*reply));
    return exitStatusOf(*reply);
  }
  const bool isTold =
      writeAnswer(options.writesJson
                      ? encodeJson(*reply).value() + '\n'
                      : statusText(*reply, std::chrono::floor<Duration>(std::chrono::system_clock::now())));
  return isTold ? exitStatusOf(*reply) : ExitStatus::failed;
}

ExitStatus sync(const Options& options) {
  const auto reply = carryOut(options, Operation::sync);
  if (!reply) {
    return tellNobodyAnswers();
  }
  if (const auto status = obstacle(*reply)) {
    return *status;
  }
  if (!reply->device->isConnectedToServer) {
    complain(problemIn(*reply));
    return ExitStatus::failed;
  }
  writeLine("Checked in.");
  return ExitStatus::done;
}

ExitStatus reset(const Options& options) {
  const auto before = carryOut(options, Operation::status);
  if (!before) {
    return tellNobodyAnswers();
  }
  if (const auto status = obstacle(*before)) {
    return *status;
  }
  if (!options.isConfirmed && !agrees()) {
    writeLine("Nothing was changed.");
    return ExitStatus::cancelled;
  }
  const auto reply = carryOut(options, Operation::reset);
  if (!reply) {
    return tellNobodyAnswers();
  }
  if (exitStatusOf(*reply) != ExitStatus::notEnrolled) {
    complain(reply->error.value_or("This device could not be reset."));
    return ExitStatus::failed;
  }
  // A file that can't be read may still hold the enrollment.
  if (AgentLog log; isEnrolledOnDisk(options, log).value_or(true)) {
    complain(reply->worker ? "The enrollment can't be removed from the disk now. It comes back with the next "
                             "start, unless the disk can be written by then."
                           : "The enrollment can't be removed from the disk, and comes back with the next "
                             "start.");
    return ExitStatus::failed;
  }
  if (options.dataDirectory == dataDirectory()) {
    if (const auto problem = disableAutostart()) {
      complain(*problem);
    }
  }
  writeLine(
      "This device has forgotten its enrollment. The family's list keeps it until a parent removes it "
      "there.\n"
      "The tunnel stays as it is; the system's network settings can remove it.");
  return ExitStatus::done;
}

ExitStatus examine(const Options& options) {
  std::ostringstream report;
  const bool isFit = doctor::examineMachine(
      {.dataDirectory = options.dataDirectory, .service = options.service, .caFile = options.caFile}, report);
  return writeAnswer(report.str()) && isFit ? ExitStatus::done : ExitStatus::failed;
}

}  // namespace quillmar::agent
