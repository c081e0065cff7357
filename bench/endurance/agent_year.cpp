// A year of an agent in virtual time: check-ins, an endpoint that moves, a tunnel that drops, a service that
// is away for a night each week, suspends, a clock that is set both ways, and restarts.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <string>

#include "bench/endurance/outcome.h"
#include "bench/endurance/virtual_agent.h"
#include "bench/endurance/virtual_cloud.h"
#include "testing/live_memory.h"
#include "testing/virtual_dispatch.h"

namespace quillmar::endurance {
namespace {

using namespace std::chrono_literals;

constexpr auto tunnelRecovers = BackgroundService::vpnStatusCheckInterval + 5s;
constexpr auto checkinIsDue = BackgroundService::checkinInterval + 5s;
constexpr int firstSteadyDay = 7;
constexpr int daysOfARun = 5;

struct Length {
  int days;
  int restarts;
};
constexpr Length wholeYear{365, 10'000};
constexpr Length shortForm{21, 600};

// A clock that can be set while timers continue.
class SettableClock final : public Dispatch {
 public:
  explicit SettableClock(Dispatch& steady) : steady_(steady) {}

  void set(Duration ahead) { ahead_ = ahead; }

  Date now() const override { return steady_.now() + ahead_; }
  bool isMainThread() const override { return steady_.isMainThread(); }
  DispatchQueue& main() override { return steady_.main(); }
  DispatchQueue& global(QualityOfService quality) override { return steady_.global(quality); }
  std::shared_ptr<DispatchQueue> makeSerialQueue(std::string_view label) override {
    return steady_.makeSerialQueue(label);
  }
  [[nodiscard]] std::unique_ptr<Timer> scheduleRepeating(Duration period, Task task) override {
    return steady_.scheduleRepeating(period, std::move(task));
  }

 private:
  Dispatch& steady_;
  Duration ahead_{0};
};

class Year {
 public:
  explicit Year(Length length) : length_(length) {
    agent_.beEnrolled(cloud_.endpoint);
    startBetweenSeconds();
    advance(1min);
  }

  void live() {
    for (day_ = 0; day_ < length_.days; ++day_) {
      morning();
      noon();
      afternoon();
      night();
    }
  }

  void report() const {
    tell("Days", std::to_string(length_.days));
    for (const auto& [event, count] : events_) {
      tell(event, std::to_string(count));
    }
    tell("Check-ins", std::to_string(cloud_.checkins()));
    tell("Live heap at noon, from the second week on", std::to_string(*heap_) + " bytes, the same each day");
    tell("Log of a day",
         std::to_string(log_.bytes() / static_cast<std::size_t>(length_.days) / 1024) + " KiB");
  }

 private:
  // From 6 to 12: half of the day's restarts, and drops of the tunnel.
  void morning() {
    restart(restartsBy(0.5));
    for (int i = 0; i < 3; ++i) {
      dropTunnel();
      advance(1h);
    }
    if (day_ % 7 == 3) {
      moveEndpoint();
    }
    advance(2h);
    expectAllWell();
  }

  // From 12 to 13: nothing happens, so everything can be counted.
  void noon() {
    agent_.tunnel.forgetCalls();
    const auto checkins = cloud_.checkins();
    advance(1h);
    expect(cloud_.checkins() - checkins == 60,
           on("an hour has " + std::to_string(cloud_.checkins() - checkins) + " check-ins"));
    expect(agent_.tunnel.operations().size() == 240,
           on("an hour has " + std::to_string(agent_.tunnel.operations().size()) +
              " calls of the tunnel service"));
    agent_.tunnel.forgetCalls();
    const std::size_t heap = liveBytes();
    if (day_ == firstSteadyDay) {
      heap_ = heap;
    }
    expect(!heap_ || *heap_ == heap, on("the live heap is " + std::to_string(heap) + " bytes, not " +
                                        std::to_string(heap_.value_or(0))));
  }

  // From 13 to 22: the clock is wrong for a while; the other half of the day's restarts.
  void afternoon() {
    const auto wrong = std::chrono::minutes(std::uniform_int_distribution(-3000, 3000)(random_));
    clock_.set(wrong);
    ++events_["Clocks set wrong, by up to two days either way"];
    advance(3h);
    expectAllWell();
    restart(restartsBy(1));
    expectAllWell();
    clock_.set(0min);
    ++events_["Clocks set right"];
    advance(6h);
    expectAllWell();
  }

  // From 22 to 6: the device sleeps for hours; one night a week the service is unreachable.
  void night() {
    cloud_.isAway = day_ % 7 == 5;
    advance(1h);
    expect(agent_.isReached() != cloud_.isAway, on("what the agent says of the service is not so"));
    expect(agent_.isProtected(), on("the tunnel went down with the service"));
    events_["Nights without the service"] += cloud_.isAway ? 1 : 0;
    time_.jump(std::chrono::hours(std::uniform_int_distribution(1, 5)(random_)));
    time_.settle();
    ++events_["Suspends of hours"];
    advance(1h);
    cloud_.isAway = false;
    advance(checkinIsDue);
    expectAllWell();
  }

  int restartsBy(double partOfDay) const {
    const int until = std::min(day_ + daysOfARun - 1, length_.days - 1);
    return static_cast<int>((until + partOfDay) * length_.restarts / length_.days) - restarts_;
  }

  // Each restart interrupts another step of a start. On most days there is none, so that a process runs for
  // long.
  void restart(int times) {
    if (day_ % daysOfARun != 0) {
      return;
    }
    for (int i = 0; i < times; ++i) {
      agent_.restart();
      advance(std::chrono::milliseconds(std::uniform_int_distribution(0, 90'000)(random_)));
    }
    startBetweenSeconds();
    restarts_ += times;
    events_["Restarts"] += times;
    advance(checkinIsDue);
    expectAllWell();
  }

  // Everything else happens at whole seconds, so no request is in flight when the heap is measured.
  void startBetweenSeconds() {
    advance(1500ms - time_.now().time_since_epoch() % 1s);
    agent_.restart();
    advance(500ms);
  }

  void dropTunnel() {
    expect(agent_.tunnel.setStatus(TunnelStatus::disconnected), on("there is no tunnel to drop"));
    advance(0s);
    expect(!agent_.isProtected(), on("a tunnel that is down counts as protection"));
    advance(tunnelRecovers);
    expect(agent_.isProtected(), on("a dropped tunnel is not up again"));
    ++events_["Tunnels dropped"];
  }

  void moveEndpoint() {
    const auto number = std::to_string(1'000'000 + ++events_["Endpoints moved"]);
    cloud_.endpoint = "https://dns.example/000000000" + number;
    advance(checkinIsDue);
    advance(tunnelRecovers);
    expectAllWell();
  }

  void expectAllWell() {
    expect(agent_.isReached(), on("the service is not reached"));
    expect(agent_.isProtected(), on("the tunnel is not up"));
    expect(agent_.child().isDohConfigured() && agent_.child().dohConfigWarning().empty(),
           on("there is a warning: " + agent_.child().dohConfigWarning()));
    expect(agent_.child().dohEndpoint() == cloud_.endpoint && agent_.configuredEndpoint() == cloud_.endpoint,
           on("the endpoint is not the service's"));
  }

  std::string on(const std::string& fault) const {
    return "On day " + std::to_string(day_) + ": " + fault + ".";
  }
  void advance(Duration duration) { expect(time_.advance(duration), "The work does not settle."); }

  const Length length_;
  std::mt19937_64 random_{1};
  VirtualDispatch time_;
  SettableClock clock_{time_};
  VirtualCloud cloud_{clock_};
  CountingLog log_;
  Surroundings surroundings_{clock_, cloud_, log_};
  VirtualAgent agent_{surroundings_};
  int day_ = 0;
  int restarts_ = 0;
  std::map<std::string, int> events_;
  std::optional<std::size_t> heap_;
};

}  // namespace
}  // namespace quillmar::endurance

int main(int count, char** arguments) {
  using namespace quillmar::endurance;
  Year year(isShort(count, arguments) ? shortForm : wholeYear);
  year.live();
  year.report();
}
