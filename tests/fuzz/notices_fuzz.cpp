// The input is what happens to a child's device, a byte each: what it may be told of it is bounded.

#include <algorithm>
#include <array>
#include <chrono>
#include <set>
#include <string>

#include "child/protection_notices.h"
#include "testing/fake_notifications.h"
#include "testing/test_application.h"
#include "tests/fuzz/fuzz.h"

using namespace quillmar;
using namespace std::chrono_literals;
using fuzz::require;

namespace {

constexpr std::size_t mostEvents = 64;

void happen(TestApplication& app, ProtectionNotices& notices, std::uint8_t event) {
  constexpr std::array statuses{TunnelStatus::invalid,     TunnelStatus::disconnected,
                                TunnelStatus::connecting,  TunnelStatus::connected,
                                TunnelStatus::reasserting, TunnelStatus::disconnecting};
  constexpr std::uint8_t kinds = 4;
  const auto choice = static_cast<std::size_t>(event / kinds);
  switch (event % kinds) {
    case 0:
      app.machine.tunnel.setStatus(statuses.at(choice % statuses.size()));
      break;
    case 1:
      app.advance(std::chrono::seconds(choice));
      break;
    case 2:
      if (choice % 2 == 0) {
        notices.windowClosed();
      } else {
        notices.flip();
      }
      break;
    default:
      if (choice % 8 == 0) {
        app.environment().childAppState()->resetEnrollment();
      }
  }
  app.settle();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::set<std::string> known{"Protection Is Back", "Protection Is Down",
                                           "Quillmar Is Still Running"};
  TestApplication app(asEnrolledChild());
  FakeNotifications desktop;
  ProtectionNotices notices(app.environment(), desktop, true);
  app.settle();
  const auto start = app.machine.dispatch.now();
  // After notices were off, they know nothing of what was told before.
  std::set<std::size_t> newBeginnings;
  for (std::size_t i = 0; i < std::min(size, mostEvents); ++i) {
    const auto before = desktop.all.size();
    const bool mayTell = app.environment().childAppState()->isEnrolled();
    happen(app, notices, data[i]);
    require(mayTell || desktop.all.size() == before, "a device that is not enrolled is told nothing");
    if (!notices.isOn() || !app.environment().childAppState()->isEnrolled()) {
      newBeginnings.insert(desktop.all.size());
    }
  }
  const auto minutes =
      std::chrono::duration_cast<std::chrono::minutes>(app.machine.dispatch.now() - start).count();
  std::size_t changes = 0;
  std::string last;
  for (std::size_t i = 0; i < desktop.all.size(); ++i) {
    const auto& notice = desktop.all[i];
    require(known.contains(notice.title), "the texts are the program's own");
    if (newBeginnings.contains(i)) {
      last.clear();
    }
    if (notice.id == "protection") {
      ++changes;
      require(notice.title != last, "the same state is no news");
      last = notice.title;
    }
  }
  require(changes <= static_cast<std::size_t>(minutes) + 1, "a change is told once a minute at most");
  require(desktop.visible.size() <= 2, "the news replaces what is no longer true");
  return 0;
}
