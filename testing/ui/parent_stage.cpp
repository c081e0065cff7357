#include "testing/ui/parent_stage.h"

#include <array>
#include <chrono>
#include <string_view>

#include "client/network_service.h"
#include "console/add_device_sheet.h"
#include "foundation/date_format.h"

namespace quillmar {

using ui::UiStage;
using namespace std::chrono_literals;

StoredSettings signedInParent() {
  auto stored = asParent();
  stored[NetworkService::authTokenKey] = std::string("token");
  stored[NetworkService::parentNameKey] = std::string("Ann Mari Wells");
  stored[NetworkService::parentEmailKey] = std::string("ann.wells@example.com");
  stored["authTokenTimestamp"] = VirtualDispatch::defaultStart;
  return stored;
}

std::string deviceJson(const std::string& id, const std::string& name, const std::string& type, bool isOnline,
                       const std::string& lastSeen) {
  return R"({"id":")" + id + R"(","parent_id":"p","device_name":")" + name + R"(","device_type":")" + type +
         R"(","doh_endpoint":"https://dns.example/)" + id +
         R"(","is_active":true,"created_at":"c","updated_at":"u","is_online":)" +
         (isOnline ? "true" : "false") + R"(,"last_seen_at":")" + lastSeen + R"("})";
}

std::string childJson(const std::string& id, const std::string& name, const std::string& devices,
                      const std::string& more) {
  return R"({"id":")" + id + R"(","family_id":"f","name":")" + name +
         R"(","is_active":true,"created_at":"c","updated_at":"u","devices":[)" + devices + "]" + more + "}";
}

std::string miaJson() {
  return childJson(
      "c1", "Mia",
      deviceJson("d1", "Mia's phone", "ios", true) + "," + deviceJson("d2", "Tablet", "ipad", false) + "," +
          deviceJson("d3", "PlayStation", "playstation", true) + "," +
          deviceJson("d4", "School laptop", "mac", false) + "," + deviceJson("d5", "TV", "smarttv", false),
      R"(,"birth_year":1990,"policy":{"id":"p1","child_id":"c1","family_id":"f","is_blocked":false,"block_mode":"blacklist","blocked_domains":["games.example","video.example"],"allowed_domains":["school.example","Library.example.org"],"created_at":"c","updated_at":"u"})");
}

std::string familyJson() {
  return R"({"children":[)" + miaJson() + "," +
         childJson("c2", "Theo", deviceJson("d6", "Theo's tablet", "ipad", false)) + "," +
         childJson("c3", "Ida", "") + R"(],"unassigned_devices":[)" +
         deviceJson("d7", "Old phone", "ios", false) + "," +
         deviceJson("d8", "Living room TV", "smarttv", true) + "]}";
}

std::string logJson(int id, const std::string& domain, bool wasBlocked, Date time) {
  return R"({"id":)" + std::to_string(id) + R"(,"device_id":"d1","parent_id":"p","domain":")" + domain +
         R"(","query_type":"A","was_blocked":)" + (wasBlocked ? "true" : "false") + R"(,"timestamp":")" +
         formatISO8601(time) + R"("})";
}

std::string logsJson(Date now) {
  return R"({"logs":[)" + logJson(1, "www.school.example", false, now - 3s) + "," +
         logJson(2, "cdn.games.example", true, now - 9s) + "," +
         logJson(3, "api.messages.example.co.uk", false, now - 20s) + "," +
         logJson(4, "a-very-long-host-name-that-goes-on-and-on-and-never-seems-to-end-anywhere.example", true,
                 now - 40s) +
         "," + logJson(5, "video.example", true, now - 55s) + "]}";
}

void answerFamily(UiStage& stage, const std::string& body) {
  auto& http = stage.application.machine.http;
  http.answerAlways("GET", "/children", 200, body);
  for (const auto* id : {"d1", "d2", "d3", "d4", "d5"}) {
    http.answerAlways("GET", "/devices/" + std::string(id) + "/logs", 200,
                      logsJson(stage.application.machine.dispatch.now()));
  }
  http.answerAlways("GET", "/children/c1", 200, miaJson());
}

DeviceListView& dashboard(UiStage& stage) { return stage.application.screen<DeviceListView>(); }

