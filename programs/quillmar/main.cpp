#include <QGuiApplication>
#include <QQuickWindow>
#include <QTextStream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "app/quillmar_app.h"
#include "app/session/role_manager.h"
#include "child/child_app_state.h"
#include "platform/common/authority_file.h"
#include "platform/common/private_directory.h"
#include "platform/linux/autostart.h"
#include "platform/linux/data_directory.h"
#include "platform/linux/libsecret_item_store.h"
#include "platform/linux/process_privacy.h"
#include "platform/linux/signal_watch.h"
#include "programs/control/control_desk.h"
#include "programs/control/control_server.h"
#include "programs/control/work_place.h"
#include "programs/doctor/doctor.h"
#include "programs/quillmar/application_bus.h"
#include "programs/quillmar/options.h"
#include "programs/quillmar/product_machine.h"
#include "programs/quillmar/sandbox_process.h"
#include "ui/adapters/qt_scene_phase.h"
#include "ui/bridge/shown_text.h"
#include "ui/window.h"

namespace {

namespace control = quillmar::control;

constexpr int unusableFolder = 1;

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

// Whether this is the installation that desktops and systemd mean.
bool isOrdinary(const Options& options) {
  return !options.service && !options.simulatesTunnel && options.dataDirectory == quillmar::dataDirectory();
}

void showWindow(quillmar::ui::Window& window, const std::string& activationToken) {
  if (!activationToken.empty()) {
    qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activationToken));
  }
  window.raise();
}

// A device that is enrolled in this window is protected by the agent once that is closed, and after each
// login.
quillmar::Subscription keepAutostart(QuillmarApp& app) {
  const auto child = app.environment().childAppState();
  auto& queue = app.environment().platform().dispatch.global(quillmar::QualityOfService::background);
  return child->isEnrolled.onChange([&queue, &state = *child] {
    queue.async([isEnrolled = state.isEnrolled()] {
      const auto problem = isEnrolled ? quillmar::enableAutostart() : quillmar::disableAutostart();
      if (problem) {
        QTextStream(stderr) << "quillmar: " << problem->c_str() << '\n';
      }
    });
  });
}

int runWindow(const Options& options) {
  quillmar::ProductMachine machine(options);
  QuillmarApp app(machine.ports(), options.service ? quillmar::Deployments::all(*options.service)
                                                   : quillmar::Deployments::builtIn());
  app.launch();
  const quillmar::SignalWatch signals(machine.ports().dispatch, [](int) { QGuiApplication::exit(0); });
  const auto autostart = isOrdinary(options) ? keepAutostart(app) : quillmar::Subscription();

  quillmar::ui::Window window(
      app.contentView(), machine.qrEncoder(), machine.windowStyle(),
      {.geometryFile = quillmar::ui::exactText((options.dataDirectory / "window.ini").string()),
       .permissionPrompt = &machine.permissionPrompt(),
       .biometricPrompt = &machine.biometricPrompt(),
       .cameraFrames = &machine.cameraFrames()});
  const auto show = [&window](const std::string& token) { showWindow(window, token); };
  control::ControlDesk desk(app.environment(),
                            {.worker = control::Worker::window, .show = show, .yield = {}});
  control::ControlServer server(options.dataDirectory, machine.ports().dispatch,
                                [&desk](const std::string& line, control::ControlServer::Reply reply) {
                                  desk.handle(line, std::move(reply));
                                });
  const quillmar::ui::QtScenePhase phases(window.quickWindow(), [&](WindowPhase phase) {
    app.setScenePhase(scenePhase(phase));
    server.keepReachable();
    if (phase == WindowPhase::active) {
      app.applicationDidBecomeActive();
    }
  });
  // A closed window leaves a child's protection running: in an agent that waits for the work, or else in this
  // process, whose window a second start shows again.
  QObject::connect(&window.quickWindow(), &QWindow::visibleChanged, [&](bool isVisible) {
    if (!isVisible && (!protects(app) || control::isAgentWaiting(options.dataDirectory))) {
      QGuiApplication::quit();
    }
  });
  window.show();
  const auto bus = isOrdinary(options) ? std::make_unique<quillmar::ApplicationBus>(show) : nullptr;
  return QGuiApplication::exec();
}

// The lock on the installation, held from here on; or what the program ends with, as another one has the
// work. Where the folder can't be used at all the program runs without a lock.
struct Entrance {
  std::optional<quillmar::InstanceLock> lock;
  std::optional<int> exitStatus;
};

Entrance enter(const Options& options) {
  constexpr int busy = 5;
  if (quillmar::InstanceLock::obstacle(options.dataDirectory)) {
    return {};
  }
  auto place = control::takeWorkPlace(
      options.dataDirectory,
      control::ControlRequest{.operation = std::string(quillmar::rawValue(control::Operation::show)),
                              .activationToken = qEnvironmentVariable("XDG_ACTIVATION_TOKEN").toStdString()});
  if (place.occupant == control::Worker::window) {
    return {.lock = {}, .exitStatus = 0};
  }
  if (!place.lock) {
    QTextStream(stderr) << "quillmar: another program of this installation does not answer\n";
    return {.lock = {}, .exitStatus = busy};
  }
  return {.lock = std::move(place.lock), .exitStatus = {}};
}

// Said once, at the start, and not by each call to the service.
bool canTrust(const Options& options) {
  const auto problem = quillmar::problemWithAuthorities(options.caFile);
  if (problem) {
    QTextStream(stderr) << "quillmar: " << problem->c_str() << '\n';
  }
  return !problem;
}

int runDoctor(int count, char** arguments) {
  const QCoreApplication application(count, arguments);
  const Options options = quillmar::parseOptions(application);
  if (!canTrust(options)) {
    return quillmar::unusableAuthorities;
  }
  quillmar::LibsecretItemStore keyring;
  const bool isFit = quillmar::doctor::examineMachine({.dataDirectory = options.dataDirectory,
                                                       .service = options.service,
                                                       .caFile = options.caFile,
                                                       .keyring = &keyring},
                                                      std::cout);
  return isFit ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  quillmar::keepNewFilesPrivate();
  quillmar::forbidCoreDumps();
  QCoreApplication::setApplicationName("quillmar");
  QCoreApplication::setApplicationVersion(QUILLMAR_VERSION);
  if (quillmar::asksForDoctor(count, arguments)) {
    return runDoctor(count, arguments);
  }
  // A session's end, a closed terminal and Ctrl-C find the window in its loop, which it leaves in order.
  quillmar::holdEndingSignals();
  const QGuiApplication application(count, arguments);
  QGuiApplication::setApplicationDisplayName("Quillmar");
  QGuiApplication::setDesktopFileName("live.quillmar.Quillmar");
  QGuiApplication::setQuitOnLastWindowClosed(false);

  Options options = quillmar::parseOptions(application);
  if (!canTrust(options)) {
    return quillmar::unusableAuthorities;
  }
  if (quillmar::belongsToAnother(options.dataDirectory)) {
    QTextStream(stderr) << "quillmar: "
                        << control::problemWithFolder(options.dataDirectory).value_or("").c_str() << '\n';
    return unusableFolder;
  }
  const Entrance entrance = enter(options);
  if (entrance.exitStatus) {
    return *entrance.exitStatus;
  }
  quillmar::SandboxProcess sandbox;
  if (options.startsSandbox && !useSandbox(sandbox, options)) {
    return 1;
  }
  return runWindow(options);
}
