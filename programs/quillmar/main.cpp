#include <QGuiApplication>
#include <QQuickWindow>
#include <QTextStream>
#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <variant>

#include "app/quillmar_app.h"
#include "app/session/role_manager.h"
#include "child/child_app_state.h"
#include "child/protection_notices.h"
#include "command_line/command_line.h"
#include "command_line/standard_streams.h"
#include "platform/common/authority_file.h"
#include "platform/common/private_directory.h"
#include "platform/common/state_file.h"
#include "platform/linux/autostart.h"
#include "platform/linux/data_directory.h"
#include "platform/linux/libsecret_item_store.h"
#include "platform/linux/process_privacy.h"
#include "platform/linux/signal_watch.h"
#include "programs/control/control_handler.h"
#include "programs/control/control_server.h"
#include "programs/control/lock_attempt.h"
#include "programs/doctor/doctor.h"
#include "programs/quillmar/application_bus.h"
#include "programs/quillmar/options.h"
#include "programs/quillmar/product_machine.h"
#include "programs/quillmar/sandbox_process.h"
#include "programs/quillmar/window_application.h"
#include "ui/adapters/qt_camera.h"
#include "ui/adapters/qt_notifications.h"
#include "ui/adapters/qt_scene_phase.h"
#include "ui/notice_switch.h"
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

// Whether this is the installation that the desktop entry and the systemd unit use.
bool isOrdinary(const Options& options) {
  return !options.service && !options.simulatesTunnel && options.dataDirectory == quillmar::dataDirectory();
}

void bringToFront(quillmar::ui::Window& window, const std::string& activationToken) {
  if (!activationToken.empty()) {
    qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(activationToken));
  }
  window.raise();
}

// Starts the agent and enables its autostart when a device is enrolled in this window, and disables it when
// the enrollment ends.
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

// The file with the window's own state. An installation with --data-dir has it in its data directory.
std::filesystem::path stateFile(const std::filesystem::path& dataDirectory) {
  const bool isUsual = dataDirectory == quillmar::dataDirectory();
  return (isUsual ? quillmar::stateDirectory() : dataDirectory) / "window.state";
}

int runWindow(const Options& options) {
  quillmar::ProductMachine machine(options);
  QuillmarApp app(machine.ports(), options.service ? quillmar::Deployments::all(*options.service)
                                                   : quillmar::Deployments::builtIn());
  app.launch();
  const quillmar::SignalWatch signals(machine.dispatch, [](int) { QGuiApplication::exit(0); });
  const auto autostart = isOrdinary(options) ? keepAutostart(app) : quillmar::Subscription();

  const quillmar::StateFile state(stateFile(options.dataDirectory));
  quillmar::ProtectionNotices notices(app.environment(), machine.notifications,
                                      quillmar::ui::wantsNotices(state));
  const auto keepingWish =
      notices.isOn.onChange([&] { quillmar::ui::keepWishForNotices(state, notices.isOn()); });
  quillmar::ui::Window window(app.contentView(), machine.qrEncoder, machine.windowStyle,
                              {.stateFile = stateFile(options.dataDirectory),
                               .permissionPrompt = &machine.permissionPrompt,
                               .biometricPrompt = &machine.biometricPrompt,
                               .cameraFrames = &machine.qrReader.frames(),
                               .notices = &notices});
  const auto show = [&window](const std::string& token) { bringToFront(window, token); };
  QObject::connect(&machine.notifications, &quillmar::ui::QtNotifications::chosen, &window.quickWindow(),
                   [&show](const QString& token) { show(token.toStdString()); });
  control::ControlHandler handler(app.environment(),
                                  {.worker = control::Worker::window, .show = show, .yield = {}});
  control::ControlServer server(options.dataDirectory, machine.dispatch,
                                [&handler](const std::string& line, control::ControlServer::Reply reply) {
                                  handler.handle(line, std::move(reply));
                                });
  const quillmar::ui::QtScenePhase phases(window.quickWindow(), [&](WindowPhase phase) {
    app.setScenePhase(scenePhase(phase));
    server.keepReachable();
    if (phase == WindowPhase::active) {
      app.applicationDidBecomeActive();
    }
  });
  // Closing the window must not end a child's protection. If an agent waits for the work, the process ends
  // and the agent goes on; otherwise this process goes on, and a second start shows its window again.
  QObject::connect(&window.quickWindow(), &QWindow::visibleChanged, [&](bool isVisible) {
    if (isVisible) {
      return;
    }
    if (!protects(app) || control::isAgentWaiting(options.dataDirectory)) {
      QGuiApplication::quit();
    } else {
      notices.windowClosed();
    }
  });
  window.show();
  const auto bus = isOrdinary(options) ? std::make_unique<quillmar::ApplicationBus>(show) : nullptr;
  return QGuiApplication::exec();
}

