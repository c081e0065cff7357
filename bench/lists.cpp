#include <QGuiApplication>
#include <QTextStream>
#include <string>
#include <vector>

#include "bench/measure.h"
#include "client/network_service.h"
#include "console/child_detail_view.h"
#include "console/device_list_view.h"
#include "foundation/date_format.h"
#include "testing/ui/offscreen.h"
#include "testing/ui/ui_stage.h"

// The main thread's time for refreshing a visible list: decoding the answer, updating the model and, through
// the bridge, the window. Painting is excluded.
namespace {

using namespace quillmar;
using namespace std::chrono_literals;

constexpr int rounds = 41;

std::string device(int id, bool isOnline) {
  const auto name = std::to_string(id);
  return R"({"id":"d)" + name + R"(","parent_id":"p","device_name":"Device )" + name +
         R"(","device_type":"ios","doh_endpoint":"https://dns.example/)" + name +
         R"(","is_active":true,"created_at":"c","updated_at":"u","is_online":)" +
         (isOnline ? "true" : "false") + "}";
}

std::string child(int id, int devices) {
  const auto name = std::to_string(id);
  std::string list;
  for (int i = 0; i < devices; ++i) {
    list += (i > 0 ? "," : "") + device(id * devices + i, i % 2 == 0);
  }
  return R"({"id":"c)" + name + R"(","family_id":"f","name":"Child )" + name +
         R"(","is_active":true,"created_at":"c","updated_at":"u","devices":[)" + list + "]}";
}

std::string family(int children, int devicesEach) {
  std::string list;
  for (int i = 0; i < children; ++i) {
    list += (i > 0 ? "," : "") + child(i, devicesEach);
  }
  return R"({"children":[)" + list + R"(],"unassigned_devices":[]})";
}

std::string logs(Date newest, int count, int round) {
  std::string list;
  for (int i = 0; i < count; ++i) {
    list += (i > 0 ? "," : "") + (R"({"id":)" + std::to_string(round * count + i)) +
            R"(,"device_id":"d0","parent_id":"p","domain":"www.site)" + std::to_string(i) +
            R"(.example","query_type":"A","was_blocked":false,"timestamp":")" +
            formatISO8601(newest - std::chrono::seconds(i)) + R"("})";
  }
  return R"({"logs":[)" + list + "]}";
}

StoredSettings signedIn() {
  auto stored = asParent();
  stored[NetworkService::authTokenKey] = std::string("token");
  stored["authTokenTimestamp"] = VirtualDispatch::defaultStart;
  return stored;
}

// Runs everything that is due, in the application and then in its window.
void settle(ui::UiStage& stage) {
  stage.application.settle();
  QCoreApplication::processEvents();
}

// Everything runs on the main thread, also decoding and the scripted session's queues.
double median(ui::UiStage& stage, Duration period, const std::function<void()>& prepare) {
  std::vector<bench::Seconds> times;
  for (int round = 0; round <= rounds; ++round) {
    prepare();
    stage.application.machine.dispatch.advance(period - 1ms);
    settle(stage);
    const auto start = bench::cpuTime(CLOCK_THREAD_CPUTIME_ID);
    stage.application.machine.dispatch.advance(1ms);
    settle(stage);
    if (round > 0) {
      times.push_back(bench::cpuTime(CLOCK_THREAD_CPUTIME_ID) - start);
    }
  }
  return bench::median(std::move(times)).count() * 1000;
}

double refreshDashboard() {
  ui::UiStage stage({.stored = signedIn()});
  auto& http = stage.application.machine.http;
  http.answerAlways("GET", "/children", 200, family(50, 4));
  stage.application.screen<DeviceListView>().loadChildren();
  stage.settle();
  return median(stage, 30s, [] {});
}

double tickActivity() {
  ui::UiStage stage({.stored = signedIn()});
  auto& http = stage.application.machine.http;
  http.answerAlways("GET", "/children", 200, family(1, 1));
  http.answerAlways("GET", "/children/c0", 200, child(0, 1));
  stage.application.screen<DeviceListView>().loadChildren();
  stage.settle();
  stage.application.screen<DeviceListView>().cards[0].tap();
  stage.settle();
  auto& screen = stage.application.screen<ChildDetailView>();
  const auto newest = stage.application.machine.dispatch.now();
  http.answerAlways("GET", "/devices/d0/logs", 200, logs(newest, 100, 0));
  screen.selectedTab = ChildDetailTab::sitesAllowed;
  stage.settle();
  return median(stage, 2s, [] {});
}

}  // namespace

int main(int count, char** arguments) {
  quillmar::ui::drawOffscreen();
  const QGuiApplication application(count, arguments);
  QTextStream out(stdout);
  out << "a silent refresh of 50 children and 200 devices: " << refreshDashboard() << " ms of main thread\n";
  out << "a tick of a list of 100 sites: " << tickActivity() << " ms of main thread\n";
  return 0;
}
