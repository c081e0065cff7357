#include "programs/quillmar/window_application.h"

#include <QByteArrayView>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <QTextStream>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <vector>

namespace quillmar {
namespace {

// Collects Qt's messages while the application is created. They are printed only if a window can be shown;
// otherwise our own sentence replaces them.
struct Said {
  std::mutex mutex;
  std::vector<QString> lines;
  QString problemWithDisplay;
  // Where Qt looks for a display's socket, if the session has no such folder. Qt would make one in /tmp, say
  // so and leave it.
  std::optional<QTemporaryDir> runtimeFolder;
};

Said& said() {
  static Said all;
  return all;
}

constexpr const char* runtimeFolderName = "XDG_RUNTIME_DIR";

void lendRuntimeFolder() {
  if (qEnvironmentVariableIsEmpty(runtimeFolderName)) {
    qputenv(runtimeFolderName, QFile::encodeName(said().runtimeFolder.emplace().path()));
  }
}

void takeRuntimeFolderBack() {
  if (said().runtimeFolder) {
    qunsetenv(runtimeFolderName);
    said().runtimeFolder.reset();
  }
}

bool namesDisplay() {
  constexpr std::array names{"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
  return std::ranges::any_of(names, [](const char* name) { return !qEnvironmentVariableIsEmpty(name); });
}

[[noreturn]] void endWithout(const QString& reason) {
  QTextStream(stderr) << "quillmar: No window can be shown here: "
                      << (namesDisplay() ? reason.trimmed() : QStringLiteral("there is no display"))
                      << "; quillmar-agent protects a child's device without one.\n";
  takeRuntimeFolderBack();
  std::_Exit(EXIT_FAILURE);
}

void keep(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  Said& all = said();
  const std::scoped_lock lock(all.mutex);
  if (type == QtFatalMsg) {
    endWithout(all.problemWithDisplay.isEmpty() ? text.section('\n', 0, 0) : all.problemWithDisplay);
  }
  if (all.problemWithDisplay.isEmpty() && QByteArrayView(context.category).startsWith("qt.qpa.")) {
    all.problemWithDisplay = text;
  }
  all.lines.push_back(qFormatLogMessage(type, context, text));
}

}  // namespace

std::unique_ptr<QGuiApplication> makeWindowApplication(int& count, char** arguments) {
  lendRuntimeFolder();
  const auto usual = qInstallMessageHandler(keep);
  auto application = std::make_unique<QGuiApplication>(count, arguments);
  qInstallMessageHandler(usual);
  takeRuntimeFolderBack();
  const std::scoped_lock lock(said().mutex);
  for (const QString& line : said().lines) {
    QTextStream(stderr) << line << '\n';
  }
  return application;
}

}  // namespace quillmar
