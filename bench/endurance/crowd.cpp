// A thousand agents in real time, each with its own connection over TLS to one stand-in service, which is a
// program of its own. They enrol, and check in for some minutes.

#include <curl/curl.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "bench/endurance/outcome.h"
#include "bench/endurance/program.h"
#include "bench/endurance/virtual_agent.h"
#include "child/child_enrollment_view.h"
#include "platform/common/asio_dispatch.h"
#include "platform/common/curl_http_session.h"
#include "sandbox/http/client.h"
#include "sandbox/json.h"

namespace quillmar::endurance {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

struct Length {
  std::size_t agents;
  std::chrono::seconds arrival;  // the agents start at any moment of it
  std::chrono::seconds rest;
};
constexpr Length whole{1000, 30s, 180s};
constexpr Length shortForm{40, 1s, 0s};
constexpr auto patience = 60s;
// An agent's connection, its wake-ups and its thread's poll, with room to spare.
constexpr rlim_t filesOfAnAgent = 8;

// Without that, a thousand connections are more than a process may have open by default.
void allowFilesFor(std::size_t agents) {
  rlimit files{};
  ::getrlimit(RLIMIT_NOFILE, &files);
  const rlim_t needed = 256 + filesOfAnAgent * agents;
  require(files.rlim_max >= needed, "This needs " + std::to_string(needed) + " open files (ulimit -Hn).");
  files.rlim_cur = std::max(files.rlim_cur, needed);
  ::setrlimit(RLIMIT_NOFILE, &files);
}

class Latencies {
 public:
  void add(Clock::duration latency) {
    const std::scoped_lock lock(mutex_);
    all_.push_back(latency);
  }
  std::vector<Clock::duration> take() {
    const std::scoped_lock lock(mutex_);
    return std::exchange(all_, {});
  }

 private:
  std::mutex mutex_;
  std::vector<Clock::duration> all_;
};

// Measures the check-ins of one agent.
class TimedSession final : public HttpSession {
 public:
  TimedSession(const std::string& caFile, Latencies& latencies)
      : network_(CurlHttpSession::Options{.extraCaFile = caFile}), latencies_(latencies) {}

  void dataTask(HttpRequest request, Completion completion) override {
    if (request.url.ends_with("/device/checkin")) {
      completion = [this, start = Clock::now(), completion = std::move(completion)](DataTaskResult result) {
        latencies_.add(Clock::now() - start);
        completion(std::move(result));
      };
    }
    network_.dataTask(std::move(request), std::move(completion));
  }
  void beginBatch() override { network_.beginBatch(); }
  void endBatch() override { network_.endBatch(); }

 private:
  CurlHttpSession network_;
  Latencies& latencies_;
};

// A parent for all, who approves each code as it is shown.
class Parent {
 public:
  explicit Parent(int port) : thread_([this, port](const std::stop_token& stop) { approve(port, stop); }) {}

  void see(const std::string& code) {
    const std::scoped_lock lock(mutex_);
    codes_.push_back(code);
    seen_.notify_one();
  }

 private:
  void approve(int port, const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    while (seen_.wait(lock, stop, [this] { return !codes_.empty(); })) {
      const std::string code = codes_.front();
      codes_.pop_front();
      lock.unlock();
      static_cast<void>(
          sandbox::post(port, "/sandbox/approve", sandbox::Json{{"enrollment_code", code}}.dump()));
      lock.lock();
    }
  }

  std::mutex mutex_;
  std::condition_variable_any seen_;
  std::deque<std::string> codes_;
  std::jthread thread_;
};

class Agent {
 public:
  Agent(Dispatch& dispatch, Log& log, const std::string& root, const std::string& caFile,
        Latencies& latencies)
      : session_(caFile, latencies), surroundings_{dispatch, session_, log, root}, agent_(surroundings_) {}

  void enrol(Parent& parent) {
    screen_ = std::make_unique<ChildEnrollmentView>(agent_.environment());
    code_ = screen_->enrollmentCode.onChange([this, &parent] {
      if (!screen_->enrollmentCode().empty()) {
        parent.see(screen_->enrollmentCode());
      }
    });
    screen_->appear();
    screen_->startEnrollment();
  }

  bool isReached() { return agent_.child().isEnrolled() && agent_.isReached(); }
  bool isProtected() { return agent_.isProtected(); }

