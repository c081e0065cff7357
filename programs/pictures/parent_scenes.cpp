#include <chrono>
#include <string>
#include <utility>

#include "client/network_service.h"
#include "console/add_device_sheet.h"
#include "console/child_detail_view.h"
#include "console/device_list_view.h"
#include "console/link_device_view.h"
#include "console/settings_view.h"
#include "family/family_members_view.h"
#include "family/home_network_view.h"
#include "family/join_family_view.h"
#include "foundation/date_format.h"
#include "identity/keychain_service.h"
#include "identity/login_view.h"
#include "identity/register_view.h"
#include "programs/pictures/scenes.h"

namespace quillmar {
namespace {

using ui::UiStage;
using namespace std::chrono_literals;

StoredSettings signedIn() {
  auto stored = asParent();
  stored[NetworkService::authTokenKey] = std::string("token");
  stored[NetworkService::parentNameKey] = std::string("Ann Mari Wells");
  stored[NetworkService::parentEmailKey] = std::string("ann.wells@example.com");
  stored["authTokenTimestamp"] = VirtualDispatch::defaultStart;
  return stored;
}

std::string device(const std::string& id, const std::string& name, const std::string& type, bool isOnline,
                   const std::string& lastSeen = "2026-01-01T00:00:00Z") {
  return R"({"id":")" + id + R"(","parent_id":"p","device_name":")" + name + R"(","device_type":")" + type +
         R"(","doh_endpoint":"https://dns.example/)" + id +
         R"(","is_active":true,"created_at":"c","updated_at":"u","is_online":)" +
         (isOnline ? "true" : "false") + R"(,"last_seen_at":")" + lastSeen + R"("})";
}

std::string child(const std::string& id, const std::string& name, const std::string& devices,
                  const std::string& more = {}) {
  return R"({"id":")" + id + R"(","family_id":"f","name":")" + name +
         R"(","is_active":true,"created_at":"c","updated_at":"u","devices":[)" + devices + "]" + more + "}";
}

const std::string mia = child(
    "c1", "Mia",
    device("d1", "Mia's phone", "ios", true) + "," + device("d2", "Tablet", "ipad", false) + "," +
        device("d3", "PlayStation", "playstation", true) + "," + device("d4", "School laptop", "mac", false) +
        "," + device("d5", "TV", "smarttv", false),
    R"(,"birth_year":1990,"policy":{"id":"p1","child_id":"c1","family_id":"f","is_blocked":false,"block_mode":"blacklist","blocked_domains":["games.example","video.example"],"allowed_domains":["school.example","Library.example.org"],"created_at":"c","updated_at":"u"})");

std::string family() {
  return R"({"children":[)" + mia + "," + child("c2", "Theo", device("d6", "Theo's tablet", "ipad", false)) +
         "," + child("c3", "Ida", "") + R"(],"unassigned_devices":[)" +
         device("d7", "Old phone", "ios", false) + "," + device("d8", "Living room TV", "smarttv", true) +
         "]}";
}

// NOLINTBEGIN(misc-misleading-bidirectional): misleading is what this text is for
std::string hostileFamily() {
  const std::string name =
      "<b>Bobby</b> \u202Etables\u202C \U0001F468\u200D\U0001F469\u200D\U0001F467 " + std::string(90, 'w');
  return R"({"children":[)" +
         child("c1", name, device("d1", "<img src=x>" + std::string(200, 'm'), "weird-type_2", true)) + "]}";
}
// NOLINTEND(misc-misleading-bidirectional)

std::string log(int id, const std::string& domain, bool wasBlocked, Date time) {
  return R"({"id":)" + std::to_string(id) + R"(,"device_id":"d1","parent_id":"p","domain":")" + domain +
         R"(","query_type":"A","was_blocked":)" + (wasBlocked ? "true" : "false") + R"(,"timestamp":")" +
         formatISO8601(time) + R"("})";
}

std::string logs(Date now) {
  return R"({"logs":[)" + log(1, "www.school.example", false, now - 3s) + "," +
         log(2, "cdn.games.example", true, now - 9s) + "," +
         log(3, "api.messages.example.co.uk", false, now - 20s) + "," +
         log(4, "a-very-long-host-name-that-goes-on-and-on-and-never-seems-to-end-anywhere.example", true,
             now - 40s) +
         "," + log(5, "video.example", true, now - 55s) + "]}";
}

