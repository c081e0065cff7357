#include <QGuiApplication>
#include <QQuickWindow>
#include <QTextStream>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench/measure.h"
#include "console/activity_counts.h"
#include "console/activity_log.h"
#include "console/child_activity_view.h"
#include "console/root_domain.h"
#include "foundation/calendar.h"
#include "testing/live_memory.h"
#include "testing/ui/offscreen.h"
#include "testing/ui/parent_stage.h"

// Counts a child's activity, against the simplest loop over the same records. Also measures the main thread's
// time for a keystroke in the filter of its rows.
namespace {

using namespace quillmar;
using namespace std::chrono_literals;

constexpr int rounds = 11;
constexpr int entryCount = 200'000;
constexpr int pageSize = 1000;
constexpr int filteredRows = 2000;

using LogPage = std::vector<DNSLog>;

// A request every three seconds, of 800 sites with five names each.
std::vector<LogPage> makePages(Date newest) {
  std::vector<LogPage> pages;
  for (int i = 0; i < entryCount; ++i) {
    if (i % pageSize == 0) {
      pages.emplace_back();
    }
    const int name = i * 7919 % 4000;
    pages.back().push_back(
        {.id = entryCount - i,
         .deviceId = "8d3c6a3e-2f0f-4a53-9d7e-0d8a4a1f6c55",
         .parentId = "0b6f4a52-6c0e-4a8e-8f43-0c5f4a8d7e11",
         .domain = "host" + std::to_string(name % 5) + ".site" + std::to_string(name / 5) + ".example",
         .queryType = "A",
         .wasBlocked = i % 5 == 0,
         .timestamp = formatISO8601(newest - std::chrono::seconds(3 * i))});
  }
  return pages;
}

ActivityScope scopeOf(const Calendar& calendar, Date now) {
  const LocalDay today = calendar.dayOf(now);
  std::vector<Date> days;
  for (int back = 6; back >= -1; --back) {
    days.push_back(calendar.startOf(today - std::chrono::days(back)));
  }
  return {.device = {}, .days = days, .hours = calendar.hoursOf(today)};
}

// The simplest loop: no ids, no days, only UTC.
std::size_t countPlainly(const std::vector<LogPage>& pages, Date now) {
  const Date today = std::chrono::floor<std::chrono::days>(now);
  std::array<ActivityCount, 24> hours{};
  std::unordered_map<std::string, ActivityCount> sites;
  for (const LogPage& page : pages) {
    for (const DNSLog& log : page) {
      const auto time = parseTimestamp(log.timestamp);
      if (time && *time >= today && *time < today + 24h) {
        hours[static_cast<std::size_t>((*time - today) / 1h)].add(log.wasBlocked);
      }
      sites[rootDomain(log)].add(log.wasBlocked);
    }
  }
  return sites.size() + hours[12].total();
}

std::size_t countAll(const std::vector<LogPage>& pages, const DateStyles& styles,
                     const ActivityScope& scope) {
  ActivityLog log(styles);
  ActivityCounts counts(scope);
  for (const LogPage& page : pages) {
    log.add(0, page);
    counts.add(log);
  }
  return log.siteCount() + counts.hours()[12].total();
}

void count(QTextStream& out) {
  const Date now = VirtualDispatch::defaultStart;
  const auto pages = makePages(now);
  const Calendar calendar("en_US", "Australia/Sydney");
  const DateStyles styles("en_US", "Australia/Sydney");
  const auto scope = scopeOf(calendar, now);
  std::size_t counted = 0;
  const auto times = bench::race(rounds, {[&] { counted += countAll(pages, styles, scope); },
                                          [&] { counted += countPlainly(pages, now); }});
  out << "200000 entries: " << times[0].count() * 1000 << " ms, the plainest loop " << times[1].count() * 1000
      << " ms, " << times[0] / times[1] << " times its time\n";

  const std::size_t before = liveBytes();
  ActivityLog log(styles);
  ActivityCounts counts(scope);
  for (std::size_t i = 0; i + 1 < pages.size(); ++i) {
    log.add(0, pages[i]);
    counts.add(log);
  }
  const auto start = bench::cpuTime(CLOCK_PROCESS_CPUTIME_ID);
  log.add(0, pages.back());
  counts.add(log);
  const auto last = bench::cpuTime(CLOCK_PROCESS_CPUTIME_ID) - start;
  out << "the last page of them: " << last.count() * 1000 << " ms\n";
  out << "memory of an entry: " << static_cast<double>(liveBytes() - before) / entryCount << " bytes\n";
  if (counted == 0) {
    out << "nothing was counted\n";
  }
}

std::string manySites(Date now) {
  std::string list;
  for (int i = 0; i < filteredRows; ++i) {
    list += (i > 0 ? "," : "") +
            logJson(i, "www.site" + std::to_string(i) + ".example", i % 3 == 0, now - i * 1s);
  }
  return R"({"logs":[)" + list + "]}";
}

// The main thread's time until the window is painted again, as a whole.
bench::Seconds timeOfFrame(ui::UiStage& stage, const std::function<void()>& change) {
  const auto start = bench::cpuTime(CLOCK_THREAD_CPUTIME_ID);
  change();
  stage.application.settle();
  QCoreApplication::processEvents();
  stage.window().grabWindow();
  return bench::cpuTime(CLOCK_THREAD_CPUTIME_ID) - start;
}

// Each round adds or removes one digit. Frames in which nothing changes alternate with them, so that
// the ratio of both does not depend on the machine's load.
void type(QTextStream& out, QSize size) {
  ui::UiStage stage({.stored = signedInParent(), .size = size});
  auto& child = openChild(stage);
  answerWeek(stage);
  auto& http = stage.application.machine.http;
  http.answerAlways("GET", "/devices/d2/logs?limit=1000&offset=0", 200, R"({"logs":[]})");
  http.answerAlways("GET", "/devices/d1/logs?limit=1000&offset=0", 200,
                    manySites(stage.application.machine.dispatch.now()));
  child.seeAllActivity();
  stage.settle();
  auto& screen = stage.application.screen<ChildActivityView>();
  screen.filter.open();
  stage.settle();
  std::vector<bench::Seconds> models;
  std::vector<bench::Seconds> frames;
  std::vector<bench::Seconds> emptyFrames;
  const std::vector<std::string> typed{"1", "12", "123", "12", "1", "site", ""};
  for (int round = 0; round < 6; ++round) {
    for (const std::string& text : typed) {
      frames.push_back(timeOfFrame(stage, [&] {
        const auto start = bench::cpuTime(CLOCK_THREAD_CPUTIME_ID);
        screen.filter.text = text;
        models.push_back(bench::cpuTime(CLOCK_THREAD_CPUTIME_ID) - start);
      }));
      stage.settle();
      emptyFrames.push_back(timeOfFrame(stage, [] {}));
    }
  }
  const double frame = bench::median(frames).count() * 1000;
  const double empty = bench::median(emptyFrames).count() * 1000;
  out << "a keystroke over 2000 rows, " << size.width() << " wide: " << bench::median(models).count() * 1000
      << " ms of main thread in the model, " << frame << " ms with its frame, "
      << std::ranges::max(frames).count() * 1000 << " ms the longest; a frame without a change " << empty
      << " ms, ratio " << frame / empty << "\n";
}

}  // namespace

int main(int argumentCount, char** arguments) {
  quillmar::ui::drawOffscreen();
  const QGuiApplication application(argumentCount, arguments);
  QTextStream out(stdout);
  count(out);
  type(out, {390, 844});
  type(out, {820, 1180});
  type(out, {1280, 800});
  return 0;
}
