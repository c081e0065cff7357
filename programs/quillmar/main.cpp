#include <QGuiApplication>
#include <QQuickWindow>
#include <QTextStream>
#include <csignal>
#include <iostream>

#include "app/quillmar_app.h"
#include "app/role_manager.h"
#include "child/child_app_state.h"
#include "programs/doctor/doctor.h"
#include "programs/quillmar/options.h"
#include "programs/quillmar/product_machine.h"
#include "programs/quillmar/sandbox_process.h"
#include "programs/quillmar/single_instance.h"
#include "ui/adapters/qt_scene_phase.h"
#include "ui/window.h"

namespace {

using quillmar::DeviceRole;
using quillmar::Options;
using quillmar::QuillmarApp;
using quillmar::ScenePhase;
using quillmar::ui::WindowPhase;

ScenePhase scenePhase(WindowPhase phase) {
  switch (phase) {
    case WindowPhase::active:
      return ScenePhase::active;
    case WindowPhase::inactive:
      return ScenePhase::inactive;
    case WindowPhase::background:
      break;
  }
  return ScenePhase::background;
}

bool protects(QuillmarApp& app) {
  return app.environment().roleManager()->currentRole() == DeviceRole::child &&
         app.environment().childAppState()->isEnrolled();
}

bool useSandbox(quillmar::SandboxProcess& sandbox, Options& options) {
  const auto addresses = sandbox.start(options.dataDirectory);
  if (!addresses) {
    return false;
  }
  options.service = addresses->secureUrl;
  options.caFile = addresses->caFile;
  QTextStream(stdout) << "The stand-in service runs at " << addresses->url.c_str()
                      << ". To be the parent: " << sandbox.approval().c_str() << " CODE\n";
  return true;
}

int runWindow(const Options& options, quillmar::SingleInstance& instance) {
  quillmar::ProductMachine machine(options);
  QuillmarApp app(machine.ports(), options.service ? quillmar::Deployments::all(*options.service)
                                                   : quillmar::Deployments::builtIn());
  app.launch();

  quillmar::ui::Window window(
      app.contentView(), machine.qrEncoder(), machine.windowStyle(),
      {.geometryFile = QString::fromStdString((options.dataDirectory / "window.ini").string()),
       .permissionPrompt = &machine.permissionPrompt(),
       .biometricPrompt = &machine.biometricPrompt(),
       .cameraFrames = &machine.cameraFrames()});
  const quillmar::ui::QtScenePhase phases(window.quickWindow(), [&app](WindowPhase phase) {
    app.setScenePhase(scenePhase(phase));
    if (phase == WindowPhase::active) {
      app.applicationDidBecomeActive();
    }
  });
  instance.onKnock([&window] { window.raise(); });
  // A closed window leaves a child's protection running; a second start shows it again.
  QObject::connect(&window.quickWindow(), &QWindow::visibleChanged, [&app](bool isVisible) {
    if (!isVisible && !protects(app)) {
      QGuiApplication::quit();
    }
  });
  window.show();
  return QGuiApplication::exec();
}

int runDoctor(int count, char** arguments) {
  const QCoreApplication application(count, arguments);
  const Options options = quillmar::parseOptions(application);
  const bool isFit = quillmar::doctor::examineMachine(
      {.dataDirectory = options.dataDirectory, .service = options.service, .caFile = options.caFile},
      std::cout);
  return isFit ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  // Whoever read the log may go; the protection stays.
  std::signal(SIGPIPE, SIG_IGN);
  QCoreApplication::setApplicationName("quillmar");
  QCoreApplication::setApplicationVersion(QUILLMAR_VERSION);
  if (quillmar::asksForDoctor(count, arguments)) {
    return runDoctor(count, arguments);
  }
  const QGuiApplication application(count, arguments);
  QGuiApplication::setApplicationDisplayName("Quillmar");
  QGuiApplication::setDesktopFileName("live.quillmar.Quillmar");
  QGuiApplication::setQuitOnLastWindowClosed(false);

  Options options = quillmar::parseOptions(application);
  quillmar::SingleInstance instance;
  if (instance.take(options.dataDirectory) == quillmar::SingleInstance::Place::second) {
    return 0;
  }
  quillmar::SandboxProcess sandbox;
  if (options.startsSandbox && !useSandbox(sandbox, options)) {
    return 1;
  }
  return runWindow(options, instance);
}