 private:
  TimedSession session_;
  Surroundings surroundings_;
  VirtualAgent agent_;
  std::unique_ptr<ChildEnrollmentView> screen_;
  Subscription code_;
};

class Crowd {
 public:
  explicit Crowd(Length length) : length_(length) {
    said_ = service_.readUntil("quillmar-sandbox ");
    root_ = "https://" + after("https://");
    caFile_ = after("ca=");
    require(!caFile_.empty(), "The service does not start: " + said_);
  }

  void live() {
    arrive();
    tell("Agents enrolled and checked in, over TLS", std::to_string(length_.agents));
    tellService("to enrol all of them");
    tellLatencies("the first check-in");
    if (length_.rest > 0s) {
      const auto end = Clock::now() + length_.rest;
      runUntil(end, [] { return false; });
      tellService("in " + std::to_string(length_.rest.count()) + " s of check-ins each minute");
      tellLatencies("a check-in");
    }
    require(std::ranges::all_of(agents_,
                                [](const auto& agent) { return agent->isReached() && agent->isProtected(); }),
            "An agent is not reached or not protected.");
  }

 private:
  void arrive() {
    Parent parent(std::stoi(after("http://127.0.0.1:")));
    std::uniform_int_distribution<long long> anyMoment(
        0, std::chrono::milliseconds(length_.arrival).count() - 1);
    std::vector<std::chrono::milliseconds> moments(length_.agents);
    std::ranges::generate(moments, [&] { return std::chrono::milliseconds(anyMoment(random_)); });
    std::ranges::sort(moments);
    const auto start = Clock::now();
    for (const auto moment : moments) {
      runUntil(start + moment, [] { return false; });
      agents_.push_back(std::make_unique<Agent>(dispatch_, log_, root_, caFile_, latencies_));
      agents_.back()->enrol(parent);
    }
    const auto allIn = [this] {
      return std::ranges::all_of(
          agents_, [](const auto& agent) { return agent->isReached() && agent->isProtected(); });
    };
    runUntil(Clock::now() + patience, allIn);
    require(allIn(), "An agent is not enrolled and protected.");
  }

  void runUntil(Clock::time_point end, const std::function<bool()>& isDone) {
    while (!isDone() && dispatch_.runOne(end)) {
    }
  }

  void tellService(const std::string& when) {
    const double spent = processorSecondsOf(service_.process());
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f s", spent - spent_);
    spent_ = spent;
    tell("Processor time of the service " + when, text.data());
    tell("Memory (PSS) of the service then",
         std::to_string(processFigure(service_.process(), "smaps_rollup", "Pss") / 1024) + " MiB");
    tell("Open files of the service then", std::to_string(openFilesOf(service_.process())));
  }

  void tellLatencies(const std::string& what) {
    auto all = latencies_.take();
    require(!all.empty(), "There are no check-ins.");
    std::ranges::sort(all);
    const auto at = [&all](double part) {
      const auto index = static_cast<std::size_t>(part * static_cast<double>(all.size() - 1));
      return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(all[index]).count()) +
             " ms";
    };
    tell("Time of " + what + " (" + std::to_string(all.size()) + "): median, 99th percentile, longest",
         at(0.5) + ", " + at(0.99) + ", " + at(1));
  }

  std::string after(const std::string& mark) const {
    const auto start = said_.find(mark);
    return start == std::string::npos
               ? std::string()
               : said_.substr(start + mark.size(), said_.find_first_of(" \n", start) - start - mark.size());
  }

  const Length length_;
  Program service_{{QUILLMAR_SANDBOX, "--port", "0", "--tls-port", "0", "--memory"}};
  std::string said_;
  std::string root_;
  std::string caFile_;
  std::mt19937_64 random_{1};
  CountingLog log_;
  Latencies latencies_;
  AsioDispatch dispatch_;
  std::vector<std::unique_ptr<Agent>> agents_;
  double spent_ = 0;
};

}  // namespace
}  // namespace quillmar::endurance

int main(int count, char** arguments) {
  using namespace quillmar::endurance;
  const Length length = isShort(count, arguments) ? shortForm : whole;
  curl_global_init(CURL_GLOBAL_DEFAULT);
  try {
    allowFilesFor(length.agents);
    Crowd(length).live();
  } catch (const std::exception& fault) {
    expect(false, fault.what());
  }
}
