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
#include "client/network_service.h"
#include "testing/fake_platform.h"
#include "testing/test_application.h"
#include "testing/ui/offscreen.h"
#include "ui/adapters/desktop_settings.h"
#include "ui/adapters/qt_window_style.h"
#include "ui/window.h"

// Wall time and processor time from the start of the process to the first frame: of the role screen, of a
// parent's dashboard, and of an empty Qt Quick Controls window. Each runs in its own process, because a
// second one would find warm caches.
namespace {

constexpr int rounds = 41;

std::chrono::nanoseconds monotonicNow() { return std::chrono::steady_clock::now().time_since_epoch(); }

int exitAfterFirstFrame(QQuickWindow& window) {
  QObject::connect(
      &window, &QQuickWindow::frameSwapped, &window,
      [] {
        QTextStream(stdout) << monotonicNow().count() << ' '
                            << quillmar::bench::cpuTime(CLOCK_PROCESS_CPUTIME_ID).count() << '\n';
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

int showApplication(const quillmar::StoredSettings& stored) {
  quillmar::FakePlatform machine;
  for (const auto& [key, value] : stored) {
    machine.settings.set(key, value);
  }
  quillmar::QuillmarApp app(machine.ports(), quillmar::Deployments::builtIn());
  app.launch();
  const quillmar::ui::DesktopSettings desktop;
  quillmar::ui::QtWindowStyle style(desktop);
  const quillmar::ui::Window window(app.contentView(), machine.qrEncoder, style, {});
  return exitAfterFirstFrame(window.quickWindow());
}

// In milliseconds.
struct Times {
  std::vector<double> wall;
  std::vector<double> processor;
};

struct Candidate {
  QString name;
  std::function<int()> show;
  Times times{};
};

std::vector<Candidate> candidates() {
  auto signedIn = quillmar::asParent();
  signedIn[quillmar::NetworkService::authTokenKey] = std::string("token");
  return {{QStringLiteral("empty"), showEmptyWindow},
          {QStringLiteral("role"), [] { return showApplication({}); }},
          {QStringLiteral("dashboard"), [signedIn] { return showApplication(signedIn); }}};
}

bool measure(const QString& program, Candidate& candidate) {
  QProcess process;
  const auto started = monotonicNow();
  process.start(program, {candidate.name});
  process.waitForFinished();
  const auto words = process.readAllStandardOutput().trimmed().split(' ');
  if (words.size() != 2) {
    return false;
  }
  candidate.times.wall.push_back(static_cast<double>(words[0].toLongLong() - started.count()) / 1e6);
  candidate.times.processor.push_back(words[1].toDouble() * 1000);
  return true;
}

double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values[values.size() / 2];
}

int compare(const QString& program) {
  auto all = candidates();
  for (int round = 0; round < rounds; ++round) {
    for (auto& candidate : all) {
      if (!measure(program, candidate)) {
        QTextStream(stderr) << candidate.name << " did not come up\n";
        return 1;
      }
    }
  }
  QTextStream out(stdout);
  out << "first frame, medians of " << rounds << '\n';
  for (const auto& [name, show, times] : all) {
    out << name << ": wall " << median(times.wall) << " ms, "
        << median(times.wall) / median(all[0].times.wall) << " times the empty window; processor "
        << median(times.processor) << " ms, " << median(times.processor) / median(all[0].times.processor)
        << " times\n";
  }
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  quillmar::ui::drawOffscreen();
  QGuiApplication application(count, arguments);
  const QString what = application.arguments().value(1);
  for (const auto& candidate : candidates()) {
    if (candidate.name == what) {
      return candidate.show();
    }
  }
  return compare(application.applicationFilePath());
}
