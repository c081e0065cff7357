// Kills the programs with SIGKILL at random points of what they do, and looks after each kill at what is
// left: nothing confirmed may be lost, nothing half-done may stay, and nothing may keep the next one out.

#include "bench/endurance/kills.h"

#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <string_view>
#include <thread>
#include <vector>

#include "bench/endurance/outcome.h"
#include "platform/common/sqlite_settings_store.h"
#include "platform/settings.h"
#include "testing/recording_log.h"

namespace quillmar::endurance {

namespace fs = std::filesystem;

Variables killedAt(long call) {
  return {{"LD_PRELOAD", QUILLMAR_KILL_POINT}, {"QUILLMAR_KILL_AT", std::to_string(call)}};
}

Variables CallCount::variables() const {
  return {{"LD_PRELOAD", QUILLMAR_KILL_POINT}, {"QUILLMAR_KILL_COUNT", file_.string()}};
}

long CallCount::read() const {
  long calls = 0;
  std::ifstream(file_) >> calls;
  require(calls > 0, "A program's calls are not counted.");
  return calls;
}

long anyOf(long calls, Random& random) { return std::uniform_int_distribution(1L, calls)(random); }

namespace {

constexpr int wholeRun = 1000;
constexpr int shortForm = 20;
constexpr Random::result_type usualSeed = 1;

struct Order {
  int kills = wholeRun;
  Random::result_type seed = usualSeed;
};

Order orderFrom(int count, char** arguments) {
  Order order;
  for (int i = 1; i < count; ++i) {
    const std::string_view word = arguments[i];
    if (word == "--short") {
      order.kills = shortForm;
    } else {
      order.seed = std::strtoull(arguments[i], nullptr, 10);
      expect(order.seed > 0, "usage: kills [--short] [SEED]");
    }
  }
  return order;
}

// With nothing but a loopback of its own.
bool entersOwnNetwork() {
  if (::unshare(CLONE_NEWNET) != 0) {
    return false;
  }
  const FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  ifreq loopback{};
  loopback.ifr_name[0] = 'l';
  loopback.ifr_name[1] = 'o';
  loopback.ifr_flags = IFF_UP | IFF_RUNNING;
  return ::ioctl(socket.get(), SIOCSIFFLAGS, &loopback) == 0;
}

class Run {
 public:
  Run(Kind kind, const Order& order) : kind_(std::move(kind)), order_(order), left_(order.kills) {}

  void carryOut() {
    const auto start = std::chrono::steady_clock::now();
    {
      std::vector<std::jthread> threads;
      for (std::size_t i = 0; i < kind_.sideBySide; ++i) {
        threads.emplace_back([this, i] { killOne(i); });
      }
    }
    expect(fault_.empty(), kind_.name + ": " + fault_);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    tell(kind_.name + " killed", std::to_string(order_.kills));
    tell(kind_.name + ", " + kind_.what, std::to_string(*kind_.times));
    // So few as in the short form may all be early by chance.
    constexpr int telling = 100;
    expect(*kind_.times > 0 || order_.kills < telling, kind_.name + " were killed too early.");
    tell(kind_.name + " that ended by themselves before that", std::to_string(survivors_));
    tell(kind_.name + ", time for a kill, " + std::to_string(kind_.sideBySide) + " side by side",
         std::to_string(static_cast<int>(1000 * passed.count() / order_.kills)) + " ms");
  }

 private:
  void killOne(std::size_t number) {
    try {
      std::seed_seq seed{order_.seed, std::hash<std::string>()(kind_.name), number};
      const auto mortal = kind_.make(Random(seed));
      while (left_-- > 0) {
        while (!mortal->live()) {
          ++survivors_;
        }
      }
      mortal->conclude();
    } catch (const std::exception& fault) {
      left_ = 0;
      const std::scoped_lock lock(mutex_);
      fault_ += fault_.empty() ? fault.what() : "";
    }
  }

  const Kind kind_;
  const Order order_;
  std::atomic<int> left_;
  std::atomic<int> survivors_ = 0;
  std::mutex mutex_;
  std::string fault_;
};

void carryOut(const Order& order) {
  const bool isAlone = entersOwnNetwork();
  tell("Seed", std::to_string(order.seed));
  Run(agents(), order).carryOut();
  Run(windows(), order).carryOut();
  Run(services(), order).carryOut();
  if (isAlone) {
    Run(tunnels(), order).carryOut();
  } else {
    tell("Tunnels", "left out, as only root can have a network of its own");
  }
}

}  // namespace
}  // namespace quillmar::endurance

int main(int count, char** arguments) {
  using namespace quillmar::endurance;
  try {
    carryOut(orderFrom(count, arguments));
  } catch (const std::exception& fault) {
    expect(false, fault.what());
  }
}
