// NetworkManager, the keyring, the fingerprint service and the bus itself are restarted while the application
// uses them. Its main loop must go on, each use must end, and work again afterwards, and no descriptor may be
// lost.

#include <gtest/gtest.h>
#include <sdbus-c++/sdbus-c++.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "bench/endurance/outcome.h"
#include "bench/endurance/program.h"
#include "platform/common/asio_dispatch.h"
#include "platform/linux/fprintd_check.h"
#include "platform/linux/libsecret_item_store.h"
#include "platform/linux/networkmanager_tunnel.h"
#include "testing/scoped_environment.h"
#include "testing/temporary_directory.h"
#include "tests/platform/networkmanager_world.h"
#include "tests/platform/private_bus.h"

namespace quillmar::endurance {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int wholeRun = 200;
constexpr int shortForm = 3;
constexpr auto patience = 60s;
// Far above what a busy machine takes, and below the timeouts of the calls. The short form is a test, and has
// no limit of time.
constexpr auto longestStop = 1s;
constexpr auto pulse = 10ms;

std::string milliseconds(Clock::duration time) {
  return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(time).count()) + " ms";
}

// A thread that lives as long as what it starts: these programs end with the thread that started them.
class Helper {
 public:
  ~Helper() {
    thread_.request_stop();
    // Wakes the thread.
    carryOut([] {});
  }
  Helper() = default;
  Helper(const Helper&) = delete;
  Helper& operator=(const Helper&) = delete;

  std::shared_future<void> carryOut(std::function<void()> task) {
    std::packaged_task<void()> packed(std::move(task));
    auto done = packed.get_future().share();
    const std::scoped_lock lock(mutex_);
    tasks_.push_back(std::move(packed));
    added_.notify_one();
    return done;
  }

 private:
  void work(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      std::unique_lock lock(mutex_);
      added_.wait(lock, [this] { return !tasks_.empty(); });
      auto task = std::move(tasks_.front());
      tasks_.pop_front();
      lock.unlock();
      task();
    }
  }

  std::mutex mutex_;
  std::condition_variable added_;
  std::deque<std::packaged_task<void()>> tasks_;
  std::jthread thread_{[this](const std::stop_token& stop) { work(stop); }};
};

// The application's main loop, whose longest stop is measured.
class MainLoop {
 public:
  MainLoop() : beat_(dispatch.scheduleRepeating(pulse, [this] { beat(); })) {}

  void runUntil(const std::function<bool()>& isDone, const std::string& otherwise) {
    last_ = Clock::now();
    const auto end = last_ + patience;
    while (!isDone()) {
      require(dispatch.runOne(end) || isDone(), otherwise);
      require(Clock::now() < end, otherwise);
    }
  }

  // The loop goes on while another thread restarts something, and the application uses it all the time.
  void use(const std::function<void()>& use, std::function<void()> restart) {
    const auto isRestarted = helper_.carryOut(std::move(restart));
    runUntil(
        [&] {
          use();
          return isRestarted.wait_for(0s) == std::future_status::ready;
        },
        "A restart does not end.");
    isRestarted.get();
  }

  Clock::duration longest() const { return longest_; }

  AsioDispatch dispatch;

 private:
  void beat() {
    const auto now = Clock::now();
    longest_ = std::max(longest_, now - last_);
    last_ = now;
  }

  Helper helper_;
  Clock::time_point last_ = Clock::now();
  Clock::duration longest_{0};
  std::unique_ptr<Timer> beat_;
};

// Restarts one service many times, and looks at what the process has open.
template <class Round>
void restartOften(const std::string& name, int times, MainLoop& loop, Round&& round) {
  std::size_t files = 0;
  for (int i = 0; i < times; ++i) {
    round(i);
    if (i == times / 2) {
      files = openFilesOf(::getpid());
    }
  }
  tell("Restarts of " + name, std::to_string(times));
  tell("Open files of the application half-way and at the end",
       std::to_string(files) + ", " + std::to_string(openFilesOf(::getpid())));
  tell("Longest stop of its main loop so far", milliseconds(loop.longest()));
  // A thread of GLib has one more open for moments.
  loop.runUntil([files] { return openFilesOf(::getpid()) <= files; },
                "Descriptors are lost with " + name + '.');
  require(times < wholeRun || loop.longest() < longestStop, "The main loop is blocked by " + name + '.');
}

// A VPN connection of NetworkManager, which is loaded, and started again after each restart.
class Tunnel {
 public:
  Tunnel(MainLoop& loop, const std::string& bus)
      : loop_(loop),
        service_(loop.dispatch, NetworkManagerWorld::service,
                 {.busAddress = bus, .timeout = 20s, .promptTimeout = 20s, .startTimeout = 20s}) {}

