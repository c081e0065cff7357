#include <QQuickItem>
#include <QQuickWindow>
#include <chrono>
#include <string>
#include <utility>

#include "testing/ui/parent_stage.h"
#include "tools/pictures/scenes.h"
#include "ui/bridge/shown_text.h"

namespace quillmar {
namespace {

using ui::UiStage;
using namespace std::chrono_literals;

// NOLINTBEGIN(misc-misleading-bidirectional): misleading is what this text is for
std::string hostileFamily() {
  const std::string name =
      "<b>Bobby</b> \u202Etables\u202C \U0001F468\u200D\U0001F469\u200D\U0001F467 " + std::string(90, 'w');
  return R"({"children":[)" +
         childJson("c1", name,
                   deviceJson("d1", "<img src=x>" + std::string(200, 'm'), "weird-type_2", true)) +
         "]}";
}

std::string hostileDevices() {
  return R"({"children":[],"unassigned_devices":[)" +
         deviceJson("d7", "Phone of \u202Eevil\u202C " + std::string(65000, 'w'), std::string(60, 'm'),
                    true) +
         "," +
         deviceJson("d8", "\u05D4\u05D8\u05DC\u05E4\u05D5\u05DF \u05E9\u05DC \u05E9\u05E8\u05D4 (2)",
                    std::string(65000, 'W'), true) +
         "," + deviceJson("d9", R"(One\nTwo\nThree)", R"(a\nb\nc)", false) + "]}";
}
// NOLINTEND(misc-misleading-bidirectional)

void fillIn(RegisterView& form, const std::string& password, const std::string& again) {
  form.name = std::string("Ann Wells");
  form.email = std::string("ann@example.com");
  form.phone = std::string("+61 412 345 678");
  form.password = password;
  form.confirmPassword = again;
}

JoinFamilyView& fillInInvited(UiStage& s, const std::string& again) {
  auto& join = openJoining(s);
  join.inviteCode = std::string("ab12cd");
  s.application.machine.http.answer(
      "GET", "/family/invite/AB12CD", 200,
      R"({"valid":true,"family_name":"The Wells Family","invited_by_name":"Ann Wells"})");
  join.validateCode();
  s.settle();
  join.displayName = std::string("Tom");
  join.email = std::string("tom@example.com");
  join.password = std::string("secret1");
  join.confirmPassword = again;
  return join;
}

ScannerView& review(UiStage& s) {
  auto& scanner = openScanner(s, CameraState::absent);
  scanner.handleScannedCode(
      R"({"enrollment_code":"K7QX2M","device_id":"d","device_name":"Mia's phone","device_type":"ios"})");
  return scanner;
}

void filter(UiStage& s, ListFilter& lists, const std::string& part) {
  s.settle();
  lists.open();
  s.settle();
  lists.text = part;
  s.settle();
}

// Under the pointer, the first row that has a button shows it, if it lies in the window. Rows are found by
// their kind, because their texts may be anything.
void pointAtFirstRow(UiStage& s) {
  const QQuickItem* row = nullptr;
  ui::forEachShown(*s.window().contentItem(), [&](const QQuickItem& item) {
    row = row == nullptr && item.property("buttonSpace").toDouble() > 0 ? &item : row;
  });
  if (row && QRect({}, s.window().size()).contains(ui::middleOf(*row))) {
    s.pointAt(ui::middleOf(*row));
  }
}

std::vector<Shot> identityScenes() {
  return {
      {"login", asParent()},
      {"login-text-200", asParent(), [](UiStage&) {}, 2},
      {"login-filled", asParent(),
       [](UiStage& s) {
         auto& login = s.application.screen<LoginView>();
         login.email = std::string("ann.wells@example.com");
         login.password = std::string("correct horse");
         login.rememberMe = true;
         login.hasSavedCredentials = true;
       }},
      {"login-running", asParent(),
       [](UiStage& s) {
         auto& login = s.application.screen<LoginView>();
         login.email = std::string("ann.wells@example.com");
         login.password = std::string("correct horse");
         s.application.machine.http.hold();
         login.signIn();
       }},
      {"login-refused", asParent(),
       [](UiStage& s) {
         auto& login = s.application.screen<LoginView>();
         login.email = std::string("ann.wells@example.com");
         login.password = std::string("wrong");
         s.application.machine.http.answer("POST", "/auth/login", 401);
         login.signIn();
       }},
      {"register", asParent(), [](UiStage& s) { openRegistration(s); }},
      {"register-fair", asParent(), [](UiStage& s) { fillIn(openRegistration(s), "abcdefgh", "abc"); }},
      {"register-strong", asParent(),
       [](UiStage& s) { fillIn(openRegistration(s), "abcdefg8!", "abcdefg8!"); }},
      {"register-running", asParent(),
       [](UiStage& s) {
         auto& form = openRegistration(s);
         fillIn(form, "abcdefg8!", "abcdefg8!");
         s.application.machine.http.hold();
         form.createAccount();
       }},
      {"join", asParent(), [](UiStage& s) { openJoining(s); }},
      {"join-validating", asParent(),
       [](UiStage& s) {
         auto& join = openJoining(s);
         join.inviteCode = std::string("ab12cd");
         s.application.machine.http.hold();
         join.validateCode();
       }},
      {"join-refused", asParent(),
       [](UiStage& s) {
         auto& join = openJoining(s);
         join.inviteCode = std::string("ab12cd");
         s.application.machine.http.answer("GET", "/family/invite/AB12CD", 404,
                                           R"({"valid":false,"error":"This invitation has expired"})");
         join.validateCode();
       }},
      {"join-account", asParent(), [](UiStage& s) { fillInInvited(s, "secret"); }},
      {"join-running", asParent(),
       [](UiStage& s) {
         auto& join = fillInInvited(s, "secret1");
         s.application.machine.http.hold();
         join.join();
       }},
      {"join-scanner", asParent(), [](UiStage& s) { openJoining(s).scanQRCode(); }},
  };
}

std::vector<Shot> dashboardScenes() {
  return {
      {"dashboard-loading", signedInParent(),
       [](UiStage& s) {
         s.application.machine.http.hold();
         dashboard(s).loadChildren();
       }},
      {"dashboard-empty", signedInParent()},
      {"dashboard", signedInParent(), showFamily},
      {"dashboard-text-200", signedInParent(), showFamily, 2},
      {"dashboard-reloading", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         s.application.machine.http.hold();
         dashboard(s).loadChildren();
         s.advance(1s);
       }},
      {"dashboard-refreshing", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         s.application.machine.http.hold();
         s.advance(30s);
       }},
      {"dashboard-hostile", signedInParent(),
       [](UiStage& s) {
         answerFamily(s, hostileFamily());
         dashboard(s).loadChildren();
       }},
      {"dashboard-menu", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         s.click("AM");
       }},
      {"dashboard-filtered", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         filter(s, dashboard(s).filter, "ID");
       }},
      {"dashboard-no-match", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         filter(s, dashboard(s).filter, "Quentin");
       }},
      {"dashboard-keys", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         s.press(Qt::Key_F1);
       }},
      {"dashboard-tip", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         s.focusOn("Refresh");
       }},
      {"dashboard-logout", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         dashboard(s).logout();
       }},
      {"add-child", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         dashboard(s).addChild();
       }},
      {"add-child-running", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         dashboard(s).addChild();
         s.settle();
         s.application.screen<AddChildView>().name = std::string("Noor");
         s.application.machine.http.hold();
         s.application.screen<AddChildView>().createChildProfile();
       }},
      {"add-device", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         dashboard(s).cards[0].addDevice();
       }},
      {"scanner-no-camera", signedInParent(), [](UiStage& s) { openScanner(s, CameraState::absent); }},
      {"scanner-refused", signedInParent(), [](UiStage& s) { openScanner(s, CameraState::refused); }},
      {"scanner-camera", signedInParent(), [](UiStage& s) { openScanner(s, CameraState::available); }},
      {"scanner-typing", signedInParent(),
       [](UiStage& s) { openScanner(s, CameraState::absent).enterCode(); }},
      {"scanner-typed", signedInParent(),
       [](UiStage& s) {
         auto& scanner = openScanner(s, CameraState::absent);
         scanner.enterCode();
         scanner.typedCode = std::string("K7QX2M");
         scanner.deviceName = std::string("Mia's phone");
       }},
      {"scanner-review", signedInParent(), [](UiStage& s) { review(s); }},
      {"scanner-running", signedInParent(),
       [](UiStage& s) {
         auto& scanner = review(s);
         s.application.machine.http.hold();
         scanner.completeEnrollment();
       }},
      {"scanner-invalid", signedInParent(),
       [](UiStage& s) { openScanner(s, CameraState::absent).handleScannedCode("hello"); }},
      {"scanner-success", signedInParent(),
       [](UiStage& s) {
         auto& scanner = openScanner(s, CameraState::absent);
         scanner.isScanning = false;
         scanner.enrollmentSuccess = true;
       }},
      {"manual", signedInParent(), [](UiStage& s) { openManual(s); }},
      {"manual-running", signedInParent(),
       [](UiStage& s) {
         auto& manual = openManual(s);
         manual.deviceName = std::string("Jake's PlayStation");
         s.application.machine.http.hold();
         manual.addDevice();
       }},
      {"manual-result", signedInParent(),
       [](UiStage& s) {
         auto& manual = openManual(s);
         manual.deviceName = std::string("Jake's PlayStation");
         s.application.machine.http.answer(
             "POST", "/enrollment/manual", 200,
             R"({"message":"done","device":)" + deviceJson("d9", "Jake's PlayStation", "playstation", false) +
                 R"(,"dns_server":"203.0.113.53","setup_instructions":{"platform":"PlayStation","dns_server_ip":"203.0.113.53","steps":["Open Settings, then Network.","Choose Set Up Internet Connection, then your network, then Custom.","Set DNS to Manual and enter the address above as the primary DNS.","Save, and test the connection."]},"note":"The console appears as online after its first connection."})");
         manual.addDevice();
       }},
  };
}

