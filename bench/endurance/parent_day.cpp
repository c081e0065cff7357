// A parent's long day: a child's page with five devices and long lists of sites, its sheets opened and
// closed, its content changed at every poll. In a window, in virtual time.

#include <malloc.h>

#include <QEvent>
#include <QGuiApplication>
#include <QPixmapCache>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "bench/endurance/outcome.h"
#include "console/edit_child_name_view.h"
#include "console/link_device_view.h"
#include "testing/ui/offscreen.h"
#include "testing/ui/parent_stage.h"

namespace quillmar::endurance {
namespace {

using namespace std::chrono_literals;

constexpr int wholeDay = 10'000;
constexpr int shortForm = 2000;
constexpr int siteCount = 500;
constexpr int parts = 10;

struct Inventory {
  std::size_t heap = 0;
  std::size_t files = 0;
  std::size_t items = 0;
};

std::size_t openFiles() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

std::size_t itemsOf(const QQuickItem& item) {
  std::size_t count = 1;
  for (const QQuickItem* child : item.childItems()) {
    count += itemsOf(*child);
  }
  return count;
}

std::string sites(const std::string& name) {
  std::string list;
  for (int i = 0; i < siteCount; ++i) {
    list += (i > 0 ? ",\"" : "\"") + name + std::to_string(i) + ".example\"";
  }
  return list;
}

std::string mia() {
  std::string text = miaJson();
  const auto replace = [&text](const std::string& old, const std::string& now) {
    text.replace(text.find(old), old.size(), now);
  };
  replace(R"("games.example","video.example")", sites("blocked"));
  replace(R"("school.example","Library.example.org")", sites("allowed"));
  return text;
}

class Day {
 public:
  explicit Day(int rounds) : rounds_(rounds), page_(openChild(stage_)) {
    http().answerAlways("GET", "/children/c1", 200, mia());
    stage_.advance(15s);
  }

  // The first tenth fills caches and is not counted. The heap rises and falls by a third with the garbage of
  // QML's engine, so the smallest of the two halves are compared, and the bound is wide.
  void live() {
    std::vector<Inventory> early;
    std::vector<Inventory> late;
    for (int part = 0; part < parts; ++part) {
      for (int round = 0; round < rounds_ / parts; ++round) {
        openAndClose();
        change(round);
        // A running event loop deletes these objects too.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
      }
      if (part > 0) {
        (part < parts / 2 ? early : late).push_back(inventory());
      }
    }
    tell("Sheets opened and closed", std::to_string(2 * rounds_));
    tell("Polls that changed the page", std::to_string(rounds_));
    compare("Heap, in KiB", early, late, &Inventory::heap, 1.5);
    compare("Items of the window's scene", early, late, &Inventory::items, 1);
    compare("Open files", early, late, &Inventory::files, 1);
  }

 private:
  void openAndClose() {
    page_.editName();
    stage_.settle();
    expect(page_.showEditName(), "A sheet does not open.");
    stage_.press(Qt::Key_Escape);
    stage_.settle();
    expect(!page_.showEditName(), "A sheet does not close.");
    page_.devicesSection.linkDevice();
    stage_.settle();
    stage_.press(Qt::Key_Escape);
    stage_.settle();
  }

  void change(int round) {
    const auto now = stage_.application.machine.dispatch.now();
    const std::string logs =
        R"({"logs":[)" + logJson(3 * round, "www.school.example", false, now - 3s) + "," +
        logJson(3 * round + 1, "site" + std::to_string(round % 50) + ".example", true, now - 9s) + "]}";
    for (const auto* device : {"d1", "d2", "d3", "d4", "d5"}) {
      http().answerAlways("GET", "/devices/" + std::string(device) + "/logs", 200, logs);
    }
    stage_.advance(2s);
    http().forgetRequests();
    stage_.application.machine.log.clear();
  }

  Inventory inventory() {
    qmlEngine(&stage_.window())->collectGarbage();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    stage_.picture();
    QPixmapCache::clear();
    malloc_trim(0);
    return {.heap = mallinfo2().uordblks / 1024,
            .files = openFiles(),
            .items = itemsOf(*stage_.window().contentItem())};
  }

  ScriptedHttpSession& http() { return stage_.application.machine.http; }

  static void compare(const std::string& what, const std::vector<Inventory>& early,
                      const std::vector<Inventory>& late, std::size_t Inventory::*count, double mostGrowth) {
    const std::size_t before = std::ranges::min(early, {}, count).*count;
    const std::size_t after = std::ranges::min(late, {}, count).*count;
    tell(what + ": least of the first half, least of the second",
         std::to_string(before) + ", " + std::to_string(after));
    expect(static_cast<double>(after) <= static_cast<double>(before) * mostGrowth, "It has grown.");
  }

  const int rounds_;
  ui::UiStage stage_{{.stored = signedInParent()}};
  ChildDetailView& page_;
};

}  // namespace
}  // namespace quillmar::endurance

int main(int count, char** arguments) {
  using namespace quillmar::endurance;
  quillmar::ui::drawOffscreen();
  const int rounds = isShort(count, arguments) ? shortForm : wholeDay;
  int noArguments = 1;
  const QGuiApplication application(noArguments, arguments);
  Day(rounds).live();
}
