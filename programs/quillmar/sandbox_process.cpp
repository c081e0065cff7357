#include "programs/quillmar/sandbox_process.h"

#include <sys/prctl.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTextStream>
#include <csignal>

#include "ui/bridge/shown_text.h"

namespace quillmar {
namespace {

constexpr int startMilliseconds = 20000;
constexpr int endMilliseconds = 3000;

// Looks beside this program, as installed, then in the build tree.
QString sandboxProgram() {
  const QDir here(QCoreApplication::applicationDirPath());
  const QString installed = here.filePath("quillmar-sandbox");
  return QFileInfo(installed).isExecutable()
             ? installed
             : QDir::cleanPath(here.filePath("../../sandbox/quillmar-sandbox"));
}

}  // namespace

std::optional<SandboxProcess::Addresses> SandboxProcess::start(const std::filesystem::path& dataDirectory) {
  process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  // The kernel ends the service with this process, even after a crash.
  process_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
  process_.start(sandboxProgram(), {"--data", ui::exactText((dataDirectory / "sandbox").string())});
  if (!process_.waitForReadyRead(startMilliseconds)) {
    QTextStream(stderr) << "quillmar: the stand-in service does not start (" << sandboxProgram() << ")\n";
    return std::nullopt;
  }
  static const QRegularExpression addresses(R"((http://\S+) (https://\S+) ca=(.+))");
  const auto match = addresses.match(QString::fromUtf8(process_.readLine()).trimmed());
  if (!match.hasMatch()) {
    return std::nullopt;
  }
  return Addresses{match.captured(1).toStdString(), match.captured(2).toStdString(),
                   match.captured(3).toStdString()};
}

std::string SandboxProcess::approval() const { return (sandboxProgram() + " approve").toStdString(); }

SandboxProcess::~SandboxProcess() {
  if (process_.state() != QProcess::NotRunning) {
    process_.terminate();
    process_.waitForFinished(endMilliseconds);
  }
}

}  // namespace quillmar
