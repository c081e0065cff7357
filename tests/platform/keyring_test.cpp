#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sdbus-c++/sdbus-c++.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "identity/keychain_service.h"
#include "platform/linux/libsecret_item_store.h"
#include "programs/doctor/probes.h"
#include "testing/scoped_environment.h"
#include "testing/temporary_directory.h"
#include "tests/contracts/secure_item_store_contract.h"
#include "tests/platform/private_bus.h"

// GLib is not built for ThreadSanitizer, which sees none of its locks and atomic counts.
extern "C" const char* __tsan_default_suppressions() {  // NOLINT(bugprone-reserved-identifier)
  return "race:libglib-2.0.so\nrace:libgobject-2.0.so\nrace:libgio-2.0.so\nrace:libsecret-1.so\n";
}

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using Status = SecureItemStatus;
using Path = sdbus::ObjectPath;

constexpr const char* secrets = "org.freedesktop.secrets";
constexpr const char* secretsPath = "/org/freedesktop/secrets";
constexpr const char* serviceInterface = "org.freedesktop.Secret.Service";
const std::string password = "keyring password";

// Stands where a keyring would have its questions shown to a person, counts them and dismisses them.
class Prompter {
 public:
  explicit Prompter(const std::string& busAddress)
      : bus_(sdbus::createSessionBusConnectionWithAddress(busAddress)),
        object_(sdbus::createObject(*bus_, "/org/gnome/keyring/Prompter")) {
    object_->registerMethod("BeginPrompting")
        .onInterface("org.gnome.keyring.internal.Prompter")
        .implementedAs([this](const Path&) {
          ++prompts_;
          throw sdbus::Error("org.gnome.keyring.internal.Prompter.Failed", "nobody is here");
        });
    object_->finishRegistration();
    bus_->requestName("org.gnome.keyring.SystemPrompter");
    bus_->enterEventLoopAsync();
  }
  ~Prompter() { bus_->leaveEventLoop(); }
  Prompter(const Prompter&) = delete;
  Prompter& operator=(const Prompter&) = delete;

  int prompts() const { return prompts_; }

 private:
  std::unique_ptr<sdbus::IConnection> bus_;
  std::unique_ptr<sdbus::IObject> object_;
  std::atomic<int> prompts_ = 0;
};

// A desktop session with a gnome-keyring of its own, which a person's login has unlocked.
class Desktop final : public testing::Environment {
 public:
  void SetUp() override {
    startBus();
    environment_ = std::make_unique<ScopedEnvironment>("DBUS_SESSION_BUS_ADDRESS", bus_->address().c_str());
    std::ofstream(file("password")) << password;
    logIn();
  }
  void TearDown() override {
    stopBus();
    environment_.reset();
  }

  void startBus() {
    bus_ = std::make_unique<PrivateBus>(directory_.path());
    ASSERT_TRUE(bus_->running());
    prompter_ = std::make_unique<Prompter>(bus_->address());
    witness_ = sdbus::createSessionBusConnectionWithAddress(bus_->address());
  }
  void stopBus() {
    daemon_.reset();
    witness_.reset();
    prompter_.reset();
    bus_.reset();
  }

  // The daemon, and its login keyring unlocked.
  void logIn() { start("login", "--unlock <'" + file("password").string() + "'"); }
  // The daemon of somebody who never had a keyring.
  void startWithoutKeyring() { start("empty", "--start"); }
  void stop() { daemon_.reset(); }

  void clear() {
    if (!daemon_) {
      logIn();
    }
    setLocked(false);
    std::vector<Path> unlocked;
    std::vector<Path> locked;
    service()
        ->callMethod("SearchItems")
        .onInterface(serviceInterface)
        .withArguments(std::map<std::string, std::string>())
        .storeResultsTo(unlocked, locked);
    for (const Path& item : unlocked) {
      Path prompt;
      object(item)->callMethod("Delete").onInterface("org.freedesktop.Secret.Item").storeResultsTo(prompt);
    }
  }

  void setLocked(bool locked) {
    if (locked) {
      std::vector<Path> done;
      Path prompt;
      service()
          ->callMethod("Lock")
          .onInterface(serviceInterface)
          .withArguments(std::vector{collection()})
          .storeResultsTo(done, prompt);
    } else {
      unlock();
    }
  }