// The installation's lock, or an exit status because another process does the work. Both are empty if the
// folder can't be used: the program then runs without a lock.
struct Entrance {
  std::optional<quillmar::InstanceLock> lock;
  std::optional<int> exitStatus;
};

Entrance enter(const Options& options) {
  constexpr int busy = 5;
  if (quillmar::InstanceLock::obstacle(options.dataDirectory)) {
    return {};
  }
  auto attempt = control::attemptLock(
      options.dataDirectory,
      control::ControlRequest{.operation = std::string(quillmar::rawValue(control::Operation::show)),
                              .activationToken = qEnvironmentVariable("XDG_ACTIVATION_TOKEN").toStdString()});
  if (attempt.holder == control::Worker::window) {
    return {.lock = {}, .exitStatus = 0};
  }
  if (!attempt.lock) {
    QTextStream(stderr) << "quillmar: another program of this installation does not answer\n";
    return {.lock = {}, .exitStatus = busy};
  }
  return {.lock = std::move(attempt.lock), .exitStatus = {}};
}

// Checked once at the start, so that not every call reports it.
bool canTrust(const Options& options) {
  const auto problem = quillmar::problemWithAuthorities(options.caFile);
  if (problem) {
    QTextStream(stderr) << "quillmar: " << problem->c_str() << '\n';
  }
  return !problem;
}

int runDoctor(Options options, int count, char** arguments) {
  const QCoreApplication application(count, arguments);  // applicationDirPath needs it
  quillmar::LibsecretItemStore keyring;
  std::ostringstream report;
  const bool isFit =
      quillmar::doctor::examineMachine({.dataDirectory = options.dataDirectory,
                                        .service = options.service,
                                        .caFile = options.caFile,
                                        .keyring = &keyring,
                                        .cameraModule = quillmar::ui::cameraModule().toStdString()},
                                       report);
  const int said = quillmar::command_line::say(programFor(options),
                                               {quillmar::command_line::Answer::Reason::asked, report.str()});
  return isFit ? said : 1;
}

int showWindow(Options options, int count, char** arguments) {
  // Signals that end the process are handled by the event loop, so that it shuts down in order.
  quillmar::holdEndingSignals();
  const auto application = quillmar::makeWindowApplication(count, arguments);
  QGuiApplication::setApplicationDisplayName("Quillmar");
  QGuiApplication::setDesktopFileName("live.quillmar.Quillmar");
  QGuiApplication::setQuitOnLastWindowClosed(false);

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

}  // namespace

int main(int count, char** arguments) {
  quillmar::command_line::holdStandardStreams();
  quillmar::keepNewFilesPrivate();
  quillmar::forbidCoreDumps();
  QCoreApplication::setApplicationName("quillmar");
  QCoreApplication::setApplicationVersion(QUILLMAR_VERSION);
  const auto read = quillmar::readOptions(quillmar::command_line::wordsOf(count, arguments));
  if (const auto* exitStatus = std::get_if<int>(&read)) {
    return *exitStatus;
  }
  const auto& options = std::get<Options>(read);
  if (!canTrust(options)) {
    return quillmar::unusableAuthorities;
  }
  if (options.asksForDoctor) {
    return runDoctor(options, count, arguments);
  }
  if (quillmar::belongsToAnother(options.dataDirectory)) {
    QTextStream(stderr) << "quillmar: "
                        << control::problemWithFolder(options.dataDirectory).value_or("").c_str() << '\n';
    return unusableFolder;
  }
  return showWindow(options, count, arguments);
}