std::vector<Shot> childScenes() {
  return {
      {"child", signedInParent(), [](UiStage& s) { openChild(s); }},
      {"child-text-200", signedInParent(), [](UiStage& s) { openChild(s); }, 2},
      {"child-blocked", signedInParent(),
       [](UiStage& s) {
         s.application.machine.http.answerAlways(
             "PUT", "/children/c1/policy", 200,
             R"({"id":"p1","child_id":"c1","family_id":"f","is_blocked":true,"block_mode":"whitelist","created_at":"c","updated_at":"u"})");
         openChild(s).policySection.isBlocked = true;
         s.settle();
       }},
      {"child-swiped", signedInParent(),
       [](UiStage& s) {
         auto& screen = openChild(s);
         screen.devicesSection.deviceRows[0].dragEnded(-90, 0);
         screen.activitySection.recent.rows[1].dragChanged(70, 0);
       }},
      {"child-pointed", signedInParent(),
       [](UiStage& s) {
         openChild(s);
         pointAtFirstRow(s);
       }},
      {"child-pointed-text-200", signedInParent(),
       [](UiStage& s) {
         openChild(s);
         pointAtFirstRow(s);
       },
       2},
      {"child-sites-blocked-pointed", signedInParent(),
       [](UiStage& s) {
         openChild(s).selectedTab = ChildDetailTab::sitesBlocked;
         s.settle();
         pointAtFirstRow(s);
       }},
      {"child-sites-blocked", signedInParent(),
       [](UiStage& s) {
         openChild(s).selectedTab = ChildDetailTab::sitesBlocked;
         s.settle();
       }},
      {"child-sites-allowed", signedInParent(),
       [](UiStage& s) {
         openChild(s).selectedTab = ChildDetailTab::sitesAllowed;
         s.settle();
       }},
      {"child-undo", signedInParent(),
       [](UiStage& s) {
         auto& policy = openChild(s).policySection;
         const std::string longName = std::string(120, 'w') + ".example";
         s.application.machine.http.answer(
             "POST", "/children/c1/policy/allow", 200,
             R"({"id":"p1","child_id":"c1","family_id":"f","is_blocked":false,"block_mode":"blacklist","blocked_domains":[],"allowed_domains":["homework.example",")" +
                 longName + R"("],"created_at":"c","updated_at":"u"})");
         policy.newDomain = std::string("homework.example");
         policy.addAllowedSite();
         s.settle();
         policy.addedSites.add(PolicyList::blocked, longName);
       }},
      {"child-unlink", signedInParent(),
       [](UiStage& s) { openChild(s).devicesSection.deviceRows[0].unlink(); }},
      {"child-filtered", signedInParent(),
       [](UiStage& s) {
         auto& child = openChild(s);
         filter(s, child.filter, "school");
       }},
      {"child-edit-name", signedInParent(), [](UiStage& s) { openChild(s).editName(); }},
      {"link-device", signedInParent(), [](UiStage& s) { openChild(s).devicesSection.linkDevice(); }},
      {"link-device-swiped", signedInParent(),
       [](UiStage& s) {
         openChild(s).devicesSection.linkDevice();
         s.settle();
         s.application.screen<LinkDeviceView>().deviceRows[0].dragEnded(-90, 0);
       }},
      {"link-device-delete", signedInParent(),
       [](UiStage& s) {
         openChild(s).devicesSection.linkDevice();
         s.settle();
         s.application.screen<LinkDeviceView>().deviceRows[0].remove();
       }},
      {"link-device-hostile", signedInParent(),
       [](UiStage& s) {
         auto& child = openChild(s);
         s.application.machine.http.answerAlways("GET", "/children", 200, hostileDevices());
         child.devicesSection.linkDevice();
       }},
  };
}

