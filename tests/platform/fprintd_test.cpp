#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sdbus-c++/sdbus-c++.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/common/asio_dispatch.h"
#include "platform/common/file_descriptor.h"
#include "platform/linux/fprintd_check.h"
#include "programs/doctor/probes.h"
#include "testing/temporary_directory.h"
#include "tests/platform/permissions.h"
#include "tests/platform/private_bus.h"

namespace quillmar {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* fprint = "net.reactivated.Fprint";

// An fprintd with libfprint's virtual reader, on a bus of its own.
class ReaderWorld final : public testing::Environment {
 public:
  void SetUp() override {
    bus_ = std::make_unique<PrivateBus>(directory_.path());
    ASSERT_TRUE(bus_->running());
    permissions_ = std::make_unique<Permissions>(bus_->address());
    start();
  }
  void TearDown() override {
    daemon_.reset();
    permissions_.reset();
    bus_.reset();
  }

  const PrivateBus& bus() const { return *bus_; }
  Permissions& permissions() { return *permissions_; }
  bool running() const { return daemon_.has_value(); }
  void stop() { daemon_.reset(); }
  void start(bool withReader = true) {
    daemon_.reset();
    std::vector<std::string> words{"STATE_DIRECTORY=" + directory_.path().string()};
    if (withReader) {
      words.push_back("FP_VIRTUAL_DEVICE=" + socket().string());
    }
    words.insert(words.end(), {"sh", "-c", "exec /usr/libexec/fprintd -t 2>/dev/null"});
    daemon_.emplace(endingWithTheTest(bus_->joining(words)));
    ASSERT_TRUE(bus_->waitFor(fprint));
  }

