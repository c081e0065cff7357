#include "child/doh_instructions_view.h"

#include <chrono>

namespace quillmar {
namespace {

constexpr auto applicationTime = std::chrono::seconds(2);

}  // namespace

DoHInstructionsView::DoHInstructionsView(Environment& environment)
    : ScreenModel("DoHInstructionsView"),
      environment_(environment),
      child_(environment.childAppState()),
      vpn_(environment.vpnManager()) {
  follow(*child_);
  follow(*vpn_);
}

std::vector<InstructionStep> DoHInstructionsView::manualSteps() {
  return {{1, "Open Settings", "Go to your device's Settings app"},
          {2, "Select Wi-Fi", "Tap on Wi-Fi in the settings menu"},
          {3, "Select Network", "Tap the (i) icon next to your connected network"},
          {4, "Configure DNS", "Scroll down and tap 'Configure DNS'"},
          {5, "Select Manual", "Choose 'Manual' instead of 'Automatic'"},
          {6, "Clear Existing", "Remove any existing DNS servers"},
          {7, "Add Quillmar", "Add your Quillmar DNS server address", true}};
}

void DoHInstructionsView::apply() {
  isApplyingDNS = true;
  quillmar::enableProtection(environment_);
  environment_.platform().dispatch.main().asyncAfter(applicationTime, weakly([this] { judge(); }));
}

void DoHInstructionsView::judge() {
  isApplyingDNS = false;
  if (vpn_->isConnected() || vpn_->isConfigured()) {
    dismiss();
  }
}

}  // namespace quillmar
