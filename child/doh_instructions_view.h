#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "app/session/environment.h"
#include "child/child_app_state.h"
#include "child/protection_actions.h"
#include "child/vpn_dns_manager.h"
#include "presentation/key_commands.h"
#include "presentation/screen_model.h"

namespace quillmar {

struct InstructionStep {
  std::int64_t number = 0;
  std::string title;
  std::string description;
  bool isLast = false;
};

template <>
inline constexpr auto wire<InstructionStep> = record(required("number", &InstructionStep::number),
                                                     required("title", &InstructionStep::title),
                                                     required("description", &InstructionStep::description),
                                                     required("isLast", &InstructionStep::isLast));

// Explains how to set up the protection, by the program or by hand.
class DoHInstructionsView final : public ScreenModel {
 public:
  explicit DoHInstructionsView(Environment& environment);

  Published<bool> isApplyingDNS{*this, "isApplyingDNS", false};

  Text title{*this, "title", "Setup Instructions"};
  Text doneTitle{*this, "doneTitle", "Done"};
  Text introduction{*this, "introduction",
                    "Quillmar can automatically configure DNS protection on your device."};
  Text automaticLabel{*this, "automaticLabel", "Automatic Setup (Recommended)"};
  Text automaticHeading{*this, "automaticHeading", "Configure Internet Protection"};
  Text automaticText{
      *this, "automaticText",
      "Tap below to enable DNS protection via VPN. You'll see a system prompt asking to allow VPN - "
      "this is safe and won't affect your internet speed."};
  Derived<std::string> enableTitle{
      *this, "enableTitle",
      [this] { return std::string(isApplyingDNS() ? "Configuring..." : "Enable Internet Protection"); }};
  Text automaticFootnote{
      *this, "automaticFootnote",
      "The VPN only intercepts DNS queries - your regular internet traffic goes directly to "
      "websites with no speed impact."};
  Text orTitle{*this, "orTitle", "OR"};
  Text manualHeading{*this, "manualHeading", "Manual Setup (Advanced)"};
  Derived<std::vector<InstructionStep>> steps{*this, "steps", [] { return manualSteps(); }};
  Text endpointTitle{*this, "endpointTitle", "Your DoH Endpoint"};
  Derived<std::string> dohEndpoint{*this, "dohEndpoint", [this] { return child_->dohEndpoint(); }};
  Text copyTitle{*this, "copyTitle", "Copy to Clipboard"};
  Text profileNote{
      *this, "profileNote",
      "For system-wide DNS protection, you may need to install a configuration profile. Contact your "
      "parent for more information."};

  Action<> done{*this, "done", [this] { dismiss(); }};
  Action<> enableProtection{*this, "enableProtection", [this] { apply(); },
                            [this] { return !isApplyingDNS(); }};
  Action<> copyDoHEndpoint{*this, "copyDoHEndpoint",
                           [this] { environment_.platform().clipboard.setString(child_->dohEndpoint()); }};
  KeyCommands keys{*this, {{Command::back, done}}};

 private:
  static std::vector<InstructionStep> manualSteps();
  void apply();
  void judge();

  Environment& environment_;
  const std::shared_ptr<ChildAppState> child_;
  const std::shared_ptr<VPNDNSManager> vpn_;
};

}  // namespace quillmar
