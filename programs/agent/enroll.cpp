#include <csignal>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "app/application_environment.h"
#include "app/session/role_manager.h"
#include "child/child_app_state.h"
#include "child/child_enrollment_view.h"
#include "platform/linux/autostart.h"
#include "platform/linux/signal_watch.h"
#include "programs/agent/agent_machine.h"
#include "programs/agent/commands.h"
#include "programs/agent/qr_drawing.h"
#include "programs/agent/terminal.h"
#include "programs/control/control_client.h"
#include "programs/control/lock_attempt.h"

namespace quillmar::agent {
namespace {

constexpr auto statusTimeout = std::chrono::seconds(3);
constexpr int waitingRows = 1;
constexpr auto saveRetry = std::chrono::seconds(5);

// The enrollment's output in a terminal.
class EnrollmentScreen {
 public:
  EnrollmentScreen(ChildEnrollmentView& view, const Terminal& terminal) : view_(view), terminal_(terminal) {}

  void greet() const {
    write(view_.title() + '\n' + view_.tagline() + "\n\n" + view_.loadingHeading() + '\n');
  }

  // False if nobody can see it.
  bool showCode(const QREncoder& encoder) {
    const bool isShown = write('\n' + view_.codeHeading() + '\n' + view_.codeText() + "\n\n" +
                               view_.codeLabel() + ": " + view_.enrollmentCode() + "\n\n");
    drawCode(encoder);
    if (!terminal_.isInteractive) {
      writeLine(view_.waitingText());
    }
    return isShown;
  }

  // Redraws the waiting line with its dots in their current state.
  void showWaiting() {
    if (!terminal_.isInteractive || !view_.loadingDots) {
      return;
    }
    std::string line = '\r' + view_.waitingText() + ' ';
    for (const double opacity : view_.loadingDots->opacities()) {
      line += opacity < 1 ? '.' : 'o';
    }
    isLineOpen_ = write(line);
  }

  // Starts a new line for what follows.
  void endWaiting() {
    if (std::exchange(isLineOpen_, false)) {
      write("\n");
    }
  }

 private:
  // Only the waiting line follows the code, so that a low window shows the whole code.
  void drawCode(const QREncoder& encoder) const {
    Terminal above = terminal_;
    above.rows -= waitingRows;
    if (const auto lines = drawQRCode(encoder, view_.qrCodeData(), above)) {
      for (const std::string& line : *lines) {
        writeLine(line);
      }
      return;
    }
    const auto rows = rowsForQRCode(encoder, view_.qrCodeData(), above);
    const std::string problem =
        rows ? "This window is too low to show the QR code: it would need " +
                   std::to_string(*rows + waitingRows) + " rows.\n"
             : "This terminal can't show a QR code: it would need UTF-8 or colours, and enough\ncolumns.\n";
    write(problem + "What the code says, for any program that makes one:\n\n" + view_.qrCodeData() + "\n\n");
  }

  ChildEnrollmentView& view_;
  const Terminal terminal_;
  bool isLineOpen_ = false;
};

// One enrollment, from the first request to a saved device or to the reason of its failure.
class Enrollment {
 public:
  Enrollment(const Options& options, const Terminal& terminal)
      : options_(options),
        machine_(options, dispatch_, log_),
        environment_(machine_.ports(), deploymentsFor(options)),
        view_(std::make_shared<ChildEnrollmentView>(environment_)),
        screen_(*view_, terminal) {}

  ExitStatus carryOut() {
    RoleManager& role = *environment_.roleManager();
    if (role.currentRole() == DeviceRole::parent) {
      complain("This is a parent's device; that can't be changed.");
      return ExitStatus::parentsDevice;
    }
    if (environment_.childAppState()->isEnrolled()) {
      writeLine("This device is enrolled already.");
      return ExitStatus::done;
    }
    auto problem = machine_.problemWithSettings();
    if (!problem) {
      problem = control::problemWithFolder(options_.dataDirectory);
    }
    if (problem) {
      complain(*problem);
      return ExitStatus::failed;
    }
    role.setRole(DeviceRole::child);
    const SignalWatch signals(dispatch_, [this](int signal) { cancel(signal); });
    observe();
    screen_.greet();
    view_->appear();
    view_->startEnrollment();
    dispatch_.run();
    return status_;
  }

