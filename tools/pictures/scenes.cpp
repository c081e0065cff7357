#include "tools/pictures/scenes.h"

#include <QGuiApplication>
#include <chrono>

#include "app/country_selection_view.h"
#include "app/role_selection_view.h"
#include "child/child_app_state.h"
#include "child/child_enrollment_view.h"
#include "child/child_home_view.h"
#include "child/vpn_dns_manager.h"

namespace quillmar {
namespace {

using ui::UiStage;
using namespace std::chrono_literals;

constexpr auto initAnswer =
    R"({"enrollment_code":"K7QX2M","device_id":"5E0B4C1A-9F7D-4B52-8C33-0A1B2C3D4E5F","expires_at":"2026-01-01T00:00:00Z"})";

StoredSettings enrolled() { return asEnrolledChild("https://dns.quillmar.live/d/5e0b4c1a9f7d/dns-query"); }

// Calls the action directly: with large text the card may be outside the window.
CountrySelectionView& chooseParent(UiStage& stage) {
  stage.application.screen<RoleSelectionView>().cards.find("parent")->action();
  stage.settle();
  return stage.application.screen<CountrySelectionView>();
}

void holdEnrollment(UiStage& stage) {
  stage.application.machine.http.hold("POST", "/enrollment/init");
  stage.application.screen<ChildEnrollmentView>().startEnrollment();
}

void showCode(UiStage& stage) {
  stage.application.machine.http.answer("POST", "/enrollment/init", 200, initAnswer);
  stage.application.screen<ChildEnrollmentView>().startEnrollment();
}

void letCodeExpire(UiStage& stage) {
  showCode(stage);
  stage.settle();
  stage.application.machine.http.answerAlways("GET",
                                              "/enrollment/status/5E0B4C1A-9F7D-4B52-8C33-0A1B2C3D4E5F", 200,
                                              R"({"status":"expired","device_id":"x"})");
  stage.advance(6s);
}

void refuseEnrollment(UiStage& stage, const char* words) {
  stage.application.machine.http.answer("POST", "/enrollment/init", 500, words);
  stage.application.screen<ChildEnrollmentView>().startEnrollment();
}

void longCode(UiStage& stage) {
  showCode(stage);
  stage.settle();
  auto& screen = stage.application.screen<ChildEnrollmentView>();
  screen.enrollmentCode = "THIS-IS-A-VERY-LONG-ENROLLMENT-CODE-0123456789";
  screen.isPolling = false;
  screen.qrCodeData = std::string(4000, 'x');
}

void connect(UiStage& stage) {
  auto& child = stage.application.child();
  child.isConnectedToServer = true;
  child.lastCheckinTime = stage.application.machine.dispatch.now() - 3min;
}

void reach(UiStage& stage, bool configured, bool connecting, bool connected) {
  connect(stage);
  auto& vpn = stage.application.vpn();
  vpn.isConfigured = configured;
  vpn.isConnecting = connecting;
  vpn.isConnected = connected;
  vpn.statusMessage = connected    ? "DNS Protection Active"
                      : connecting ? "Connecting..."
                      : configured ? "Disconnected"
                                   : "Not configured";
}

void openChildSettings(UiStage& stage) { stage.application.screen<ChildHomeView>().openSettings(); }

// NOLINTBEGIN(misc-misleading-bidirectional): misleading is what this text is for
void hostileEndpoint(UiStage& stage) {
  stage.application.child().deviceID = "<b>!</b>\n\u202Eevil";
  stage.application.child().dohEndpoint =
      "https://<img src=x>/" + std::string(180, 'a') + "/\u202E<script>alert(1)</script>";
  stage.application.child().dohBaseUrl =
      "https://\U0001F9D1\u200D\U0001F680.example/\u0645\u0631\u062D\u0628\u0627";
  openChildSettings(stage);
}
// NOLINTEND(misc-misleading-bidirectional)

}  // namespace

std::vector<Shot> childDeviceScenes() {
  return {
      {"role", {}},
      {"role-text-200", {}, [](UiStage&) {}, 2},
      {"region", {}, chooseParent},
      {"region-chosen", {}, [](UiStage& s) { chooseParent(s).selectedRegion = Region::singapore; }},
      {"enrollment-start", asNewChild()},
      {"enrollment-start-text-200", asNewChild(), [](UiStage&) {}, 2},
      {"enrollment-loading", asNewChild(), holdEnrollment},
      {"enrollment-code", asNewChild(), showCode},
      {"enrollment-code-long", asNewChild(), longCode},
      {"enrollment-expired", asNewChild(), letCodeExpire},
      {"enrollment-failed-hostile", asNewChild(),
       [](UiStage& s) {
         refuseEnrollment(
             s,
             R"({"error":"<b>Unexpected</b> <a href='http://x'>token</a> &lt; in JSON at position 0, near a very long word Donaudampfschifffahrtsgesellschaftskapitaenswitwe"})");
       }},
      {"home-connecting", enrolled()},
      {"home-required", enrolled(), [](UiStage& s) { reach(s, false, false, false); }},
      {"home-required-warning", enrolled(),
       [](UiStage& s) {
         reach(s, false, false, false);
         s.application.child().dohConfigWarning =
             "VPN setup failed: permission denied. Please allow the VPN configuration when asked.";
       }},
      {"home-tunnel-connecting", enrolled(), [](UiStage& s) { reach(s, true, true, false); }},
      {"home-disconnected", enrolled(), [](UiStage& s) { reach(s, true, false, false); }},
      {"home-active", enrolled(), [](UiStage& s) { reach(s, true, false, true); }},
      {"home-active-text-200", enrolled(), [](UiStage& s) { reach(s, true, false, true); }, 2},
      {"home-permission", enrolled(),
       [](UiStage& s) {
         reach(s, false, false, false);
         s.permissionPrompt.ask([](bool) {});
       }},
      {"settings-new", enrolled(),
       [](UiStage& s) {
         reach(s, false, false, false);
         openChildSettings(s);
       }},
      {"settings-active", enrolled(),
       [](UiStage& s) {
         reach(s, true, false, true);
         s.application.child().dohBaseUrl = "https://dns.quillmar.live";
         openChildSettings(s);
       }},
      {"settings-disconnected", enrolled(),
       [](UiStage& s) {
         reach(s, true, false, false);
         openChildSettings(s);
       }},
      {"settings-hostile", enrolled(), hostileEndpoint},
      {"settings-text-200", enrolled(),
       [](UiStage& s) {
         reach(s, true, false, true);
         openChildSettings(s);
       },
       2},
      {"settings-reset", enrolled(),
       [](UiStage& s) {
         reach(s, true, false, true);
         openChildSettings(s);
         s.settle();
         s.application.screen<ChildSettingsView>().resetEnrollment();
       }},
      {"instructions", enrolled(),
       [](UiStage& s) { s.application.screen<ChildHomeView>().showDoHInstructions = true; }},
      {"instructions-configuring", enrolled(),
       [](UiStage& s) {
         s.application.screen<ChildHomeView>().showDoHInstructions = true;
         s.settle();
         s.application.screen<DoHInstructionsView>().enableProtection();
       }},
  };
}

std::vector<Shot> scenes() {
  auto all = childDeviceScenes();
  for (auto& shot : parentScenes()) {
    all.push_back(std::move(shot));
  }
  return all;
}

}  // namespace quillmar