void answerFamily(UiStage& stage, const std::string& body) {
  auto& http = stage.application.machine.http;
  http.answerAlways("GET", "/children", 200, body);
  for (const auto* id : {"d1", "d2", "d3", "d4", "d5"}) {
    http.answerAlways("GET", "/devices/" + std::string(id) + "/logs", 200,
                      logs(stage.application.machine.dispatch.now()));
  }
  http.answerAlways("GET", "/children/c1", 200, mia);
}

DeviceListView& dashboard(UiStage& stage) { return stage.application.screen<DeviceListView>(); }

void showFamily(UiStage& stage) {
  answerFamily(stage, family());
  dashboard(stage).loadChildren();
  stage.settle();
}

ChildDetailView& openChild(UiStage& stage) {
  showFamily(stage);
  dashboard(stage).cards[0].tap();
  stage.settle();
  stage.advance(2s);
  return stage.application.screen<ChildDetailView>();
}

ScannerView& openScanner(UiStage& stage, CameraState camera) {
  stage.application.machine.qrReader.setCamera(camera);
  showFamily(stage);
  dashboard(stage).cards[0].addDevice();
  stage.settle();
  stage.application.screen<AddDeviceSheet>().addPhone();
  stage.settle();
  return stage.application.screen<ScannerView>();
}

ManualEnrollmentView& openManual(UiStage& stage) {
  showFamily(stage);
  dashboard(stage).cards[0].addDevice();
  stage.settle();
  stage.application.screen<AddDeviceSheet>().addConsole();
  stage.settle();
  return stage.application.screen<ManualEnrollmentView>();
}

void fillIn(RegisterView& form, const std::string& password, const std::string& again) {
  form.name = std::string("Ann Wells");
  form.email = std::string("ann@example.com");
  form.phone = std::string("+61 412 345 678");
  form.password = password;
  form.confirmPassword = again;
}

constexpr auto invited =
    R"({"invite_code":"K7QX2M","expires_at":"2026-01-02T00:00:00Z","qr_data":"https://quillmar.live/join?code=K7QX2M"})";

std::string familyAnswer(Date now) {
  return R"({"family":{"id":"f","name":"The Wells Family","primary_parent_id":"p","created_at":"c","updated_at":"u"},"is_primary":true,"members":[{"id":"m1","family_id":"f","parent_id":"p","role":"primary","display_name":"Ann Wells","can_manage_devices":true,"can_manage_policies":true,"is_active":true,"created_at":"c","email":"ann.wells@example.com"},{"id":"m2","family_id":"f","parent_id":"q","role":"member","display_name":"Tom","can_manage_devices":true,"can_manage_policies":false,"is_active":true,"created_at":"c","email":"tom@example.com"},{"id":"m3","family_id":"f","parent_id":"r","role":"member","display_name":"Grandmother Wilhelmina Featherstonehaugh","can_manage_devices":false,"can_manage_policies":false,"is_active":false,"created_at":"c"}],"pending_invitations":[{"id":"i1","family_id":"f","invite_code":"K7QX2M","invited_by":"p","status":"pending","created_at":"c","expires_at":")" +
         formatISO8601(now + 5400s) +
         R"("},{"id":"i2","family_id":"f","invite_code":"ZZ81PA","invited_by":"p","status":"pending","created_at":"c","expires_at":")" +
         formatISO8601(now - 60s) + R"("}]})";
}

FamilyMembersView& openFamily(UiStage& stage) {
  showFamily(stage);
  stage.application.machine.http.answerAlways("GET", "/family", 200,
                                              familyAnswer(stage.application.machine.dispatch.now()));
  dashboard(stage).openFamilyMembers();
  stage.settle();
  return stage.application.screen<FamilyMembersView>();
}

constexpr auto network =
    R"("home_network":{"id":"h","parent_id":"p","name":"Home","public_ip":"203.0.113.7","is_active":true,"created_at":"2026-01-01T00:00:00Z","updated_at":"2026-01-01T00:00:00Z"},"policy":{"id":"hp","home_network_id":"h","parent_id":"p","is_blocked":false,"block_mode":"blacklist","blocked_domains":["games.example"],"allowed_domains":[],"created_at":"c","updated_at":"u"})";