  void add() {
    const auto made = service_.makeConfiguration();
    made->protocolConfiguration = TunnelProtocol{
        NetworkManagerWorld::service, "dns.example", {{"dohEndpoint", "https://dns.example/q"}}};
    made->localizedDescription = "Quillmar";
    made->isEnabled = true;
    bool isDone = false;
    made->save([&](const std::optional<Error>& error) { isDone = !error; });
    loop_.runUntil([&] { return isDone; }, "The connection is not saved.");
  }

  // One call at a time.
  void load() {
    if (!isLoading_) {
      isLoading_ = true;
      service_.loadAll([this](const Result<TunnelService::Configurations>& all) {
        isLoading_ = false;
        configurations_ = all.ok() ? all.value() : TunnelService::Configurations();
        ++answers_;
      });
    }
  }
  void awaitAnswer() {
    loop_.runUntil([this] { return !isLoading_; }, "A call is not answered.");
  }

  void comeUp() {
    loop_.runUntil(
        [this] {
          load();
          return configurations_.size() == 1;
        },
        "The connection is not found again.");
    awaitAnswer();
    auto& connection = configurations_.front()->connection();
    loop_.runUntil(
        [&] {
          if (connection.status() == TunnelStatus::disconnected) {
            static_cast<void>(connection.startTunnel());
          }
          return connection.status() == TunnelStatus::connected;
        },
        "The tunnel does not come up again.");
  }

  long answers() const { return answers_; }

 private:
  MainLoop& loop_;
  NetworkManagerTunnel service_;
  TunnelService::Configurations configurations_;
  bool isLoading_ = false;
  long answers_ = 0;
};

void restartNetworkManager(int times) {
  if (const auto obstacle = NetworkManagerWorld::obstacle(); !obstacle.empty()) {
    tell("Restarts of NetworkManager", "left out: " + obstacle);
    return;
  }
  MainLoop loop;
  NetworkManagerWorld world;
  Tunnel tunnel(loop, world.bus().address());
  tunnel.add();
  tunnel.comeUp();
  restartOften("NetworkManager", times, loop, [&](int) {
    loop.use([&] { tunnel.load(); },
             [&] {
               world.stop();
               world.start();
             });
    tunnel.awaitAnswer();
    tunnel.comeUp();
  });
  tell("Calls to it that were answered", std::to_string(tunnel.answers()));
}

// A keyring as after a login.
class Keyring {
 public:
  Keyring() { std::ofstream(folder_.path() / "password") << "keyring password"; }

  const PrivateBus& bus() const { return bus_; }
  void stop() { daemon_.reset(); }
  void start() {
    const auto home = folder_.path().string();
    daemon_.emplace(endingWithTheTest(
        bus_.joining({"HOME=" + home, "XDG_DATA_HOME=" + home, "XDG_RUNTIME_DIR=" + home, "sh", "-c",
                      "exec gnome-keyring-daemon --foreground --components=secrets --unlock <'" + home +
                          "/password' 2>/dev/null"})));
    require(bus_.waitFor("org.freedesktop.secrets"), "The keyring does not start.");
  }

 private:
  const TemporaryDirectory folder_;
  const PrivateBus bus_{folder_.path()};
  std::optional<RunningProgram> daemon_;
};

void restartKeyring(int times) {
  MainLoop loop;
  Keyring keyring;
  const ScopedEnvironment session("DBUS_SESSION_BUS_ADDRESS", keyring.bus().address().c_str());
  keyring.start();
  LibsecretItemStore store(20s);
  const auto read = [&store] { return store.copyMatching("service", "account"); };
  require(store.add("service", "account", "secret") == SecureItemStatus::success,
          "The keyring takes no item.");
  long reads = 0;
  restartOften("the keyring", times, loop, [&](int) {
    loop.use(
        [&] {
          static_cast<void>(read());
          ++reads;
        },
        [&] {
          keyring.stop();
          keyring.start();
        });
    require(read().bytes == "secret", "The item is lost.");
  });
  tell("Items asked for meanwhile", std::to_string(reads));
}

// A fingerprint service that waits for a finger, and a bus of its own; both can be gone.
class Reader {
 public:
  Reader() { startBus(); }

  std::string address() const { return bus_->address(); }
  void startBus() {
    bus_.emplace(folder_.path());
    require(bus_->running(), "The bus does not start.");
    start();
  }
  void stopBus() {
    stop();
    bus_.reset();
  }