// A page whose service has not answered yet.
void holdActivity(UiStage& s) {
  auto& child = openChild(s);
  s.application.machine.http.hold();
  child.seeAllActivity();
  s.settle();
}

std::string hostileActivity(Date now) {
  std::string list = logJson(1, std::string(65000, 'w') + ".example", false, now);
  list += "," + logJson(2, "<b>bold</b>.example", true, now) + "," +
          logJson(3, "\u202Egro.elpmaxe\u202C", false, now) + "," + logJson(4, "", false, now) + "," +
          logJson(5, std::string(60, 'm') + "." + std::string(60, 'W') + ".example", true, now);
  std::string unreadable = logJson(6, "clock.example", false, now);
  unreadable.replace(unreadable.find("2016"), 4, "when");
  return R"({"logs":[)" + list + "," + unreadable + "]}";
}

QQuickItem* findBar(const QQuickItem& in, const QString& name) {
  for (auto* const item : in.childItems()) {
    const bool isBar = item->property("bar").isValid() || item->property("thickness").isValid();
    if (isBar && item->isVisible() && ui::accessibleName(*item) == name) {
      return item;
    }
    if (auto* const bar = findBar(*item, name)) {
      return bar;
    }
  }
  return nullptr;
}

// Presses a bar with the keyboard, which leads to the rows.
void chooseBar(UiStage& s, const ActivityBar& bar) {
  s.settle();
  if (auto* const drawn = findBar(*s.window().contentItem(), ui::shownText(bar.name()))) {
    drawn->forceActiveFocus(Qt::TabFocusReason);
    s.press(Qt::Key_Space);
  }
}