HomeNetworkView& openHomeNetwork(UiStage& stage, const std::string& answer) {
  showFamily(stage);
  stage.application.machine.http.answerAlways("GET", "/home-network", 200, answer);
  dashboard(stage).openHomeNetwork();
  stage.settle();
  return stage.application.screen<HomeNetworkView>();
}

JoinFamilyView& openJoining(UiStage& stage) {
  stage.application.screen<LoginView>().joinFamily();
  stage.settle();
  return stage.application.screen<JoinFamilyView>();
}

RegisterView& openRegistration(UiStage& stage) {
  stage.application.screen<LoginView>().signUp();
  stage.settle();
  return stage.application.screen<RegisterView>();
}

SettingsView& openSettings(UiStage& stage) {
  showFamily(stage);
  dashboard(stage).openSettings();
  stage.settle();
  return stage.application.screen<SettingsView>();
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
      {"join", asParent(), [](UiStage& s) { openJoining(s); }},
      {"join-refused", asParent(),
       [](UiStage& s) {
         auto& join = openJoining(s);
         join.inviteCode = std::string("ab12cd");
         s.application.machine.http.answer("GET", "/family/invite/AB12CD", 404,
                                           R"({"valid":false,"error":"This invitation has expired"})");
         join.validateCode();
       }},
      {"join-account", asParent(),
       [](UiStage& s) {
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
         join.confirmPassword = std::string("secret");
       }},
      {"join-scanner", asParent(), [](UiStage& s) { openJoining(s).scanQRCode(); }},
  };
}

