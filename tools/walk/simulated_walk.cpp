#include "tools/walk/simulated_walk.h"

#include <QTextStream>
#include <utility>

#include "child/child_app_state.h"
#include "tools/walk/dns_client.h"
#include "ui/bridge/shown_text.h"

namespace quillmar {

using namespace std::chrono_literals;

SimulatedWalk::SimulatedWalk(ui::UiStage& parent, ui::UiStage& child, const QDir& directory,
                             std::string caFile)
    : Walk(parent, child, directory), caFile_(std::move(caFile)) {}

bool SimulatedWalk::begin() {
  child().stage.application.machine.tunnel.behaveLikePlatform(
      [this](const std::function<void(bool)>& answer) { child().stage.permissionPrompt.ask(answer); });
  return true;
}

bool SimulatedWalk::switchOn() {
  return wait(child(), 6s, "Allow", "The child's device has heard of it: the system asks about the tunnel") &&
         tap(child(), "Allow", "Internet Protection Active", "The tunnel is up: the device is protected");
}

// Sends the device's DNS query to its own endpoint, as the tunnel would.
bool SimulatedWalk::ask(const std::string& name) {
  const auto& endpoint = child().stage.application.child().dohEndpoint();
  if (askOverHttps(endpoint, name, caFile_)) {
    return true;
  }
  QTextStream(stdout) << "FAILED to ask " << ui::exactText(endpoint) << " for " << ui::exactText(name)
                      << '\n';
  return false;
}

}  // namespace quillmar
