#include <QCommandLineParser>
#include <QDir>
#include <QGuiApplication>
#include <QProcess>
#include <QTextStream>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "child/child_enrollment_view.h"
#include "tests/support/network_session.h"
#include "tests/ui/support/ui_stage.h"

namespace {

using namespace std::chrono_literals;
using quillmar::ui::UiStage;

// The program's main job without a display: a child's device, from its first tap to a protected screen, in
// its real window and against a running service. Time is virtual, the requests are not.
class Walk {
 public:
  Walk(UiStage& stage, const QDir& directory, QString approval)
      : stage_(stage), directory_(directory), approval_(std::move(approval)) {}

  bool run() {
    stage_.application.machine.tunnel.behaveLikePlatform(
        [this](const std::function<void(bool)>& answer) { stage_.permissionPrompt.ask(answer); });
    stage_.settle();
    return see("Welcome to Quillmar", "A fresh installation asks who will use the device") &&
           tap("I'm a Child", "Start Enrollment", "A child's device offers to enrol") &&
           tap("Start Enrollment", "Scan QR Code", "It shows a code, and the same as a QR code") &&
           approve() && wait(6s, "Allow", "A parent has approved: the system asks about the tunnel") &&
           tap("Allow", "Internet Protection Active", "The tunnel is up: the device is protected") &&
           wait(60s, "Protection Active", "A minute later it has checked in again") &&
           tap("Settings", "Device Information", "Its settings say what it is and where it asks");
  }

 private:
  bool tap(const QString& control, const QString& expected, const char* meaning) {
    stage_.click(control);
    stage_.advance(2s);
    return see(expected, meaning);
  }

  bool wait(std::chrono::seconds time, const QString& expected, const char* meaning) {
    stage_.advance(time);
    return see(expected, meaning);
  }

  bool approve() {
    const auto screen = stage_.application.find<quillmar::ChildEnrollmentView>();
    QStringList command = QProcess::splitCommand(approval_);
    command << QString::fromStdString(screen ? screen->enrollmentCode() : std::string());
    QTextStream(stdout) << "      $ " << command.join(' ') << '\n';
    const QString program = command.takeFirst();
    return QProcess::execute(program, command) == 0;
  }

  bool see(const QString& expected, const char* meaning) {
    QTextStream out(stdout);
    if (!stage_.shows(expected)) {
      out << "FAILED " << meaning << ": “" << expected << "” is not on the screen\n";
      stage_.picture().save(directory_.filePath("failed.png"));
      return false;
    }
    const QString file = directory_.filePath(QStringLiteral("walk-%1.png").arg(++step_));
    out << "  " << step_ << ". " << meaning << " (" << file << ")\n";
    return stage_.picture().save(file);
  }

  UiStage& stage_;
  const QDir directory_;
  const QString approval_;
  int step_ = 0;
};

}  // namespace

int main(int count, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  const QGuiApplication application(count, arguments);
  QCommandLineParser parser;
  parser.addHelpOption();
  parser.addOption({"service", "The root of the service.", "url"});
  parser.addOption({"ca-file", "Its certificate authority, as PEM.", "file"});
  parser.addOption({"approve", "The command that approves the code put behind it.", "command"});
  parser.addPositionalArgument("directory", "Where the pictures go.");
  parser.process(application);
  if (parser.positionalArguments().size() != 1 || !parser.isSet("service") || !parser.isSet("approve")) {
    parser.showHelp(2);
  }
  const QDir directory(parser.positionalArguments().constFirst());
  if (!directory.mkpath(QStringLiteral("."))) {
    return 1;
  }
  UiStage::Options options;
  options.network =
      quillmar::realNetwork(parser.value("service").toStdString(), parser.value("ca-file").toStdString());
  UiStage stage(options);
  return Walk(stage, directory, parser.value("approve")).run() ? 0 : 1;
}
