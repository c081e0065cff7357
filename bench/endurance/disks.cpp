// A disk that becomes full, read-only, gone or slow at each call that changes it, one after the other, while
// settings are saved and while an agent enrols, works, checks in and forgets. Nothing may crash or hang,
// nothing confirmed may be lost, nothing half-done may stay, and a device that was enrolled is looked after.

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/endurance/installation.h"
#include "bench/endurance/outcome.h"
#include "bench/endurance/program.h"
#include "platform/common/sqlite_settings_store.h"
#include "testing/recording_log.h"
#include "tests/programs/enrolled_device.h"

namespace quillmar::endurance {
namespace {

namespace fs = std::filesystem;

constexpr std::array keys{"one", "two", "three"};
constexpr std::int64_t versions = 3;
constexpr const char* storeCommand = "store";
constexpr std::size_t sideBySide = 32;
// Of the short form, of each deed on each disk. An enrollment takes seconds.
constexpr long fewEnrollments = 3;
constexpr long fewOthers = 12;

// This program as another one, which saves settings.
void saveSettings(const fs::path& data) {
  RecordingLog log;
  SqliteSettingsStore store(data, log);
  for (std::int64_t version = 1; version <= versions; ++version) {
    store.writeTogether([&] {
      for (const auto* key : keys) {
        store.set(key, version);
      }
    });
    store.synchronize();
    store.scrub();
    if (!store.hasUnsaved()) {
      std::printf("saved %d\n", static_cast<int>(version));
      std::fflush(stdout);
    }
  }
}

struct Badness {
  std::string state;
  bool isPassing = false;  // one call only
};

const std::vector<Badness>& badnesses() {
  static const std::vector<Badness> all{{"full"},       {"read-only"},       {"gone"},      {"slow"},
                                        {"full", true}, {"read-only", true}, {"gone", true}};
  return all;
}

// One run of a program on a disk of its own.
struct Run {
  fs::path data;
  fs::path mended;  // makes the disk good again once it exists
  Variables variables;
  bool isPassing = false;
};

class Disks {
 public:
  explicit Disks(bool isShort) : isShort_(isShort) {
    test::enrollDevice(*service_, enrolled_);
    device_ = storedIn(enrolled_, *service_).device;
    // So that the first check-in has something to save.
    require(service_->moveEndpoint(device_), "The endpoint does not move.");
  }

  void carryOut() {
    onEveryBadDisk("Settings saved", fewOthers, [this](const Run& run) { save(run); });
    onEveryBadDisk("Enrollments", fewEnrollments, [this](const Run& run) { enroll(run); });
    onEveryBadDisk("Starts of the agent", fewOthers, [this](const Run& run) { work(run); });
    onEveryBadDisk("Check-ins by command", fewOthers, [this](const Run& run) { sync(run); });
    onEveryBadDisk("Resets", fewOthers, [this](const Run& run) { reset(run); });
  }

 private:
  using Deed = std::function<void(const Run&)>;

  // On a good disk.
  long callsOf(const Deed& deed) {
    const fs::path file = session_.newFolder();
    Run run = newRun();
    run.variables.insert({{"QUILLMAR_DISK_COUNT", file.string()}});
    deed(run);
    long calls = 0;
    std::ifstream(file) >> calls;
    require(calls > 0, "A program's calls are not counted.");
    return calls;
  }

  // The last run of each kind is one whose disk stays good.
  void onEveryBadDisk(const std::string& name, long fewest, const Deed& deed) {
    const long calls = callsOf(deed);
    const long step = isShort_ ? std::max(1L, calls / fewest) : 1;
    std::vector<std::pair<Badness, long>> all;
    for (const auto& badness : badnesses()) {
      for (long from = 1; from <= calls + 1; from += step) {
        all.emplace_back(badness, from);
      }
    }
    std::atomic<std::size_t> next = 0;
    std::mutex mutex;
    std::string fault;
    {
      std::vector<std::jthread> threads;
      for (std::size_t i = 0; i < sideBySide; ++i) {
        threads.emplace_back([&] {
          for (std::size_t at = next++; at < all.size(); at = next++) {
            const auto& [badness, from] = all[at];
            try {
              deed(badRun(badness, from));
            } catch (const std::exception& found) {
              const std::scoped_lock lock(mutex);
              fault += name + ", disk " + badness.state + (badness.isPassing ? " once" : "") + " from call " +
                       std::to_string(from) + ": " + found.what() + '\n';
            }
          }
        });
      }
    }
    require(fault.empty(), fault);
    tell(name + ", calls that change the disk", std::to_string(calls));
    tell(name + " on a bad disk", std::to_string(all.size()));
  }

  Run newRun() {
    const fs::path data = session_.newFolder();
    return {
        data, session_.newFolder(), {{"LD_PRELOAD", QUILLMAR_FAULTY_DISK}, {"QUILLMAR_DISK", data.string()}}};
  }

