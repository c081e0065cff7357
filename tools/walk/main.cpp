#include <QDir>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QTextStream>
#include <array>
#include <chrono>
#include <string>
#include <utility>

#include "child/child_app_state.h"
#include "child/child_enrollment_view.h"
#include "command_line/command_line.h"
#include "console/add_child_view.h"
#include "console/scanner_view.h"
#include "identity/register_view.h"
#include "testing/network_session.h"
#include "testing/ui/ui_stage.h"
#include "tools/common/start.h"
#include "tools/walk/dns_client.h"
#include "ui/bridge/shown_text.h"

namespace {

using namespace std::chrono_literals;
using quillmar::ui::exactText;
using quillmar::ui::UiStage;

// Performs the program's main job without a display. A parent creates an account and a child profile. The
// child's device enrols, from its first tap to a protected screen, and asks for a name. The parent's screen
// then shows that name. Two real windows use a running service; time is virtual, the requests are real.
class Walk {
 public:
  Walk(UiStage& parent, UiStage& child, const QDir& directory, std::string caFile)
      : parent_{parent, "parent"},
        child_{child, "child"},
        directory_(directory),
        caFile_(std::move(caFile)) {}

  bool run() {
    child_.stage.application.machine.tunnel.behaveLikePlatform(
        [this](const std::function<void(bool)>& answer) { child_.stage.permissionPrompt.ask(answer); });
    return signUp() && addChild() && startEnrollment() && scan() && finishEnrollment() && watch() && block();
  }

 private:
  struct Side {
    UiStage& stage;
    const char* name;
  };

  bool signUp() {
    return see(parent_, "Welcome to Quillmar", "A fresh installation asks who will use the device") &&
           tap(parent_, "I'm a Parent", "Australia", "A parent chooses the region of the account") &&
           tap(parent_, "Australia", "Continue", "The region is chosen") &&
           tap(parent_, "Continue", "Sign Up", "Signing in, or making an account") &&
           tap(parent_, "Sign Up", "Full Name", "A form for a new account") && fillIn() &&
           tap(parent_, "Create Account", "Add Your First Child", "Signed in: a family without children");
  }

  bool fillIn() {
    auto& form = parent_.stage.application.screen<quillmar::RegisterView>();
    form.name = std::string("Ann Wells");
    form.email = std::string("ann.wells@example.com");
    form.phone = std::string("+61 412 345 678");
    form.password = std::string("correct horse 9!");
    form.confirmPassword = form.password();
    parent_.stage.settle();
    return see(parent_, "Strong", "The form is filled in, and the password is strong");
  }

  bool addChild() {
    if (!tap(parent_, "Add Your First Child", "Create Child Profile", "A child needs no more than a name")) {
      return false;
    }
    parent_.stage.application.screen<quillmar::AddChildView>().name = std::string("Mia");
    parent_.stage.settle();
    return tap(parent_, "Create Child Profile", "Add Device", "Mia is in the family, with no device yet");
  }

  bool startEnrollment() {
    return tap(child_, "I'm a Child", "Start Enrollment", "A child's device offers to enrol") &&
           tap(child_, "Start Enrollment", "Scan QR Code", "It shows a code, and the same as a QR code");
  }

  // There is no screen to scan the other window's code from, so its text is passed on directly.
  bool scan() {
    if (!tap(parent_, "Add Device", "Phone or Tablet", "The parent adds a device for Mia") ||
        !tap(parent_, "Phone or Tablet", "Paste Code",
             "A code comes from a camera, a picture or the clipboard") ||
        !see(parent_, "Read From Screen", "…or from another window on this screen")) {
      return false;
    }
    parent_.stage.application.screen<quillmar::ScannerView>().handleScannedCode(
        child_.stage.application.screen<quillmar::ChildEnrollmentView>().qrCodeData());
    parent_.stage.settle();
    return see(parent_, "QR Code Scanned", "The code was read, and names the device") &&
           tap(parent_, "Complete Enrollment", "Device Enrolled!", "The device belongs to Mia") &&
           tap(parent_, "Done", "Mia", "Back to the family");
  }

