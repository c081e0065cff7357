#include "tools/walk/walk.h"

#include <QQuickWindow>
#include <QTextStream>

#include "child/child_enrollment_view.h"
#include "console/add_child_view.h"
#include "console/scanner_view.h"
#include "identity/register_view.h"

namespace quillmar {

using namespace std::chrono_literals;

namespace {

void openMenuOf(ui::UiStage& stage, const QString& row) {
  stage.clickAt(ui::middleOf(*stage.find(row)), Qt::RightButton);
}

}  // namespace

Walk::Walk(ui::UiStage& parent, ui::UiStage& child, const QDir& directory)
    : parent_{parent, "parent"}, child_{child, "child"}, directory_(directory) {}

bool Walk::run() {
  return begin() && atParents([this] { return signUp(); }) && addChild() && startEnrollment() && scan() &&
         finishEnrollment() && watch() && block() && end();
}

bool Walk::signUp() {
  return see(parent_, "Welcome to Quillmar", "A fresh installation asks who will use the device") &&
         tap(parent_, "I'm a Parent", "Australia", "A parent chooses the region of the account") &&
         tap(parent_, "Australia", "Continue", "The region is chosen") &&
         tap(parent_, "Continue", "Sign Up", "Signing in, or making an account") &&
         tap(parent_, "Sign Up", "Full Name", "A form for a new account") && fillIn() &&
         tap(parent_, "Create Account", "Add Your First Child", "Signed in: a family without children");
}

bool Walk::fillIn() {
  auto& form = parent_.stage.application.screen<RegisterView>();
  form.name = std::string("Ann Wells");
  form.email = std::string("ann.wells@example.com");
  form.phone = std::string("+61 412 345 678");
  form.password = std::string("correct horse 9!");
  form.confirmPassword = form.password();
  parent_.stage.settle();
  return see(parent_, "Strong", "The form is filled in, and the password is strong");
}

bool Walk::addChild() {
  if (!tap(parent_, "Add Your First Child", "Create Child Profile", "A child needs no more than a name")) {
    return false;
  }
  parent_.stage.application.screen<AddChildView>().name = std::string("Mia");
  parent_.stage.settle();
  return tap(parent_, "Create Child Profile", "Add Device", "Mia is in the family, with no device yet");
}

bool Walk::startEnrollment() {
  return tap(child_, "I'm a Child", "Start Enrollment", "A child's device offers to enrol") &&
         tap(child_, "Start Enrollment", "Scan QR Code", "It shows a code, and the same as a QR code");
}

// There is no screen to scan the other window's code from, so its text is passed on directly.
bool Walk::scan() {
  if (!tap(parent_, "Add Device", "Phone or Tablet", "The parent adds a device for Mia") ||
      !tap(parent_, "Phone or Tablet", "Paste Code",
           "A code comes from a camera, a picture or the clipboard") ||
      !see(parent_, "Read From Screen", "…or from another window on this screen")) {
    return false;
  }
  parent_.stage.application.screen<ScannerView>().handleScannedCode(
      child_.stage.application.screen<ChildEnrollmentView>().qrCodeData());
  parent_.stage.settle();
  return see(parent_, "QR Code Scanned", "The code was read, and names the device") &&
         tap(parent_, "Complete Enrollment", "Device Enrolled!", "The device belongs to Mia") &&
         tap(parent_, "Done", "Mia", "Back to the family");
}

bool Walk::finishEnrollment() {
  return switchOn() && wait(child_, 60s, "Protection Active", "A minute later it has checked in again") &&
         tap(child_, "Settings", "Device Information", "Its settings say what it is and where it asks");
}

bool Walk::watch() {
  if (!ask("www.school.example") || !ask("cdn.games.example") || !ask("news.example")) {
    return false;
  }
  parent_.stage.window().resize(parent_.stage.window().width(), 1500);
  parent_.stage.advance(30s);
  return tap(parent_, "Mia", "school.example", "The parent sees what the device has just asked for") &&
         tap(parent_, "Sites Allowed", "news.example", "What was let through can be blocked from here");
}

bool Walk::block() {
  openMenuOf(parent_.stage, "news.example");
  return tap(parent_, "Block", "Sites Blocked", "Drawing it to the right does the same") &&
         askForBlocked("news.example") &&
         tap(parent_, "Sites Blocked", "news.example", "Asked for again, it is refused");
}

bool Walk::tap(const Side& side, const QString& control, const QString& expected, const char* meaning) {
  side.stage.click(control);
  side.stage.advance(2s);
  return show(side, QStringLiteral("“%1” → “%2”").arg(control, expected), expected, meaning);
}

bool Walk::wait(const Side& side, std::chrono::seconds time, const QString& expected, const char* meaning) {
  side.stage.advance(time);
  return see(side, expected, meaning);
}

bool Walk::see(const Side& side, const QString& expected, const char* meaning) {
  return show(side, QStringLiteral("“%1”").arg(expected), expected, meaning);
}

bool Walk::show(const Side& side, const QString& deed, const QString& expected, const char* meaning) {
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

bool Walk::tell(bool isSo, const QString& deed, const QString& meaning) {
  QTextStream out(stdout);
  if (isSo) {
    out << QStringLiteral("  %1. %2. %3\n").arg(++step_, 2).arg(deed, meaning);
  } else {
    out << "FAILED " << meaning << ": " << deed << '\n';
  }
  return isSo;
}

}  // namespace quillmar