void findActivity(UiStage& s, const char* part) {
  openActivity(s);
  s.settle();
  s.press(Qt::Key_F, Qt::ControlModifier);
  s.type(part);
}

std::vector<Shot> activityScenes() {
  return {
      {"activity", signedInParent(), [](UiStage& s) { openActivity(s); }},
      {"activity-text-200", signedInParent(), [](UiStage& s) { openActivity(s); }, 2},
      {"activity-waiting", signedInParent(), holdActivity},
      {"activity-no-devices", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         s.application.machine.http.answerAlways("GET", "/children/c1", 200, childJson("c1", "Mia", ""));
         dashboard(s).cards[0].tap();
         s.settle();
         s.application.screen<ChildDetailView>().seeAllActivity();
       }},
      {"activity-empty", signedInParent(),
       [](UiStage& s) {
         auto& child = openChild(s);
         for (const auto* const id : {"d1", "d2", "d3", "d4", "d5"}) {
           s.application.machine.http.answerAlways("GET", "/devices/" + std::string(id) + "/logs", 200,
                                                   R"({"logs":[]})");
         }
         child.seeAllActivity();
       }},
      {"activity-loading", signedInParent(),
       [](UiStage& s) {
         auto& child = openChild(s);
         answerWeek(s);
         s.application.machine.http.hold("GET", "/devices/d2/logs");
         child.seeAllActivity();
       }},
      {"activity-stopped", signedInParent(),
       [](UiStage& s) {
         auto& child = openChild(s);
         answerWeek(s);
         s.application.machine.http.hold("GET", "/devices/d2/logs");
         child.seeAllActivity();
         s.settle();
         s.application.screen<ChildActivityView>().filling.stop();
       }},
      {"activity-failed", signedInParent(),
       [](UiStage& s) {
         auto& child = openChild(s);
         answerWeek(s);
         s.application.machine.http.answerAlways("GET", "/devices/d2/logs?limit=1000&offset=0", 404);
         child.seeAllActivity();
       }},
      {"activity-hour", signedInParent(), [](UiStage& s) { chooseBar(s, openActivity(s).hourBars[18]); }},
      {"activity-site", signedInParent(), [](UiStage& s) { chooseBar(s, openActivity(s).visitedBars[0]); }},
      {"activity-other-day", signedInParent(),
       [](UiStage& s) {
         openActivity(s).dayBars[2].choose();
         s.settle();
       }},
      {"activity-device", signedInParent(),
       [](UiStage& s) {
         openActivity(s).chooseDevice(2);
         s.settle();
       }},
      {"activity-found", signedInParent(), [](UiStage& s) { findActivity(s, "ex"); }},
      {"activity-nothing-found", signedInParent(), [](UiStage& s) { findActivity(s, "nowhere"); }},
      {"activity-hostile", signedInParent(),
       [](UiStage& s) {
         auto& child = openChild(s);
         answerWeek(s);
         s.application.machine.http.answerAlways("GET", "/devices/d1/logs?limit=1000&offset=0", 200,
                                                 hostileActivity(s.application.machine.dispatch.now()));
         child.seeAllActivity();
       }},
  };
}