void showFamily(UiStage& stage) {
  answerFamily(stage, familyJson());
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

std::string weekJson(Date now, const std::string& device) {
  struct Habit {
    const char* domain;
    int first;  // hours of the day
    int last;
    int count;  // requests an hour
    bool wasBlocked;
  };
  static constexpr auto habits = std::to_array<Habit>({{"www.school.example", 9, 14, 6, false},
                                                       {"api.messages.example.co.uk", 7, 21, 3, false},
                                                       {"cdn.games.example", 15, 20, 7, true},
                                                       {"www.video.example", 16, 21, 5, false},
                                                       {"img.video.example", 18, 21, 4, false},
                                                       {"music.example.org", 7, 8, 4, false},
                                                       {"pixel.ads.example", 8, 20, 2, true},
                                                       {"www.weather.example", 7, 7, 2, false},
                                                       {"maps.example.com", 12, 15, 1, false},
                                                       {"news.example.net", 17, 18, 1, false},
                                                       {"recipes.example.co.nz", 18, 18, 2, false},
                                                       {"shop.example.com.au", 19, 20, 1, false},
                                                       {"chat.strangers.example", 20, 21, 1, true}});
  constexpr int secondsOfHour = 3600;
  std::string list;
  int id = device == "d1" ? 0 : 100'000;
  for (int back = 0; back < 7 * 24; ++back) {
    const Date start = std::chrono::floor<std::chrono::hours>(now) - std::chrono::hours(back);
    const auto hour = static_cast<int>((start - std::chrono::floor<std::chrono::days>(start)) / 1h);
    const int day = back / 24;
    for (std::size_t i = 0; i < habits.size(); ++i) {
      const Habit& habit = habits[i];
      const bool isUsed = habit.first <= hour && hour <= habit.last && (device == "d1" || i % 4 == 3) &&
                          // Two sites are new today.
                          (day == 0 || i + 2 < habits.size() || i == 11);
      const int count = isUsed ? habit.count + (day * 5 + hour * 3 + static_cast<int>(i)) % 4 - 1 : 0;
      for (int n = 0; n < count; ++n) {
        const Date time = start + std::chrono::seconds((n * 977 + hour * 61) % secondsOfHour);
        if (time <= now) {
          list += (list.empty() ? "" : ",") + logJson(++id, habit.domain, habit.wasBlocked, time);
        }
      }
    }
  }
  return R"({"logs":[)" + list + "]}";
}

void answerWeek(UiStage& stage) {
  auto& http = stage.application.machine.http;
  const Date now = stage.application.machine.dispatch.now();
  for (const auto* const id : {"d1", "d2", "d3", "d4", "d5"}) {
    const std::string logs = "/devices/" + std::string(id) + "/logs";
    const bool isUsed = id == std::string_view("d1") || id == std::string_view("d2");
    http.answerAlways("GET", logs, 200, R"({"logs":[]})");
    http.answerAlways("GET", logs + "?limit=1000&offset=0", 200,
                      isUsed ? weekJson(now, id) : R"({"logs":[]})");
  }
}

ChildActivityView& openActivity(UiStage& stage) {
  auto& child = openChild(stage);
  answerWeek(stage);
  child.seeAllActivity();
  stage.settle();
  return stage.application.screen<ChildActivityView>();
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

std::string invitationJson() {
  return R"({"invite_code":"K7QX2M","expires_at":"2026-01-02T00:00:00Z","qr_data":"https://quillmar.live/join?code=K7QX2M"})";
}

std::string parentsJson(Date now) {
  return R"({"family":{"id":"f","name":"The Wells Family","primary_parent_id":"p","created_at":"c","updated_at":"u"},"is_primary":true,"members":[{"id":"m1","family_id":"f","parent_id":"p","role":"primary","display_name":"Ann Wells","can_manage_devices":true,"can_manage_policies":true,"is_active":true,"created_at":"c","email":"ann.wells@example.com"},{"id":"m2","family_id":"f","parent_id":"q","role":"member","display_name":"Tom","can_manage_devices":true,"can_manage_policies":false,"is_active":true,"created_at":"c","email":"tom@example.com"},{"id":"m3","family_id":"f","parent_id":"r","role":"member","display_name":"Grandmother Wilhelmina Featherstonehaugh","can_manage_devices":false,"can_manage_policies":false,"is_active":false,"created_at":"c"}],"pending_invitations":[{"id":"i1","family_id":"f","invite_code":"K7QX2M","invited_by":"p","status":"pending","created_at":"c","expires_at":")" +
         formatISO8601(now + 5400s) +
         R"("},{"id":"i2","family_id":"f","invite_code":"ZZ81PA","invited_by":"p","status":"pending","created_at":"c","expires_at":")" +
         formatISO8601(now - 60s) + R"("}]})";
}

FamilyMembersView& openFamily(UiStage& stage) {
  showFamily(stage);
  stage.application.machine.http.answerAlways("GET", "/family", 200,
                                              parentsJson(stage.application.machine.dispatch.now()));
  dashboard(stage).openFamilyMembers();
  stage.settle();
  return stage.application.screen<FamilyMembersView>();
}

std::string homeNetworkJson(const std::string& currentIP, bool matches) {
  return R"({"home_network":{"id":"h","parent_id":"p","name":"Home","public_ip":"203.0.113.7","is_active":true,"created_at":"2026-01-01T00:00:00Z","updated_at":"2026-01-01T00:00:00Z"},"policy":{"id":"hp","home_network_id":"h","parent_id":"p","is_blocked":false,"block_mode":"blacklist","blocked_domains":["games.example"],"allowed_domains":[],"created_at":"c","updated_at":"u"},"current_ip":")" +
         currentIP + R"(","ip_matches":)" + (matches ? "true" : "false") + "}";
}

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

}  // namespace quillmar