  Run badRun(const Badness& badness, long from) {
    Run run = newRun();
    run.isPassing = badness.isPassing;
    run.variables.insert({{"QUILLMAR_DISK_STATE", badness.state},
                          {"QUILLMAR_DISK_FROM", std::to_string(from)},
                          {"QUILLMAR_DISK_MENDED", run.mended.string()}});
    if (badness.isPassing) {
      run.variables.insert({"QUILLMAR_DISK_CALLS", "1"});
    }
    return run;
  }

  std::unique_ptr<Program> start(const Run& run, const Words& command) const {
    Words words{QUILLMAR_AGENT, "--data-dir",    run.data.string(),
                "--service",    service_->url(), "--simulate-tunnel"};
    words.insert(words.end(), command.begin(), command.end());
    return std::make_unique<Program>(words, session_.variables(run.variables));
  }

  void save(const Run& run) const {
    Program program({"/proc/self/exe", storeCommand, run.data.string()}, session_.variables(run.variables));
    const std::string said = program.readUntil("saved " + std::to_string(versions));
    require(program.end(0) == 0, "The program fails: " + said);
    std::int64_t confirmed = 0;
    for (std::int64_t version = 1; version <= versions; ++version) {
      confirmed = said.find("saved " + std::to_string(version)) == std::string::npos ? confirmed : version;
    }
    require(confirmed == versions || !run.isPassing, "What passes is not got over: " + said);
    RecordingLog log;
    const SqliteSettingsStore store(run.data, log);
    const auto first = store.integer(keys.front()).value_or(0);
    for (const auto* key : keys) {
      require(store.integer(key).value_or(0) == first, "Values saved together are apart.");
    }
    require(first >= confirmed, "A saved value is lost.");
    require(log.printed().empty() && !has(said, "damaged"), "The settings are damaged: " + said);
  }

  void enroll(const Run& run) const {
    const auto agent = start(run, {"enroll"});
    std::string said = agent->readUntil("Enrollment Code: ");
    if (const auto code = between(said, "Enrollment Code: ", '\n'); !code.empty()) {
      require(service_->approve(code), "The service does not know a code.");
    }
    said += agent->readUntil(Words{"can't be saved yet", "This device is enrolled."});
    if (has(said, "can't be saved yet")) {
      std::ofstream(run.mended).put('\n');
      said += agent->readUntil("This device is enrolled.");
    }
    judge(agent->end(0), has(said, "This device is enrolled."), said);
    require(!has(said, "This device is enrolled.") || stored(run).isEnrolled,
            "An enrollment is lost: " + said);
  }

  void work(const Run& run) const {
    beEnrolled(run);
    const auto agent = start(run, {"run"});
    const std::string said = agent->readUntil("The service is reached.");
    const bool isReached = has(said, "The service is reached.");
    const int status = agent->end(isReached ? SIGTERM : 0);
    judge(status, isReached, said);
    // Only one that can't know that it is enrolled may give up.
    require(isReached || has(said, "can't be read") || has(said, "can't be used"),
            "An enrolled device is not looked after: " + said);
    require(stored(run).device == device_, "An enrollment is lost: " + said);
  }

  void sync(const Run& run) const {
    beEnrolled(run);
    const auto agent = start(run, {"sync"});
    const std::string said = agent->readUntil("Checked in.");
    judge(agent->end(0), has(said, "Checked in."), said);
    require(stored(run).device == device_, "An enrollment is lost: " + said);
  }

  void reset(const Run& run) const {
    beEnrolled(run);
    const auto agent = start(run, {"reset", "--yes"});
    const std::string said = agent->readUntil("has forgotten");
    const bool isConfirmed = has(said, "has forgotten its enrollment");
    judge(agent->end(0), isConfirmed, said);
    require(!isConfirmed || !stored(run).isEnrolled, "A reset is lost: " + said);
  }

  // It succeeds, or says what is in the way.
  static void judge(int status, bool isDone, const std::string& said) {
    require((status == 0 && isDone) || (status == 1 && !isDone && has(said, "quillmar-agent: ")),
            "It ends with " + std::to_string(status) + " after: " + said);
  }

  void beEnrolled(const Run& run) const { fs::copy(enrolled_, run.data, fs::copy_options::recursive); }
  Stored stored(const Run& run) const { return storedIn(run.data, *service_); }
  static bool has(const std::string& said, const std::string& text) {
    return said.find(text) != std::string::npos;
  }

  const bool isShort_;
  Session session_;
  const std::unique_ptr<sandbox::Service> service_ = std::move(*sandbox::Service::start({}));
  const fs::path enrolled_ = session_.newFolder();
  std::string device_;
};

}  // namespace
}  // namespace quillmar::endurance

int main(int count, char** arguments) {
  using namespace quillmar::endurance;
  if (count == 3 && std::string(arguments[1]) == storeCommand) {
    saveSettings(arguments[2]);
    return 0;
  }
  const bool isShortForm = isShort(count, arguments);
  try {
    Disks(isShortForm).carryOut();
  } catch (const std::exception& fault) {
    expect(false, fault.what());
  }
}