  pid_t process() const {
    std::uint32_t process = 0;
    sdbus::createProxy(*witness_, "org.freedesktop.DBus", "/org/freedesktop/DBus")
        ->callMethod("GetConnectionUnixProcessID")
        .onInterface("org.freedesktop.DBus")
        .withArguments(std::string(secrets))
        .storeResultsTo(process);
    return static_cast<pid_t>(process);
  }
  int prompts() const { return prompter_->prompts(); }
  CommandResult secretTool(std::vector<std::string> words) const {
    words.insert(words.begin(), "secret-tool");
    return bus_->run(words);
  }

 private:
  std::filesystem::path file(const std::string& name) const { return directory_.path() / name; }

  void start(const std::string& person, const std::string& options) {
    daemon_.reset();
    const auto home = file(person).string();
    std::filesystem::create_directory(home);
    daemon_.emplace(endingWithTheTest(
        bus_->joining({"HOME=" + home, "XDG_DATA_HOME=" + home, "XDG_RUNTIME_DIR=" + home, "sh", "-c",
                       "exec gnome-keyring-daemon --foreground --components=secrets " + options + " 2>>'" +
                           home + "/log'"})));
    ASSERT_TRUE(bus_->waitFor(secrets));
  }

  // As the login does it, without a prompt.
  void unlock() {
    sdbus::Variant output;
    Path session;
    service()
        ->callMethod("OpenSession")
        .onInterface(serviceInterface)
        .withArguments(std::string("plain"), sdbus::Variant(std::string()))
        .storeResultsTo(output, session);
    using Bytes = std::vector<std::uint8_t>;
    const sdbus::Struct<Path, Bytes, Bytes, std::string> master(
        session, Bytes(), Bytes(password.begin(), password.end()), "text/plain");
    service()
        ->callMethod("UnlockWithMasterPassword")
        .onInterface("org.gnome.keyring.InternalUnsupportedGuiltRiddenInterface")
        .withArguments(collection(), master);
  }

  Path collection() {
    Path path;
    service()
        ->callMethod("ReadAlias")
        .onInterface(serviceInterface)
        .withArguments(std::string("default"))
        .storeResultsTo(path);
    return path;
  }
  std::unique_ptr<sdbus::IProxy> service() { return object(Path(secretsPath)); }
  std::unique_ptr<sdbus::IProxy> object(const Path& path) {
    return sdbus::createProxy(*witness_, secrets, path);
  }

  const TemporaryDirectory directory_;
  std::unique_ptr<PrivateBus> bus_;
  std::unique_ptr<ScopedEnvironment> environment_;
  std::unique_ptr<Prompter> prompter_;
  std::unique_ptr<sdbus::IConnection> witness_;
  std::optional<RunningProgram> daemon_;
};

Desktop& desktop() {
  static auto* const desktop = static_cast<Desktop*>(testing::AddGlobalTestEnvironment(new Desktop));
  return *desktop;
}
[[maybe_unused]] const Desktop& registered = desktop();

class LibsecretHarness final : public SecureItemStoreHarness {
 public:
  LibsecretHarness() { desktop().clear(); }
  SecureItemStore& store() override { return store_; }
  void setLocked(bool locked) override { desktop().setLocked(locked); }

 private:
  LibsecretItemStore store_{20s};
};

INSTANTIATE_TEST_SUITE_P(Libsecret, SecureItemStoreContract,
                         testing::Values(factory<SecureItemStoreHarness, LibsecretHarness>("Libsecret")));

class KeyringTest : public testing::Test {
 protected:
  KeyringTest() { desktop().clear(); }
  ~KeyringTest() override { EXPECT_EQ(desktop().prompts(), promptsBefore); }

  std::optional<std::string> load() const { return keychain.load(KeychainService::passwordKey); }
  bool save(const std::string& value) const { return keychain.save(KeychainService::passwordKey, value); }
  // How many items the outside witness finds, locked ones included.
  static long witnessed(const std::string& account) {
    const auto found =
        desktop().secretTool({"search", "--all", "service", "live.quillmar.credentials", "account", account});
    std::istringstream lines(found.output);
    long items = 0;
    for (std::string line; std::getline(lines, line);) {
      items += line.starts_with("[/") ? 1 : 0;
    }
    return items;
  }
  static CommandResult lookUp() {
    return desktop().secretTool(
        {"lookup", "service", "live.quillmar.credentials", "account", "savedPassword"});
  }

  LibsecretItemStore store{20s};
  const KeychainService keychain{store};
  int promptsBefore = desktop().prompts();
};

TEST_F(KeyringTest, two_saves_leave_exactly_one_item_with_the_last_value) {
  EXPECT_TRUE(save("first"));
  EXPECT_TRUE(save("second"));
  EXPECT_EQ(witnessed("savedPassword"), 1);
  EXPECT_EQ(lookUp().output, "second");
}

