#include <QGuiApplication>
#include <QQuickWindow>
#include <QTextStream>
#include <algorithm>
#include <functional>
#include <vector>

#include "bench/measure.h"
#include "testing/ui/offscreen.h"
#include "testing/ui/parent_stage.h"

// The main thread's time for each frame while a window is resized from 390 to 1600 points and back: the
// layout, the move of a page between its places, and painting by software.
namespace {

using namespace quillmar;

constexpr int narrowest = 390;
constexpr int widest = 1600;
constexpr int height = 900;
constexpr int step = 10;
constexpr double frame = 1000.0 / 60;  // milliseconds

double timeOfFrame(ui::UiStage& stage, int width) {
  const auto start = bench::cpuTime(CLOCK_THREAD_CPUTIME_ID);
  stage.window().resize(width, height);
  QCoreApplication::processEvents();
  stage.window().grabWindow();
  return (bench::cpuTime(CLOCK_THREAD_CPUTIME_ID) - start).count() * 1000;
}

std::vector<double> resize(ui::UiStage& stage) {
  std::vector<double> times;
  for (int width = narrowest; width <= widest; width += step) {
    times.push_back(timeOfFrame(stage, width));
  }
  for (int width = widest; width >= narrowest; width -= step) {
    times.push_back(timeOfFrame(stage, width));
  }
  return times;
}

void report(const char* what, const std::function<void(ui::UiStage&)>& show) {
  ui::UiStage stage({.stored = signedInParent(), .size = {narrowest, height}});
  show(stage);
  // The first round loads what a wide window needs.
  const auto firstTimes = resize(stage);
  const double first = *std::ranges::max_element(firstTimes);
  auto times = resize(stage);
  std::ranges::sort(times);
  const auto late = std::ranges::count_if(times, [](double time) { return time > frame; });
  QTextStream(stdout) << "a resize of " << what << " from " << narrowest << " to " << widest
                      << " points and back: " << times.size() << " frames, " << times[times.size() / 2]
                      << " ms the median, " << times.back() << " ms the longest, " << late
                      << " late for 60 a second; the longest of the first time " << first << " ms\n";
}

}  // namespace

int main(int count, char** arguments) {
  quillmar::ui::drawOffscreen();
  const QGuiApplication application(count, arguments);
  report("the dashboard", showFamily);
  report("a child's page", [](ui::UiStage& stage) { openChild(stage); });
  return 0;
}