  void start() {
    const std::scoped_lock lock(mutex_);
    connection_ = sdbus::createSessionBusConnectionWithAddress(address());
    manager_ = sdbus::createObject(*connection_, managerPath);
    manager_->registerMethod("GetDefaultDevice").onInterface(managerInterface).implementedAs([] {
      return sdbus::ObjectPath(devicePath);
    });
    manager_->finishRegistration();
    device_ = sdbus::createObject(*connection_, devicePath);
    device_->registerMethod("ListEnrolledFingers")
        .onInterface(deviceInterface)
        .implementedAs([](const std::string&) { return std::vector<std::string>{"right-index-finger"}; });
    for (const char* method : {"Claim", "VerifyStart"}) {
      device_->registerMethod(method).onInterface(deviceInterface).implementedAs([](const std::string&) {});
    }
    for (const char* method : {"VerifyStop", "Release"}) {
      device_->registerMethod(method).onInterface(deviceInterface).implementedAs([] {});
    }
    device_->registerSignal("VerifyStatus").onInterface(deviceInterface).withParameters<std::string, bool>();
    device_->finishRegistration();
    connection_->requestName("net.reactivated.Fprint");
    connection_->enterEventLoopAsync();
  }
  void stop() {
    const std::scoped_lock lock(mutex_);
    connection_->leaveEventLoop();
    device_.reset();
    manager_.reset();
    connection_.reset();
  }

  void touch() {
    const std::scoped_lock lock(mutex_);
    device_->emitSignal("VerifyStatus")
        .onInterface(deviceInterface)
        .withArguments(std::string("verify-match"), true);
  }

 private:
  static constexpr const char* managerPath = "/net/reactivated/Fprint/Manager";
  static constexpr const char* managerInterface = "net.reactivated.Fprint.Manager";
  static constexpr const char* devicePath = "/net/reactivated/Fprint/Device/0";
  static constexpr const char* deviceInterface = "net.reactivated.Fprint.Device";

  const TemporaryDirectory folder_;
  std::optional<PrivateBus> bus_;
  std::mutex mutex_;
  std::unique_ptr<sdbus::IConnection> connection_;
  std::unique_ptr<sdbus::IObject> manager_;
  std::unique_ptr<sdbus::IObject> device_;
};

// A person who logs in by finger again and again.
class Login {
 public:
  Login(MainLoop& loop, Reader& reader)
      : loop_(loop), check_(loop.dispatch, {.busAddress = reader.address(), .timeout = 20s}) {
    prompts_ =
        check_.observePrompt([this](const FprintdCheck::Prompt& prompt) { isAsked_ = prompt.has_value(); });
  }

  void begin() {
    reply_.reset();
    check_.evaluate("Log in", [this](BiometricReply reply) {
      loop_.dispatch.main().async([this, reply] { reply_ = reply; });
    });
  }
  void awaitPrompt() {
    loop_.runUntil([this] { return isAsked_; }, "Nobody is asked for a finger.");
  }
  bool succeeds() {
    loop_.runUntil([this] { return reply_.has_value(); }, "A check does not end.");
    return reply_->success;
  }

 private:
  MainLoop& loop_;
  FprintdCheck check_;
  Subscription prompts_;
  bool isAsked_ = false;
  std::optional<BiometricReply> reply_;
};

// The reader's service goes while it waits for a finger; or the bus with it.
void restartReader(const std::string& name, int times, const std::function<void(Reader&)>& restart) {
  MainLoop loop;
  Reader reader;
  Login login(loop, reader);
  Tunnel tunnel(loop, reader.address());
  restartOften(name, times, loop, [&](int) {
    login.begin();
    login.awaitPrompt();
    loop.use([&] { tunnel.load(); }, [&] { restart(reader); });
    require(!login.succeeds(), "A check that lost its reader succeeds.");
    tunnel.awaitAnswer();
    login.begin();
    login.awaitPrompt();
    reader.touch();
    require(login.succeeds(), "A check does not succeed any more.");
  });
}

void carryOut(int times) {
  restartReader("the fingerprint service", times, [](Reader& reader) {
    reader.stop();
    reader.start();
  });
  restartReader("the bus", times, [](Reader& reader) {
    reader.stopBus();
    reader.startBus();
  });
  restartKeyring(times);
  restartNetworkManager(times);
}

}  // namespace
}  // namespace quillmar::endurance

int main(int count, char** arguments) {
  using namespace quillmar::endurance;
  const int times = isShort(count, arguments) ? shortForm : wholeRun;
  testing::InitGoogleTest();
  try {
    carryOut(times);
  } catch (const std::exception& fault) {
    expect(false, fault.what());
  }
}