  // Has the virtual reader do something. False when there is none.
  bool command(const std::string& text) const {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    socket().string().copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
    const FileDescriptor reader(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return connect(reader.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
           write(reader.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
  }

  void enroll() {
    RunningProgram enrolling(bus_->joining({"stdbuf", "-oL", "fprintd-enroll"}));
    for (std::string line = enrolling.readLine(); line.find("completed") == std::string::npos;
         line = enrolling.readLine()) {
      ASSERT_FALSE(line.empty());
      if (line.starts_with("Enrolling") || line.starts_with("Enroll result")) {
        ASSERT_TRUE(command("SCAN good-finger"));
      }
    }
    EXPECT_EQ(enrolling.end(0), 0);
  }
  void forgetFingers() const { static_cast<void>(bus_->run({"sh", "-c", "fprintd-delete \"$(id -un)\""})); }

  pid_t process() const {
    std::uint32_t process = 0;
    const auto witness = sdbus::createSessionBusConnectionWithAddress(bus_->address());
    sdbus::createProxy(*witness, "org.freedesktop.DBus", "/org/freedesktop/DBus")
        ->callMethod("GetConnectionUnixProcessID")
        .onInterface("org.freedesktop.DBus")
        .withArguments(std::string(fprint))
        .storeResultsTo(process);
    return static_cast<pid_t>(process);
  }

 private:
  std::filesystem::path socket() const { return directory_.path() / "reader"; }

  const TemporaryDirectory directory_;
  std::unique_ptr<PrivateBus> bus_;
  std::unique_ptr<Permissions> permissions_;
  std::optional<RunningProgram> daemon_;
};

ReaderWorld& world() {
  static auto* const world = static_cast<ReaderWorld*>(testing::AddGlobalTestEnvironment(new ReaderWorld));
  return *world;
}
[[maybe_unused]] const ReaderWorld& registered = world();

class FprintdTest : public testing::Test {
 protected:
  FprintdTest() {
    world().permissions().grant(true);
    make();
    if (!isPossible()) {
      world().start();
      world().enroll();
    }
    make();
  }

  void make(FprintdCheck::Options options = {.patience = 20s}) {
    options.busAddress = world().bus().address();
    subscription_.cancel();
    check_ = std::make_unique<FprintdCheck>(dispatch_, options);
    subscription_ =
        check_->observePrompt([this](const FprintdCheck::Prompt& prompt) { prompts.push_back(prompt); });
  }

  // Once fprintd has told a check that is new.
  bool isPossible() {
    make();
    EXPECT_FALSE(check_->canEvaluate()) << "nothing is known yet";
    awaitAnswer();
    return check_->canEvaluate();
  }
  void awaitAnswer() {
    bool isGiven = false;
    const auto heard = check_->observeAnswer([&isGiven] { isGiven = true; });
    EXPECT_TRUE(runUntil([&isGiven] { return isGiven; }));
  }

  FprintdCheck& check() { return *check_; }
  AsioDispatch& dispatch() { return dispatch_; }
  // Begins a check and waits until the reader waits for a finger.
  void begin() {
    evaluate();
    prompts.clear();
    ASSERT_TRUE(runUntil([this] { return !prompts.empty(); }));
    EXPECT_EQ(prompts.back(), "Log in");
  }
  void evaluate() {
    reply_.reset();
    check_->evaluate("Log in", [this](BiometricReply reply) {
      dispatch_.main().async([this, reply] { reply_ = reply; });
    });
  }
  // The code of the reply, or 0 for success.
  int outcome() {
    EXPECT_TRUE(runUntil([this] { return reply_.has_value(); }));
    EXPECT_EQ(reply_->success, !reply_->code.has_value());
    return reply_->code.value_or(0);
  }
  int outcomeAfter(const std::string& command) {
    begin();
    EXPECT_TRUE(world().command(command));
    return outcome();
  }
  bool runUntil(const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + 60s;
    while (!done()) {
      if (!dispatch_.runOne(deadline)) {
        return false;
      }
    }
    return true;
  }
  // Whether somebody else may have the reader.
  static bool isReleased() {
    const auto claiming = sdbus::createSessionBusConnectionWithAddress(world().bus().address());
    sdbus::ObjectPath device;
    sdbus::createProxy(*claiming, fprint, "/net/reactivated/Fprint/Manager")
        ->callMethod("GetDefaultDevice")
        .onInterface("net.reactivated.Fprint.Manager")
        .storeResultsTo(device);
    const auto reader = sdbus::createProxy(*claiming, fprint, device);
    try {
      reader->callMethod("Claim").onInterface("net.reactivated.Fprint.Device").withArguments(std::string());
      reader->callMethod("Release").onInterface("net.reactivated.Fprint.Device");
      return true;
    } catch (const sdbus::Error&) {
      return false;
    }
  }

  std::vector<FprintdCheck::Prompt> prompts;

 private:
  AsioDispatch dispatch_;
  std::unique_ptr<FprintdCheck> check_;
  Subscription subscription_;
  std::optional<BiometricReply> reply_;
};

TEST_F(FprintdTest, an_enrolled_finger_makes_the_check_possible) {
  EXPECT_TRUE(isPossible());
  EXPECT_EQ(check().biometryType(), 1);
}

TEST_F(FprintdTest, the_right_finger_passes_and_the_reader_is_given_back) {
  EXPECT_EQ(outcomeAfter("SCAN good-finger"), 0);
  EXPECT_TRUE(isReleased());
  EXPECT_THAT(prompts, ElementsAre("Log in", std::nullopt));
}

TEST_F(FprintdTest, another_finger_fails_and_the_right_one_passes_next_time) {
  EXPECT_EQ(outcomeAfter("SCAN other-finger"), -1);
  EXPECT_TRUE(isReleased());
  EXPECT_EQ(outcomeAfter("SCAN good-finger"), 0);
}

TEST_F(FprintdTest, a_finger_that_could_not_be_read_may_be_tried_again) {
  begin();
  EXPECT_TRUE(world().command("RETRY 1"));
  EXPECT_TRUE(world().command("SCAN good-finger"));
  EXPECT_EQ(outcome(), 0);
}

TEST_F(FprintdTest, a_cancelled_check_says_so_and_gives_the_reader_back) {
  begin();
  EXPECT_FALSE(isReleased());
  check().cancel();
  EXPECT_EQ(outcome(), -2);
  EXPECT_TRUE(isReleased());
  EXPECT_EQ(outcomeAfter("SCAN good-finger"), 0);
}

TEST_F(FprintdTest, a_check_cancelled_at_once_leaves_no_claim_behind) {
  evaluate();
  check().cancel();
  EXPECT_EQ(outcome(), -2);
  EXPECT_THAT(prompts, IsEmpty());
  EXPECT_TRUE(isReleased());
}

TEST_F(FprintdTest, a_person_may_ask_for_the_password_instead) {
  begin();
  check().enterPassword();
  EXPECT_EQ(outcome(), -3);
  EXPECT_TRUE(isReleased());
}

TEST_F(FprintdTest, nothing_happens_to_the_next_check_when_there_was_nothing_to_cancel) {
  check().cancel();
  check().enterPassword();
  EXPECT_EQ(outcomeAfter("SCAN good-finger"), 0);
}

TEST_F(FprintdTest, a_reader_is_not_kept_waiting_for_ever) {
  make({.patience = 20s, .fingerPatience = 50ms});
  evaluate();
  EXPECT_EQ(outcome(), -4);
  EXPECT_TRUE(isReleased());
}

TEST_F(FprintdTest, a_second_check_meanwhile_fails_and_the_first_goes_on) {
  begin();
  std::optional<int> second;
  check().evaluate("Again", [&](BiometricReply reply) {
    dispatch().main().async([&second, reply] { second = reply.code; });
  });
  EXPECT_TRUE(runUntil([&] { return second.has_value(); }));
  EXPECT_EQ(second, -4);
  EXPECT_TRUE(world().command("SCAN good-finger"));
  EXPECT_EQ(outcome(), 0);
}

TEST_F(FprintdTest, too_many_wrong_fingers_in_a_row_lock_the_check_out_for_a_while) {
  make({.patience = 20s, .wrongFingers = 3, .lockTime = 1h});
  EXPECT_EQ(outcomeAfter("SCAN other-finger"), -1);
  EXPECT_EQ(outcomeAfter("SCAN other-finger"), -1);
  EXPECT_EQ(outcomeAfter("SCAN good-finger"), 0);
  EXPECT_EQ(outcomeAfter("SCAN other-finger"), -1);
  EXPECT_EQ(outcomeAfter("SCAN other-finger"), -1);
  EXPECT_EQ(outcomeAfter("SCAN other-finger"), -8);
  EXPECT_TRUE(isReleased());
  prompts.clear();
  evaluate();
  EXPECT_EQ(outcome(), -8);
  EXPECT_THAT(prompts, IsEmpty());
}

TEST_F(FprintdTest, a_lockout_ends) {
  make({.patience = 20s, .wrongFingers = 1, .lockTime = 0ms});
  EXPECT_EQ(outcomeAfter("SCAN other-finger"), -8);
  EXPECT_EQ(outcomeAfter("SCAN good-finger"), 0);
}

TEST_F(FprintdTest, a_reader_that_is_pulled_out_ends_the_check) {
  begin();
  EXPECT_TRUE(world().command("UNPLUG"));
  EXPECT_EQ(outcome(), -6);
  EXPECT_EQ(prompts.back(), std::nullopt);
  evaluate();
  EXPECT_EQ(outcome(), -6);
  EXPECT_FALSE(isPossible());
}

TEST_F(FprintdTest, an_fprintd_that_ends_meanwhile_ends_the_check_and_a_new_one_serves) {
  begin();
  world().stop();
  EXPECT_EQ(outcome(), -6);
  EXPECT_EQ(prompts.back(), std::nullopt);
  EXPECT_FALSE(isPossible());
  world().start();
  EXPECT_TRUE(isPossible());
  EXPECT_EQ(outcomeAfter("SCAN good-finger"), 0);
}

TEST_F(FprintdTest, without_an_enrolled_finger_there_is_no_check) {
  world().forgetFingers();
  EXPECT_FALSE(isPossible());
  evaluate();
  EXPECT_EQ(outcome(), -7);
  EXPECT_TRUE(isReleased());
}

TEST_F(FprintdTest, without_a_reader_or_without_fprintd_there_is_no_check) {
  world().start(false);
  EXPECT_FALSE(isPossible());
  evaluate();
  EXPECT_EQ(outcome(), -6);
  world().stop();
  EXPECT_FALSE(isPossible());
  evaluate();
  EXPECT_EQ(outcome(), -6);
}

TEST_F(FprintdTest, without_a_bus_there_is_no_check) {
  AsioDispatch dispatch;
  FprintdCheck lost(dispatch, {.busAddress = "unix:path=/nowhere"});
  bool isAnswered = false;
  const auto heard = lost.observeAnswer([&isAnswered] { isAnswered = true; });
  EXPECT_FALSE(lost.canEvaluate());
  EXPECT_TRUE(dispatch.runOne(std::chrono::steady_clock::now() + 60s));
  EXPECT_TRUE(isAnswered);
  EXPECT_FALSE(lost.canEvaluate());
  bool replied = false;
  lost.evaluate("Log in", [&](BiometricReply reply) {
    dispatch.main().async([&replied, reply] {
      EXPECT_EQ(reply.code, -6);
      replied = true;
    });
  });
  EXPECT_TRUE(dispatch.runOne(std::chrono::steady_clock::now() + 60s));
  EXPECT_TRUE(replied);
}

// That it comes back at all while fprintd stands still shows that it does not wait.
TEST_F(FprintdTest, an_fprintd_that_is_slow_is_not_waited_for_and_brings_its_answer_later) {
  const auto process = world().process();
  kill(process, SIGSTOP);
  EXPECT_FALSE(check().canEvaluate());
  kill(process, SIGCONT);
  awaitAnswer();
  EXPECT_TRUE(check().canEvaluate());
}

TEST_F(FprintdTest, an_fprintd_that_hangs_is_not_waited_for) {
  make({.patience = 50ms, .answerPatience = 50ms});
  const auto process = world().process();
  kill(process, SIGSTOP);
  EXPECT_FALSE(check().canEvaluate());
  awaitAnswer();
  EXPECT_FALSE(check().canEvaluate());
  evaluate();
  EXPECT_NE(outcome(), 0);
  kill(process, SIGCONT);
}

TEST_F(FprintdTest, a_lie_about_the_finger_lets_nobody_in) {
  begin();
  const auto liar = sdbus::createSessionBusConnectionWithAddress(world().bus().address());
  sdbus::ObjectPath device;
  sdbus::createProxy(*liar, fprint, "/net/reactivated/Fprint/Manager")
      ->callMethod("GetDefaultDevice")
      .onInterface("net.reactivated.Fprint.Manager")
      .storeResultsTo(device);
  std::vector<std::string> everybody;
  sdbus::createProxy(*liar, "org.freedesktop.DBus", "/org/freedesktop/DBus")
      ->callMethod("ListNames")
      .onInterface("org.freedesktop.DBus")
      .storeResultsTo(everybody);
  const auto object = sdbus::createObject(*liar, device);
  for (const auto& one : everybody) {
    auto lie = object->createSignal("net.reactivated.Fprint.Device", "VerifyStatus");
    lie.setDestination(one);
    lie << std::string("verify-match") << true;
    object->emitSignal(lie);
  }
  EXPECT_TRUE(world().command("SCAN other-finger"));
  EXPECT_EQ(outcome(), -1);
}

TEST_F(FprintdTest, the_doctor_knows_what_a_reader_lacks) {
  const auto words = [](bool works) {
    const auto finding = doctor::lookAtFingerprintReader(world().bus().address());
    EXPECT_EQ(finding.works, works);
    return finding.words;
  };
  EXPECT_EQ(words(true), "knows a finger of yours.");
  world().forgetFingers();
  EXPECT_EQ(words(false), "knows no finger of yours. Enrol one: fprintd-enroll");
  world().start(false);
  EXPECT_EQ(words(false), "none is connected.");
  world().stop();
  EXPECT_THAT(words(false), testing::EndsWith(". Install fprintd."));
}

TEST_F(FprintdTest, a_check_under_way_ends_with_its_adapter) {
  begin();
  make();
  EXPECT_EQ(outcome(), -6);
}

}  // namespace
}  // namespace quillmar