TEST_F(KeyringTest, a_deleted_item_is_gone_for_everybody) {
  EXPECT_TRUE(save("secret"));
  EXPECT_TRUE(keychain.deleteItem(KeychainService::passwordKey));
  EXPECT_EQ(witnessed("savedPassword"), 0);
  EXPECT_NE(lookUp().status, 0);
}

TEST_F(KeyringTest, an_item_of_no_bytes_reads_as_an_empty_text) {
  EXPECT_TRUE(save(""));
  EXPECT_EQ(witnessed("savedPassword"), 1);
  EXPECT_EQ(load(), "");
}

TEST_F(KeyringTest, a_locked_keyring_reads_as_absent_takes_nothing_and_asks_nobody) {
  EXPECT_TRUE(save("secret"));
  desktop().setLocked(true);
  EXPECT_EQ(load(), std::nullopt);
  EXPECT_FALSE(save("other"));
  EXPECT_FALSE(keychain.deleteItem(KeychainService::passwordKey));
  EXPECT_FALSE(keychain.save(KeychainService::emailKey, "ann@example.com"));
  EXPECT_EQ(witnessed("savedPassword"), 1);
  desktop().setLocked(false);
  EXPECT_EQ(load(), "secret");
  EXPECT_EQ(keychain.load(KeychainService::emailKey), std::nullopt);
}

TEST_F(KeyringTest, a_prompt_would_have_been_seen) {
  EXPECT_TRUE(save("secret"));
  desktop().setLocked(true);
  EXPECT_NE(lookUp().status, 0);
  EXPECT_GT(desktop().prompts(), std::exchange(promptsBefore, desktop().prompts()));
}

TEST_F(KeyringTest, without_a_keyring_service_items_are_absent_and_saves_fail_until_there_is_one) {
  EXPECT_TRUE(save("secret"));
  desktop().stop();
  EXPECT_EQ(load(), std::nullopt);
  EXPECT_FALSE(save("other"));
  EXPECT_FALSE(keychain.deleteItem(KeychainService::passwordKey));
  desktop().logIn();
  EXPECT_EQ(load(), "secret");
}

TEST_F(KeyringTest, a_session_bus_that_ends_takes_nobody_along_and_is_found_again) {
  EXPECT_TRUE(save("secret"));
  desktop().stopBus();
  EXPECT_EQ(load(), std::nullopt);
  EXPECT_FALSE(save("other"));
  desktop().startBus();
  desktop().logIn();
  promptsBefore = desktop().prompts();
  EXPECT_EQ(load(), "secret");
}

TEST_F(KeyringTest, somebody_without_a_keyring_is_not_asked_for_one) {
  desktop().startWithoutKeyring();
  EXPECT_EQ(load(), std::nullopt);
  EXPECT_EQ(store.copyMatching("service", "account").status, Status::notFound);
  EXPECT_EQ(store.add("service", "account", "x"), Status::failed);
  desktop().logIn();
}

TEST_F(KeyringTest, a_keyring_that_hangs_is_not_waited_for_and_serves_again_when_it_goes_on) {
  EXPECT_TRUE(save("secret"));
  LibsecretItemStore hasty(30ms);
  const auto process = desktop().process();
  kill(process, SIGSTOP);
  EXPECT_EQ(hasty.copyMatching("live.quillmar.credentials", "savedPassword").status, Status::failed);
  EXPECT_EQ(hasty.add("live.quillmar.credentials", "other", "x"), Status::failed);
  EXPECT_EQ(hasty.remove("live.quillmar.credentials", "savedPassword"), Status::failed);
  kill(process, SIGCONT);
  EXPECT_EQ(load(), "secret");
}

TEST_F(KeyringTest, the_doctor_knows_what_a_keyring_lacks_and_leaves_nothing_in_it) {
  const auto words = [this](bool works) {
    const auto finding = doctor::lookAtKeyring(store);
    EXPECT_EQ(finding.works, works);
    return finding.words;
  };
  EXPECT_EQ(words(true), "keeps the login.");
  EXPECT_EQ(desktop().secretTool({"search", "--all", "service", "live.quillmar.doctor"}).output, "");
  desktop().setLocked(true);
  EXPECT_THAT(words(false), testing::StartsWith("is locked."));
  desktop().startWithoutKeyring();
  EXPECT_THAT(words(false), testing::StartsWith("takes nothing in."));
  desktop().stop();
  EXPECT_THAT(words(false), testing::StartsWith("no keyring service answers."));
}

}  // namespace
}  // namespace quillmar
