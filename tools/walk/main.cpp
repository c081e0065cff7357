#include <QDir>
#include <QGuiApplication>
#include <QTextStream>
#include <memory>
#include <stdexcept>
#include <string>

#include "child/vpn_dns_manager.h"
#include "command_line/command_line.h"
#include "platform/linux/networkmanager_tunnel.h"
#include "testing/network_session.h"
#include "testing/ui/offscreen.h"
#include "testing/ui/ui_stage.h"
#include "tools/common/start.h"
#include "tools/walk/real_machine.h"
#include "tools/walk/real_walk.h"
#include "tools/walk/simulated_walk.h"
#include "ui/bridge/shown_text.h"

namespace {

using namespace std::chrono_literals;
using quillmar::ui::exactText;
using quillmar::ui::UiStage;

// The exit status of a test program that can't run on this computer.
constexpr int skipped = 77;

struct Given {
  std::string directory;
  std::string service;
  std::string caFile;
  bool isReal = false;
};

quillmar::command_line::Program programFor(Given& given) {
  using namespace quillmar::command_line;
  return {.name = "quillmar-walk",
          .about = "Walks the program's main job in two real windows without a display, and draws each step.",
          .arguments = {{"DIRECTORY", "Where the pictures go", to(given.directory)}},
          .options = {
              {"--service", "URL", "The root of the service", to(given.service)},
              quillmar::authorityOption(given.caFile),
              {"--real", "",
               "Give the child a computer of its own, with NetworkManager, the tunnel program and a service "
               "beyond its wire, in namespaces that end with this program. Needs root",
               to(given.isReal)},
          }};
}

void complain(const std::string& problem) {
  QTextStream(stderr) << "quillmar-walk: " << exactText(problem) << '\n';
}

int statusOf(bool succeeded) { return succeeded ? 0 : 1; }

int walkSimulated(const Given& given, const QDir& directory) {
  UiStage::Options options;
  options.network = quillmar::realNetwork(given.service, given.caFile);
  UiStage parent(options);
  UiStage child(options);
  return statusOf(quillmar::SimulatedWalk(parent, child, directory, given.caFile).run());
}

// NetworkManager answers in real time, so its timeouts must be long enough for an application in virtual
// time.
std::unique_ptr<quillmar::TunnelService> makeTunnel(quillmar::Dispatch& time) {
  quillmar::NetworkManagerTunnel::Options options;
  options.timeout = 30s;
  options.startTimeout = 30s;
  return std::make_unique<quillmar::NetworkManagerTunnel>(
      time, std::string(quillmar::VPNDNSManager::tunnelBundleId), options);
}

int walkReal(const QDir& directory) {
  try {
    quillmar::RealMachine machine;
    UiStage::Options options;
    options.network = quillmar::realNetwork(machine.service(), machine.caFile());
    UiStage parent(options);
    options.makeTunnel = makeTunnel;
    return statusOf(quillmar::RealWalk(machine, parent, std::make_unique<UiStage>(options), directory).run());
  } catch (const std::runtime_error& error) {
    complain(error.what());
    return 1;
  }
}

int walk(const Given& given, int count, char** arguments) {
  const QDir directory(exactText(given.directory));
  if (!directory.mkpath(QStringLiteral("."))) {
    return 1;
  }
  quillmar::ui::drawOffscreen();
  const QGuiApplication application(count, arguments);
  return given.isReal ? walkReal(directory) : walkSimulated(given, directory);
}

}  // namespace

int main(int count, char** arguments) {
  Given given;
  const auto program = programFor(given);
  if (const auto status = quillmar::endsAtOnce(program, count, arguments, given.caFile)) {
    return *status;
  }
  if (given.service.empty() != given.isReal) {
    return quillmar::command_line::say(program,
                                       refusal(program, quillmar::command_line::Answer::Reason::wrongOption,
                                               "either '--service' or '--real' is needed."));
  }
  if (!given.isReal) {
    return walk(given, count, arguments);
  }
  if (const auto obstacle = quillmar::RealMachine::obstacle(); !obstacle.empty()) {
    complain(obstacle);
    return skipped;
  }
  return quillmar::RealMachine::around([&] { return walk(given, count, arguments); });
}
