#include <QGuiApplication>
#include <QProcess>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTextStream>
#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "app/quillmar_app.h"
#include "bench/measure.h"
#include "tests/support/fake_platform.h"
#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/qt_window_style.h"
#include "ui/window.h"

// How long a window takes from the first line of `main` to its first frame: the role screen, and the emptiest
// window of Qt Quick Controls, each in a process of its own so that neither warms the other up.
namespace {

constexpr int rounds = 21;
constexpr auto empty = "empty";
constexpr auto role = "role";

int exitAfterFirstFrame(QQuickWindow& window) {
  QObject::connect(
      &window, &QQuickWindow::frameSwapped, &window,
      [] {
        QTextStream(stdout) << quillmar::bench::cpuTime(CLOCK_PROCESS_CPUTIME_ID).count() << '\n';
        QGuiApplication::quit();
      },
      Qt::SingleShotConnection);
  window.show();
  return QGuiApplication::exec();
}

int showEmptyWindow() {
  QQmlEngine engine;
  QQmlComponent component(&engine);
  component.setData("import QtQuick.Controls\nApplicationWindow { width: 460; height: 860 }", QUrl());
  const std::unique_ptr<QObject> window(component.create());
  return exitAfterFirstFrame(*qobject_cast<QQuickWindow*>(window.get()));
}

int showRoleScreen() {
  quillmar::FakePlatform machine;
  quillmar::QuillmarApp app(machine.ports(), quillmar::Deployments::builtIn());
  app.launch();
  const quillmar::ui::DesktopSettings desktop;
  quillmar::ui::QtWindowStyle style(desktop);
  const quillmar::ui::Window window(app.contentView(), machine.qrEncoder, style, {});
  return exitAfterFirstFrame(window.quickWindow());
}

// Milliseconds; negative when the process said nothing.
double measure(const QString& program, const QString& what) {
  QProcess process;
  process.start(program, {what});
  process.waitForFinished();
  bool isNumber = false;
  const double seconds = process.readAllStandardOutput().trimmed().toDouble(&isNumber);
  return isNumber ? seconds * 1000 : -1;
}

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

int compare(const QString& program) {
  std::vector<double> emptyTimes;
  std::vector<double> roleTimes;
  for (int round = 0; round < rounds; ++round) {
    emptyTimes.push_back(measure(program, empty));
    roleTimes.push_back(measure(program, role));
  }
  if (std::ranges::min(emptyTimes) < 0 || std::ranges::min(roleTimes) < 0) {
    QTextStream(stderr) << "a window did not come up\n";
    return 1;
  }
  QTextStream(stdout) << "first frame, median of " << rounds << ": empty window " << median(emptyTimes)
                      << " ms, role screen " << median(roleTimes) << " ms, ratio "
                      << median(roleTimes) / median(emptyTimes) << '\n';
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  QGuiApplication application(count, arguments);
  const QString what = application.arguments().value(1);
  return what == empty  ? showEmptyWindow()
         : what == role ? showRoleScreen()
                        : compare(application.applicationFilePath());
}
