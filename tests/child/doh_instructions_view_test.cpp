#include "child/doh_instructions_view.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "child/child_home_view.h"
#include "testing/test_application.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Operation = SimulatedTunnel::Operation;

struct Instructions : testing::Test {
  Instructions() {
    app.machine.tunnel.fail(Operation::save, "permission denied");
    app.advance(2s);
    app.screen<ChildHomeView>().showDoHInstructions = true;
  }

  DoHInstructionsView& screen() { return app.screen<DoHInstructionsView>(); }
  bool isUp() { return app.find<DoHInstructionsView>() != nullptr; }

  TestApplication app{asEnrolledChild()};
};

TEST_F(Instructions, a_configuration_found_after_two_seconds_dismisses_the_screen) {
  app.machine.tunnel.fail(Operation::save, std::nullopt);
  EXPECT_EQ(screen().enableTitle(), "Enable Internet Protection");
  screen().enableProtection();
  EXPECT_EQ(screen().enableTitle(), "Configuring...");
  app.advance(1999ms);
  EXPECT_TRUE(isUp());
  app.advance(1ms);
  EXPECT_FALSE(isUp());
}

TEST_F(Instructions, a_failed_configuration_keeps_the_screen_without_a_message) {
  screen().enableProtection();
  EXPECT_FALSE(screen().enableProtection.isEnabled());
  app.advance(2s);
  EXPECT_TRUE(isUp());
  EXPECT_FALSE(screen().isApplyingDNS());
  EXPECT_TRUE(screen().enableProtection.isEnabled());
}

TEST_F(Instructions, can_be_closed_while_configuring) {
  screen().enableProtection();
  screen().done();
  app.advance(1min);
  EXPECT_FALSE(isUp());
}

TEST_F(Instructions, copying_puts_the_endpoint_on_the_clipboard) {
  EXPECT_EQ(screen().dohEndpoint(), "https://dns.example/d1");
  screen().copyDoHEndpoint();
  EXPECT_EQ(app.machine.clipboard.string(), "https://dns.example/d1");
}

TEST_F(Instructions, the_manual_steps_are_in_order) {
  EXPECT_EQ(screen().steps(),
            (std::vector<InstructionStep>{
                {1, "Open Settings", "Go to your device's Settings app", false},
                {2, "Select Wi-Fi", "Tap on Wi-Fi in the settings menu", false},
                {3, "Select Network", "Tap the (i) icon next to your connected network", false},
                {4, "Configure DNS", "Scroll down and tap 'Configure DNS'", false},
                {5, "Select Manual", "Choose 'Manual' instead of 'Automatic'", false},
                {6, "Clear Existing", "Remove any existing DNS servers", false},
                {7, "Add Quillmar", "Add your Quillmar DNS server address", true},
            }));
}

TEST_F(Instructions, the_texts_are_exact) {
  const auto& texts = screen();
  EXPECT_EQ(texts.title(), "Setup Instructions");
  EXPECT_EQ(texts.doneTitle(), "Done");
  EXPECT_EQ(texts.introduction(), "Quillmar can automatically configure DNS protection on your device.");
  EXPECT_EQ(texts.automaticLabel(), "Automatic Setup (Recommended)");
  EXPECT_EQ(texts.automaticHeading(), "Configure Internet Protection");
  EXPECT_EQ(texts.automaticText(),
            "Tap below to enable DNS protection via VPN. You'll see a system prompt asking to allow VPN - "
            "this is safe "
            "and won't affect your internet speed.");
  EXPECT_EQ(
      texts.automaticFootnote(),
      "The VPN only intercepts DNS queries - your regular internet traffic goes directly to websites with no "
      "speed impact.");
  EXPECT_EQ(texts.orTitle(), "OR");
  EXPECT_EQ(texts.manualHeading(), "Manual Setup (Advanced)");
  EXPECT_EQ(texts.endpointTitle(), "Your DoH Endpoint");
  EXPECT_EQ(texts.copyTitle(), "Copy to Clipboard");
  EXPECT_EQ(texts.profileNote(),
            "For system-wide DNS protection, you may need to install a configuration profile. Contact your "
            "parent for "
            "more information.");
}

}  // namespace
}  // namespace quillmar