  bool finishEnrollment() {
    return wait(child_, 6s, "Allow",
                "The child's device has heard of it: the system asks about the tunnel") &&
           tap(child_, "Allow", "Internet Protection Active", "The tunnel is up: the device is protected") &&
           wait(child_, 60s, "Protection Active", "A minute later it has checked in again") &&
           tap(child_, "Settings", "Device Information", "Its settings say what it is and where it asks");
  }

  bool watch() {
    if (!ask("www.school.example") || !ask("cdn.games.example") || !ask("news.example")) {
      return false;
    }
    parent_.stage.window().resize(parent_.stage.window().width(), 1500);
    parent_.stage.advance(30s);
    return tap(parent_, "Mia", "school.example", "The parent sees what the device has just asked for") &&
           tap(parent_, "Sites Allowed", "news.example", "What was let through can be blocked from here");
  }

  bool block() {
    openMenuOf(parent_, "news.example");
    return tap(parent_, "Block", "Sites Blocked", "Drawing it to the right does the same") &&
           ask("news.example") &&
           tap(parent_, "Sites Blocked", "news.example", "Asked for again, it is refused");
  }

  // Sends the device's DNS query to its own endpoint, as the tunnel would.
  bool ask(const char* name) {
    const auto& endpoint = child_.stage.application.child().dohEndpoint();
    if (quillmar::askOverHttps(endpoint, name, caFile_)) {
      return true;
    }
    QTextStream(stdout) << "FAILED to ask " << exactText(endpoint) << " for " << name << '\n';
    return false;
  }

  static void openMenuOf(const Side& side, const QString& row) {
    side.stage.clickAt(quillmar::ui::middleOf(*side.stage.find(row)), Qt::RightButton);
  }

  bool tap(const Side& side, const QString& control, const QString& expected, const char* meaning) {
    side.stage.click(control);
    side.stage.advance(2s);
    return show(side, QStringLiteral("“%1” → “%2”").arg(control, expected), expected, meaning);
  }

  bool wait(const Side& side, std::chrono::seconds time, const QString& expected, const char* meaning) {
    side.stage.advance(time);
    return see(side, expected, meaning);
  }

  bool see(const Side& side, const QString& expected, const char* meaning) {
    return show(side, QStringLiteral("“%1”").arg(expected), expected, meaning);
  }

  bool show(const Side& side, const QString& deed, const QString& expected, const char* meaning) {
    QTextStream out(stdout);
    if (!side.stage.shows(expected)) {
      out << "FAILED " << meaning << ": “" << expected << "” is not on the " << side.name << "'s screen\n";
      side.stage.picture().save(directory_.filePath("failed.png"));
      return false;
    }
    const QString file =
        directory_.filePath(QStringLiteral("walk-%1-%2.png").arg(++step_, 2, 10, QChar('0')).arg(side.name));
    out << QStringLiteral("  %1. %2: %3. %4 (%5)\n").arg(step_, 2).arg(side.name, deed, meaning, file);
    return side.stage.picture().save(file);
  }

  Side parent_;
  Side child_;
  const QDir directory_;
  const std::string caFile_;
  int step_ = 0;
};

struct Given {
  std::string directory;
  std::string service;
  std::string caFile;
};

quillmar::command_line::Program programFor(Given& given) {
  using namespace quillmar::command_line;
  return {.name = "quillmar-walk",
          .about = "Walks the program's main job in two real windows without a display, and draws each step.",
          .arguments = {{"DIRECTORY", "Where the pictures go", to(given.directory)}},
          .options = {
              {.name = "--service",
               .value = "URL",
               .help = "The root of the service",
               .take = to(given.service),
               .isNeeded = true},
              quillmar::authorityOption(given.caFile),
          }};
}

}  // namespace

int main(int count, char** arguments) {
  Given given;
  const auto program = programFor(given);
  if (const auto status = quillmar::endsAtOnce(program, count, arguments, given.caFile)) {
    return *status;
  }
  const QDir directory(exactText(given.directory));
  if (!directory.mkpath(QStringLiteral("."))) {
    return 1;
  }
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  const QGuiApplication application(count, arguments);
  UiStage::Options options;
  options.network = quillmar::realNetwork(given.service, given.caFile);
  UiStage parent(options);
  UiStage child(options);
  return Walk(parent, child, directory, given.caFile).run() ? 0 : 1;
}