std::vector<Shot> familyScenes() {
  return {
      {"family", signedInParent(), [](UiStage& s) { openFamily(s); }},
      {"family-failed", signedInParent(),
       [](UiStage& s) {
         showFamily(s);
         dashboard(s).openFamilyMembers();
       }},
      {"family-inviting", signedInParent(),
       [](UiStage& s) {
         auto& family = openFamily(s);
         s.application.machine.http.hold();
         family.createInvitation();
       }},
      {"family-invite", signedInParent(),
       [](UiStage& s) {
         s.application.machine.http.answer("POST", "/family/invite", 200, invitationJson());
         openFamily(s).createInvitation();
       }},
      {"family-member", signedInParent(), [](UiStage& s) { openFamily(s).memberRows[1].edit(); }},
      {"home-network-set-up", signedInParent(),
       [](UiStage& s) { openHomeNetwork(s, R"({"current_ip":"203.0.113.7","ip_matches":false})"); }},
      {"home-network-set-up-question", signedInParent(),
       [](UiStage& s) { openHomeNetwork(s, R"({"current_ip":"203.0.113.7","ip_matches":false})").setUp(); }},
      {"home-network", signedInParent(),
       [](UiStage& s) { openHomeNetwork(s, homeNetworkJson("203.0.113.7", true)); }},
      {"home-network-instructions", signedInParent(),
       [](UiStage& s) { openHomeNetwork(s, homeNetworkJson("203.0.113.7", true)).viewInstructions(); }},
      {"home-network-updating", signedInParent(),
       [](UiStage& s) {
         auto& home = openHomeNetwork(s, homeNetworkJson("198.51.100.9", false));
         home.updateIP();
         s.application.machine.http.hold();
         home.updateConfirmation.confirm();
       }},
      {"home-network-mismatch", signedInParent(),
       [](UiStage& s) { openHomeNetwork(s, homeNetworkJson("198.51.100.9", false)); }},
      {"home-network-updated", signedInParent(),
       [](UiStage& s) {
         s.application.machine.http.answer(
             "POST", "/home-network/update-ip", 200,
             R"({"message":"done","public_ip":"203.0.113.8","updated_at":"2026-01-02T00:00:00Z"})");
         auto& network = openHomeNetwork(s, homeNetworkJson("203.0.113.8", false));
         network.updateIP();
         network.updateConfirmation.confirm();
       }},
      {"parent-settings", signedInParent(), [](UiStage& s) { openSettings(s); }},
      {"parent-settings-delete", signedInParent(),
       [](UiStage& s) {
         auto& settings = openSettings(s);
         settings.deleteAccount();
         settings.deletionConfirmation.confirm();
       }},
  };
}

}  // namespace

std::vector<Shot> parentScenes() {
  std::vector<Shot> all;
  for (auto* group : {identityScenes, dashboardScenes, childScenes, activityScenes, familyScenes}) {
    for (auto& shot : group()) {
      all.push_back(std::move(shot));
    }
  }
  return all;
}

}  // namespace quillmar