 private:
  void observe() {
    reactions_.push_back(view_->qrCodeData.onChange([this] {
      if (!view_->qrCodeData().empty() && !screen_.showCode(machine_.qrEncoder)) {
        dispatch_.main().async([this] { giveUp(); });
      }
    }));
    reactions_.push_back(view_->errorAlert.isShown.onChange([this] { fail(); }));
    // Runs at the end of the turn in which the device is enrolled, when the enrollment is stored.
    reactions_.push_back(environment_.childAppState()->isEnrolled.onChange(
        [this] { dispatch_.main().async([this] { finish(); }); }));
    ticks_ = dispatch_.scheduleRepeating(ChildLoadingDots::period, [this] { screen_.showWaiting(); });
  }

  void cancel(int signal) {
    screen_.endWaiting();
    view_->cancelEnrollment();
    const bool isGone = signal == SIGHUP;
    end(isGone || !writeLine("Cancelled. This device is not enrolled.") ? ExitStatus::failed
                                                                        : ExitStatus::cancelled);
  }

  void giveUp() {
    complain("The enrollment code can't be shown: the output can't be written.");
    view_->cancelEnrollment();
    end(ExitStatus::failed);
  }

  void fail() {
    screen_.endWaiting();
    complain(view_->errorAlert.message());
    end(ExitStatus::failed);
  }

  void finish() {
    ticks_.reset();
    screen_.endWaiting();
    if (!save()) {
      complain("The enrollment can't be saved yet. Make room on the disk; this program waits.");
      ticks_ = dispatch_.scheduleRepeating(saveRetry, [this] { save(); });
    }
  }

  bool save() {
    machine_.settings.synchronize();
    const bool isDone = isEnrolledOnDisk(options_, log_).value_or(false);
    if (isDone) {
      writeLine("This device is enrolled.");
      end(ExitStatus::done);
    }
    return isDone;
  }

  void end(ExitStatus status) {
    ticks_.reset();
    status_ = status;
    dispatch_.stop();
  }

  const Options& options_;
  AgentLog log_;
  AsioDispatch dispatch_;
  AgentMachine machine_;
  ApplicationEnvironment environment_;
  const std::shared_ptr<ChildEnrollmentView> view_;
  EnrollmentScreen screen_;
  std::vector<Subscription> reactions_;
  std::unique_ptr<Timer> ticks_;
  ExitStatus status_ = ExitStatus::failed;
};

ExitStatus refuse(const control::LockAttempt& attempt, const Options& options) {
  if (const auto problem = control::problemWithFolder(options.dataDirectory); problem && !attempt.holder) {
    complain(*problem);
    return ExitStatus::failed;
  }
  if (attempt.holder != control::Worker::window) {
    return tellNobodyAnswers();
  }
  complain("The Quillmar window is open. Enroll there, or close it first.");
  return ExitStatus::busy;
}

// Asks the process that does the work. If the device is enrolled already, that process need not yield.
bool isEnrolledElsewhere(const Options& options) {
  const auto answer = control::ask(
      options.dataDirectory, {.operation = std::string(rawValue(control::Operation::status))}, statusTimeout);
  return answer && answer->reply.device && answer->reply.device->isEnrolled;
}

ExitStatus protect(const Options& options) {
  if (!options.startsWithSession) {
    writeLine("To protect it: quillmar-agent run");
    return ExitStatus::done;
  }
  if (const auto problem = enableAutostart()) {
    complain(*problem);
    return ExitStatus::failed;
  }
  writeLine("It is protected from now on, and whenever you log in.");
  return ExitStatus::done;
}

}  // namespace

ExitStatus enroll(const Options& options) {
  if (isEnrolledElsewhere(options)) {
    writeLine("This device is enrolled already.");
    return options.startsWithSession ? protect(options) : ExitStatus::done;
  }
  if (InstanceLock::obstacle(options.dataDirectory)) {
    // Looked at a second time: what was in the way may be gone by now.
    if (const auto problem = control::problemWithFolder(options.dataDirectory)) {
      complain(*problem);
      return ExitStatus::failed;
    }
  }
  holdEndingSignals();
  ExitStatus status = ExitStatus::failed;
  {
    const auto attempt = control::attemptLock(options.dataDirectory);
    if (!attempt.lock) {
      return refuse(attempt, options);
    }
    status = Enrollment(options, Terminal::ofStandardOutput()).carryOut();
  }
  return status == ExitStatus::done ? protect(options) : status;
}

}  // namespace quillmar::agent