std::vector<Shot> dashboardScenes() {
  return {
      {"dashboard-loading", signedIn(),
       [](UiStage& s) {
         s.application.machine.http.hold();
         dashboard(s).loadChildren();
       }},
      {"dashboard-empty", signedIn()},
      {"dashboard", signedIn(), showFamily},
      {"dashboard-text-200", signedIn(), showFamily, 2},
      {"dashboard-hostile", signedIn(),
       [](UiStage& s) {
         answerFamily(s, hostileFamily());
         dashboard(s).loadChildren();
       }},
      {"dashboard-menu", signedIn(),
       [](UiStage& s) {
         showFamily(s);
         s.click("AM");
       }},
      {"dashboard-logout", signedIn(),
       [](UiStage& s) {
         showFamily(s);
         dashboard(s).logout();
       }},
      {"add-child", signedIn(),
       [](UiStage& s) {
         showFamily(s);
         dashboard(s).addChild();
       }},
      {"add-child-running", signedIn(),
       [](UiStage& s) {
         showFamily(s);
         dashboard(s).addChild();
         s.settle();
         s.application.screen<AddChildView>().name = std::string("Noor");
         s.application.machine.http.hold();
         s.application.screen<AddChildView>().createChildProfile();
       }},
      {"add-device", signedIn(),
       [](UiStage& s) {
         showFamily(s);
         dashboard(s).cards[0].addDevice();
       }},
      {"scanner-no-camera", signedIn(), [](UiStage& s) { openScanner(s, CameraState::absent); }},
      {"scanner-refused", signedIn(), [](UiStage& s) { openScanner(s, CameraState::refused); }},
      {"scanner-camera", signedIn(), [](UiStage& s) { openScanner(s, CameraState::available); }},
      {"scanner-review", signedIn(),
       [](UiStage& s) {
         openScanner(s, CameraState::absent)
             .handleScannedCode(
                 R"({"enrollment_code":"K7QX2M","device_id":"d","device_name":"Mia's phone","device_type":"ios"})");
       }},
      {"scanner-invalid", signedIn(),
       [](UiStage& s) { openScanner(s, CameraState::absent).handleScannedCode("hello"); }},
      {"scanner-success", signedIn(),
       [](UiStage& s) {
         auto& scanner = openScanner(s, CameraState::absent);
         scanner.isScanning = false;
         scanner.enrollmentSuccess = true;
       }},
      {"manual", signedIn(), [](UiStage& s) { openManual(s); }},
      {"manual-result", signedIn(),
       [](UiStage& s) {
         auto& manual = openManual(s);
         manual.deviceName = std::string("Jake's PlayStation");
         s.application.machine.http.answer(
             "POST", "/enrollment/manual", 200,
             R"({"message":"done","device":)" + device("d9", "Jake's PlayStation", "playstation", false) +
                 R"(,"dns_server":"203.0.113.53","setup_instructions":{"platform":"PlayStation","dns_server_ip":"203.0.113.53","steps":["Open Settings, then Network.","Choose Set Up Internet Connection, then your network, then Custom.","Set DNS to Manual and enter the address above as the primary DNS.","Save, and test the connection."]},"note":"The console appears as online after its first connection."})");
         manual.addDevice();
       }},
  };
}

std::vector<Shot> childScenes() {
  return {
      {"child", signedIn(), [](UiStage& s) { openChild(s); }},
      {"child-text-200", signedIn(), [](UiStage& s) { openChild(s); }, 2},
      {"child-blocked", signedIn(),
       [](UiStage& s) {
         s.application.machine.http.answerAlways(
             "PUT", "/children/c1/policy", 200,
             R"({"id":"p1","child_id":"c1","family_id":"f","is_blocked":true,"block_mode":"whitelist","created_at":"c","updated_at":"u"})");
         openChild(s).isBlocked = true;
         s.settle();
       }},
      {"child-swiped", signedIn(),
       [](UiStage& s) {
         auto& screen = openChild(s);
         screen.deviceRows[0].dragEnded(-90, 0);
         screen.recentActivityRows[1].dragChanged(70, 0);
       }},
      {"child-sites-blocked", signedIn(),
       [](UiStage& s) {
         openChild(s).selectedTab = ChildDetailTab::sitesBlocked;
         s.settle();
       }},
      {"child-sites-allowed", signedIn(),
       [](UiStage& s) {
         openChild(s).selectedTab = ChildDetailTab::sitesAllowed;
         s.settle();
       }},
      {"child-unlink", signedIn(), [](UiStage& s) { openChild(s).deviceRows[0].unlink(); }},
      {"child-edit-name", signedIn(), [](UiStage& s) { openChild(s).editName(); }},
      {"link-device", signedIn(), [](UiStage& s) { openChild(s).linkDevice(); }},
  };
}

std::vector<Shot> familyScenes() {
  return {
      {"family", signedIn(), [](UiStage& s) { openFamily(s); }},
      {"family-failed", signedIn(),
       [](UiStage& s) {
         showFamily(s);
         dashboard(s).openFamilyMembers();
       }},
      {"family-invite", signedIn(),
       [](UiStage& s) {
         s.application.machine.http.answer("POST", "/family/invite", 200, invited);
         openFamily(s).createInvitation();
       }},
      {"family-member", signedIn(), [](UiStage& s) { openFamily(s).memberRows[1].edit(); }},
      {"home-network-set-up", signedIn(),
       [](UiStage& s) { openHomeNetwork(s, R"({"current_ip":"203.0.113.7","ip_matches":false})"); }},
      {"home-network-set-up-question", signedIn(),
       [](UiStage& s) { openHomeNetwork(s, R"({"current_ip":"203.0.113.7","ip_matches":false})").setUp(); }},
      {"home-network", signedIn(),
       [](UiStage& s) {
         openHomeNetwork(s, "{" + std::string(network) + R"(,"current_ip":"203.0.113.7","ip_matches":true})");
       }},
      {"home-network-mismatch", signedIn(),
       [](UiStage& s) {
         openHomeNetwork(s,
                         "{" + std::string(network) + R"(,"current_ip":"198.51.100.9","ip_matches":false})");
       }},
      {"parent-settings", signedIn(), [](UiStage& s) { openSettings(s); }},
      {"parent-settings-delete", signedIn(),
       [](UiStage& s) {
         auto& settings = openSettings(s);
         settings.deleteAccount();
         settings.continueDeletion();
       }},
  };
}

}  // namespace

std::vector<Shot> parentScenes() {
  std::vector<Shot> all;
  for (auto* group : {identityScenes, dashboardScenes, childScenes, familyScenes}) {
    for (auto& shot : group()) {
      all.push_back(std::move(shot));
    }
  }
  return all;
}

}  // namespace quillmar
