// Many agents in one process and in virtual time. They enrol over a minute, check in for an hour, and lose
// the service for ten minutes.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/endurance/outcome.h"
#include "bench/endurance/virtual_agent.h"
#include "bench/endurance/virtual_cloud.h"
#include "child/child_enrollment_view.h"
#include "testing/live_memory.h"
#include "testing/virtual_dispatch.h"

namespace quillmar::endurance {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t wholeFleet = 10'000;
constexpr std::size_t shortForm = 500;
constexpr std::size_t mostBytesAnAgent = std::size_t{20} * 1024;
constexpr double million = 1e6;

class Fleet {
 public:
  explicit Fleet(std::size_t size) : size_(size) {}

  void live() {
    enrol();
    const auto atRest = checkinsBySecond(1h);
    const auto atStart = std::vector(atRest.begin(), atRest.begin() + 60);
    for (std::size_t second = 0; second < atRest.size(); ++second) {
      expect(atRest[second] == atStart[second % 60],
             "The check-ins of an hour do not stay spread as they started.");
    }
    tell("Agents", std::to_string(size_));
    tell("Live heap of an agent", kibibytes(heap_ / size_));
    expect(heap_ / size_ <= mostBytesAnAgent, "An agent takes " + std::to_string(heap_ / size_) + " bytes.");
    tellRate("at rest", atRest);

    cloud_.isAway = true;
    const auto away = checkinsBySecond(10min);
    tellRate("while the service is away", away);
    expect(std::ranges::none_of(agents_, [](const auto& agent) { return agent->isReached(); }),
           "An agent has not noticed.");
    cloud_.isAway = false;
    const auto after = checkinsBySecond(10min);
    tellRate("after it came back", after);
    expect(std::ranges::all_of(agents_,
                               [](const auto& agent) { return agent->isReached() && agent->isProtected(); }),
           "An agent has not come back.");
    expect(std::ranges::max(after) <= std::ranges::max(atRest), "The outage was followed by a stampede.");
  }

 private:
  void enrol() {
    std::uniform_int_distribution<int> anyMoment(0, 59'999);
    std::vector<Duration> moments(size_);
    std::ranges::generate(moments, [&] { return std::chrono::milliseconds(anyMoment(random_)); });
    std::ranges::sort(moments);
    agents_.reserve(size_);
    const auto before = liveBytes();
    std::vector<std::unique_ptr<ChildEnrollmentView>> screens;
    Duration passed{0};
    for (const auto moment : moments) {
      advance(moment - passed);
      passed = moment;
      agents_.push_back(std::make_unique<VirtualAgent>(surroundings_));
      screens.push_back(std::make_unique<ChildEnrollmentView>(agents_.back()->environment()));
      screens.back()->appear();
      screens.back()->startEnrollment();
    }
    advance(2min);
    expect(std::ranges::all_of(agents_, [](const auto& agent) { return agent->child().isEnrolled(); }),
           "An agent is not enrolled.");
    screens.clear();
    screens.shrink_to_fit();
    forgetCalls();
    heap_ = liveBytes() - before;
  }

  std::vector<std::uint64_t> checkinsBySecond(Duration duration) {
    std::vector<std::uint64_t> counts;
    for (auto passed = 0s; passed < duration; passed += 1s) {
      const auto before = cloud_.checkins();
      advance(1s);
      counts.push_back(cloud_.checkins() - before);
      if (passed % 60s == 0s) {
        forgetCalls();
      }
    }
    return counts;
  }

  void forgetCalls() {
    for (const auto& agent : agents_) {
      agent->tunnel.forgetCalls();
    }
  }

  void tellRate(const std::string& when, const std::vector<std::uint64_t>& counts) const {
    const auto [least, most] = std::ranges::minmax(counts);
    const double scale = million / static_cast<double>(size_);
    tell("Check-ins a second of a million devices " + when + ", minimum and maximum",
         std::to_string(static_cast<std::uint64_t>(static_cast<double>(least) * scale)) + ", " +
             std::to_string(static_cast<std::uint64_t>(static_cast<double>(most) * scale)));
  }

  static std::string kibibytes(std::size_t bytes) {
    return std::to_string(bytes / 1024) + '.' + std::to_string(bytes % 1024 * 10 / 1024) + " KiB";
  }
  void advance(Duration duration) { expect(time_.advance(duration), "The work does not settle."); }

  const std::size_t size_;
  std::mt19937_64 random_{1};
  VirtualDispatch time_;
  VirtualCloud cloud_{time_};
  CountingLog log_;
  Surroundings surroundings_{time_, cloud_, log_};
  std::vector<std::unique_ptr<VirtualAgent>> agents_;
  std::size_t heap_ = 0;
};

}  // namespace
}  // namespace quillmar::endurance

int main(int count, char** arguments) {
  using namespace quillmar::endurance;
  Fleet(isShort(count, arguments) ? shortForm : wholeFleet).live();
}
