#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/common/asio_dispatch.h"
#include "platform/common/sqlite_settings_store.h"
#include "platform/linux/instance_lock.h"
#include "platform/linux/machine_name.h"
#include "platform/settings.h"
#include "programs/control/control_client.h"
#include "programs/control/control_server.h"
#include "programs/control/lock_attempt.h"
#include "sandbox/service.h"
#include "testing/recording_log.h"
#include "testing/scoped_environment.h"
#include "tests/programs/enrolled_device.h"
#include "tests/programs/program_session.h"
#include "tests/programs/pseudo_terminal.h"
#include "tests/programs/terminal_picture.h"
#include "tests/sandbox/support/run_command.h"

namespace quillmar::agent {
namespace {

namespace fs = std::filesystem;
using sandbox::test::CommandResult;
using sandbox::test::runCommand;
using sandbox::test::RunningProgram;
using test::operator+;
using test::programFor;
using test::PseudoTerminal;
using test::Words;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string after(const std::string& text, const std::string& mark) {
  const auto start = text.find(mark);
  return start == std::string::npos
             ? std::string()
             : text.substr(start + mark.size(), text.find_first_of("\r\n", start) - start - mark.size());
}

// The program as installed, on a device of its own, against a real service.
struct AgentProgram : testing::Test {
  Words words(const Words& command) const { return programFor(QUILLMAR_AGENT, data, *service, command); }

  CommandResult call(const Words& command, const std::string& input = {}) const {
    return runCommand(session.running(words(command)), input);
  }
  // A command of the agent with what a shell makes of it.
  CommandResult callInShell(const std::string& command) const {
    return runCommand(session.running(Words{"sh", "-c", "\"$0\" \"$@\" " + command} + words({})));
  }
  std::unique_ptr<RunningProgram> start(const Words& command, const Words& more = {}) const {
    return std::make_unique<RunningProgram>(session.running(words(command), more));
  }
  void enroll() const { test::enrollDevice(*service, data); }
  void store(std::string_view key, const std::string& value) const {
    RecordingLog log;
    SqliteSettingsStore(data, log).set(key, value);
  }
  void failAlways() const {
    auto misbehaviour = service->misbehaviour();
    misbehaviour.failEverything = true;
    service->misbehave(misbehaviour);
  }
  std::ptrdiff_t checkins() const { return test::checkinsAt(*service); }

  const std::unique_ptr<sandbox::Service> service = std::move(*sandbox::Service::start({}));
  const test::ProgramSession session;
  const fs::path data = session.home() / "data";
  // For requests that the test itself sends to the programs.
  const ScopedEnvironment ownSession{"XDG_RUNTIME_DIR", session.runtime().c_str()};
};

TEST_F(AgentProgram, prints_its_usage_when_it_is_misused) {
  const auto result = call({"dance"});
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "quillmar-agent: there is no command 'dance'.\nTry 'quillmar-agent --help'.\n");
}

TEST_F(AgentProgram, fails_if_its_answer_can_not_be_written) {
  enroll();
  for (const auto* command : {"status", "status --json", "doctor", "--help"}) {
    for (const std::string output : {">/dev/full", ">&-"}) {
      const auto result = callInShell(command + (' ' + output));
      EXPECT_EQ(result.status, 1) << command << output;
      EXPECT_THAT(result.errors, HasSubstr("quillmar-agent: The output can't be written: "))
          << command << output;
    }
  }
}

TEST_F(AgentProgram, writes_no_line_into_a_file_of_its_own_if_it_has_no_output) {
  EXPECT_EQ(callInShell("enroll >&-").status, 1);
  EXPECT_EQ(fs::file_size(data / "instance.lock"), 0U);
}

TEST_F(AgentProgram, does_not_wait_for_a_parent_if_nobody_can_see_the_code) {
  for (const std::string output : {">/dev/full", ">&-", "| true"}) {
    const auto result = callInShell("enroll " + output);
    EXPECT_THAT(result.errors, HasSubstr("The enrollment code can't be shown")) << output;
    EXPECT_EQ(call({"status"}).status, 3);
  }
}

TEST_F(AgentProgram, creates_nothing_on_a_device_that_is_not_enrolled) {
  for (const auto* command : {"status", "sync", "reset"}) {
    EXPECT_EQ(call({command}).status, 3) << command;
  }
  EXPECT_FALSE(fs::exists(data));
}

TEST_F(AgentProgram, enrolls_by_a_code_that_a_phone_scans_from_the_terminal) {
  PseudoTerminal terminal(words({"enroll"}), session.environment());
  const std::string shown = terminal.readUntil("Waiting for parent to complete enrollment...");
  const std::string code = after(shown, "Enrollment Code: ");
  const auto scanned = recogniseCodes(pictureOf(shown).view());
  ASSERT_TRUE(scanned.ok());
  ASSERT_EQ(scanned.value().size(), 1U);
  EXPECT_THAT(scanned.value().front().text.value_or(""), HasSubstr("\"" + code + "\""));
  EXPECT_THAT(shown, AllOf(HasSubstr("Quillmar Child"), HasSubstr("Scan QR Code"),
                           HasSubstr("Ask your parent to scan this code using the Quillmar Parent app")));
  // The dots of the waiting line move.
  EXPECT_THAT(terminal.readUntil("..o"), HasSubstr(".o."));

  ASSERT_TRUE(service->approve(code));
  EXPECT_THAT(terminal.readToEnd(), HasSubstr("This device is enrolled.\r\n"));
  EXPECT_EQ(terminal.wait(), 0);
  const auto status = call({"status", "--json"});
  EXPECT_EQ(status.status, 6);
  EXPECT_THAT(status.output,
              AllOf(HasSubstr(R"("isEnrolled":true)"), HasSubstr(R"("dohEndpoint":"https://)")));
}

// The text after the code does not scroll the code's first line away.
TEST_F(AgentProgram, shows_the_whole_code_in_a_window_of_24_rows) {
  if (machineName().size() > 16) {
    GTEST_SKIP() << "the code holds this machine's name, which makes it higher";
  }
  PseudoTerminal terminal(words({"enroll"}), session.environment(), 24);
  const std::string shown = terminal.readUntil("Waiting for parent to complete enrollment...");
  const auto scanned = recogniseCodes(pictureOf(shown).view());
  ASSERT_TRUE(scanned.ok());
  ASSERT_EQ(scanned.value().size(), 1U) << shown;
  EXPECT_THAT(scanned.value().front().text.value_or(""), HasSubstr(after(shown, "Enrollment Code: ")));
  EXPECT_LT(std::count(shown.begin() + static_cast<std::ptrdiff_t>(shown.find('\x1b')), shown.end(), '\n'),
            24);
}

TEST_F(AgentProgram, reports_a_window_that_is_too_low_for_the_code) {
  PseudoTerminal terminal(words({"enroll"}), session.environment(), 12);
  const std::string shown = terminal.readUntil("Waiting for parent");
  EXPECT_THAT(shown, AllOf(HasSubstr("This window is too low to show the QR code: it would need "),
                           HasSubstr("\"enrollment_code\":\"" + after(shown, "Enrollment Code: ") + "\""),
                           Not(HasSubstr("\x1b"))));
}

TEST_F(AgentProgram, enrolls_in_a_terminal_without_utf8) {
  PseudoTerminal terminal(words({"enroll"}), session.environment({"LC_ALL=C"}));
  const std::string shown = terminal.readUntil("Waiting for parent");
  const auto scanned = recogniseCodes(pictureOf(shown).view());
  ASSERT_TRUE(scanned.ok());
  ASSERT_EQ(scanned.value().size(), 1U);
  EXPECT_THAT(scanned.value().front().text.value_or(""), HasSubstr(after(shown, "Enrollment Code: ")));
}

TEST_F(AgentProgram, enrolls_without_a_terminal) {
  auto program = start({"enroll"}, {"LC_ALL=C"});
  const std::string shown = program->readUntil("Waiting for parent to complete enrollment...");
  const std::string code = after(shown, "Enrollment Code: ");
  EXPECT_THAT(shown, AllOf(HasSubstr("This terminal can't show a QR code"), HasSubstr("\"" + code + "\""),
                           Not(HasSubstr("\x1b"))));
  EXPECT_TRUE(service->approve(code));
  EXPECT_EQ(program->readUntil("enrolled."), "This device is enrolled.\n");
  EXPECT_EQ(program->end(0), 0);
}

TEST_F(AgentProgram, cancels_on_control_c) {
  PseudoTerminal terminal(words({"enroll"}), session.environment());
  terminal.readUntil("Waiting for parent");
  terminal.type("\x03");
  EXPECT_THAT(terminal.readToEnd(), HasSubstr("Cancelled. This device is not enrolled.\r\n"));
  EXPECT_EQ(terminal.wait(), 130);
  EXPECT_EQ(call({"status"}).status, 3);
}

TEST_F(AgentProgram, cancels_when_its_terminal_is_closed) {
  PseudoTerminal terminal(words({"enroll"}), session.environment());
  const std::string code = after(terminal.readUntil("Waiting for parent"), "Enrollment Code: ");
  terminal.hangUp();
  EXPECT_EQ(terminal.wait(), 1);
  EXPECT_EQ(call({"status"}).status, 3);
  // A parent's approval now has no effect.
  service->approve(code);
  EXPECT_EQ(call({"status"}).status, 3);
}

TEST_F(AgentProgram, reports_why_there_is_no_code) {
  failAlways();
  const auto result = call({"enroll"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, StartsWith("quillmar-agent: "));
  EXPECT_THAT(result.output, Not(HasSubstr("Enrollment Code")));
}

TEST_F(AgentProgram, does_not_enroll_twice) {
  enroll();
  const auto again = call({"enroll"});
  EXPECT_EQ(again.status, 0);
  EXPECT_EQ(again.output, "This device is enrolled already.\nTo protect it: quillmar-agent run\n");
}

TEST_F(AgentProgram, keeps_an_enrolled_device_protected_until_it_is_told_to_stop) {
  enroll();
  auto run = start({"run"});
  EXPECT_EQ(run->readLine(), "Looking after this device.");
  EXPECT_THAT(run->readUntil("DNS Protection Active"), HasSubstr("Tunnel: DNS Protection Active\n"));
  EXPECT_EQ(checkins(), 1);
  const auto status = call({"status"});
  EXPECT_EQ(status.status, 0);
  EXPECT_THAT(status.output, AllOf(HasSubstr("Protection   DNS Protection Active\n"),
                                   HasSubstr("Kept up by   quillmar-agent (process ")));
  EXPECT_EQ(call({"sync"}).status, 0);
  EXPECT_EQ(checkins(), 2);
  EXPECT_EQ(run->end(SIGTERM), 0);
  EXPECT_EQ(call({"status"}).status, 6);
  EXPECT_TRUE(fs::is_empty(session.runtime()));
}

TEST_F(AgentProgram, notifies_the_service_manager_when_it_is_ready_alive_and_stopping) {
  const fs::path path = session.runtime() / "notify";
  FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.string().copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  const auto hear = [&] {
    std::array<char, 256> text{};
    const auto size = ::recv(socket.get(), text.data(), text.size(), 0);
    return std::string(text.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
  };
  auto run = start({"run"}, {"NOTIFY_SOCKET=" + path.string(), "WATCHDOG_USEC=100000"});
  EXPECT_EQ(hear(), "READY=1");
  EXPECT_EQ(hear(), "STATUS=This device is not enrolled. Waiting for that.");
  EXPECT_EQ(hear(), "WATCHDOG=1");
  EXPECT_EQ(hear(), "WATCHDOG=1");
  EXPECT_EQ(run->end(SIGTERM), 0);
  std::string last = hear();
  while (last == "WATCHDOG=1") {
    last = hear();
  }
  EXPECT_EQ(last, "STOPPING=1");
}

TEST_F(AgentProgram, refuses_to_run_twice) {
  auto run = start({"run"});
  EXPECT_EQ(run->readLine(), "This device is not enrolled. Waiting for that.");
  const auto second = call({"run"});
  EXPECT_EQ(second.status, 5);
  EXPECT_EQ(second.errors, "quillmar-agent: quillmar-agent runs already.\n");
}

TEST_F(AgentProgram, continues_the_work_of_a_killed_process) {
  enroll();
  auto first = start({"run"});
  static_cast<void>(first->readUntil("The service is reached."));
  EXPECT_EQ(first->end(SIGKILL), -SIGKILL);
  EXPECT_EQ(call({"status"}).status, 6);
  auto second = start({"run"});
  EXPECT_EQ(second->readLine(), "Looking after this device.");
  static_cast<void>(second->readUntil("DNS Protection Active"));
  EXPECT_EQ(call({"status"}).status, 0);
}

TEST_F(AgentProgram, yields_the_work_to_another_process_and_takes_it_back) {
  enroll();
  auto run = start({"run"});
  static_cast<void>(run->readUntil("The service is reached."));
  auto attempt = control::attemptLock(data);
  ASSERT_TRUE(attempt.lock);
  EXPECT_THAT(run->readUntil("taken over"),
              HasSubstr("Another program of this installation has taken over. Waiting.\n"));
  EXPECT_TRUE(control::isAgentWaiting(data));
  const auto before = checkins();
  // No process answers now, and no request of the agent is in flight.
  EXPECT_FALSE(control::ask(data, {.operation = "status"}, std::chrono::seconds(60)));
  attempt.lock.reset();
  EXPECT_THAT(run->readUntil("Looking after"), HasSubstr("Looking after this device.\n"));
  EXPECT_THAT(run->readUntil("The service is reached."), HasSubstr("The service is reached.\n"));
  EXPECT_EQ(checkins(), before + 1);
}

TEST_F(AgentProgram, takes_the_work_back_from_a_killed_process) {
  enroll();
  auto run = start({"run"});
  static_cast<void>(run->readUntil("The service is reached."));
  const pid_t other = fork();
  if (other == 0) {
    const auto attempt = control::attemptLock(data);
    raise(attempt.lock ? SIGKILL : SIGTERM);
  }
  EXPECT_THAT(run->readUntil("taken over"),
              HasSubstr("Another program of this installation has taken over. Waiting.\n"));
  EXPECT_THAT(run->readUntil("Looking after"), HasSubstr("Looking after this device.\n"));
}

TEST_F(AgentProgram, can_be_stopped_while_it_waits_for_the_work) {
  const auto lock = InstanceLock::acquire(data);
  auto run = start({"run"});
  EXPECT_EQ(run->readLine(), "Another program of this installation does the work. Waiting.");
  EXPECT_EQ(run->end(SIGTERM), 0);
}

TEST_F(AgentProgram, starts_to_work_when_an_enrollment_it_waited_for_is_done) {
  auto run = start({"run"});
  EXPECT_EQ(run->readLine(), "This device is not enrolled. Waiting for that.");
  {
    PseudoTerminal terminal(words({"enroll"}), session.environment());
    const std::string code = after(terminal.readUntil("Waiting for parent"), "Enrollment Code: ");
    ASSERT_TRUE(service->approve(code)) << code;
    static_cast<void>(terminal.readToEnd());
    ASSERT_EQ(terminal.wait(), 0);
  }
  EXPECT_THAT(run->readUntil("Looking after"), HasSubstr("Looking after this device.\n"));
  EXPECT_THAT(run->readUntil("The service is reached."), HasSubstr("The service is reached.\n"));
}

TEST_F(AgentProgram, is_not_interrupted_by_a_needless_enrollment) {
  enroll();
  auto run = start({"run"});
  static_cast<void>(run->readUntil("DNS Protection Active"));
  EXPECT_EQ(call({"enroll"}).output, "This device is enrolled already.\n");
  EXPECT_EQ(run->end(SIGTERM), 0);
  EXPECT_EQ(run->readLine(), "");
}

TEST_F(AgentProgram, confirms_a_reset) {
  enroll();
  PseudoTerminal terminal(words({"reset"}), session.environment());
  EXPECT_THAT(
      terminal.readUntil("[y/N]"),
      HasSubstr("This will remove this device from parental monitoring. You will need to enroll again."));
  terminal.type("n\n");
  EXPECT_THAT(terminal.readToEnd(), HasSubstr("Nothing was changed."));
  EXPECT_EQ(terminal.wait(), 130);
  EXPECT_EQ(call({"status"}).status, 6);
  EXPECT_EQ(call({"reset"}).status, 130) << "nobody said yes";
  const auto done = call({"reset"}, "y\n");
  EXPECT_EQ(done.status, 0);
  EXPECT_THAT(done.output,
              EndsWith("This device has forgotten its enrollment. The family's list keeps it until "
                       "a parent removes it there.\nThe tunnel stays as it is; the system's network "
                       "settings can remove it.\n"));
  EXPECT_EQ(call({"status"}).status, 3);
}

TEST_F(AgentProgram, resets_through_the_running_agent) {
  enroll();
  auto run = start({"run"});
  static_cast<void>(run->readUntil("DNS Protection Active"));
  EXPECT_EQ(call({"reset", "--yes"}).status, 0);
  EXPECT_THAT(run->readUntil("forgotten"),
              HasSubstr("This device has forgotten its enrollment and is no longer looked after.\n"));
  EXPECT_EQ(call({"status"}).status, 3);
}

TEST_F(AgentProgram, syncs_without_a_running_agent) {
  enroll();
  EXPECT_EQ(checkins(), 0);
  const auto result = call({"sync"});
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_EQ(result.output, "Checked in.\n");
  EXPECT_EQ(checkins(), 1);
}

TEST_F(AgentProgram, reports_a_failed_sync) {
  enroll();
  failAlways();
  const auto result = call({"sync"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, StartsWith("quillmar-agent: The service answered with an error: "));
}

TEST_F(AgentProgram, reports_an_unreachable_service) {
  enroll();
  store(settings::apiBaseURL, std::string("https://localhost:1"));
  const auto result = call({"sync"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors,
            "quillmar-agent: The service can't be reached: Could not connect to the server.\n");
}

TEST_F(AgentProgram, reports_a_data_directory_that_is_a_file) {
  std::ofstream(data) << "a file";
  const std::string unusable =
      "quillmar-agent: The folder " + data.string() + " can't be used: Not a directory.\n";
  const std::string unreadable = "quillmar-agent: The settings in " + data.string() + " can't be read.\n";
  for (const auto& [command, problem] :
       {std::pair("run", unusable), std::pair("enroll", unusable), std::pair("status", unreadable),
        std::pair("sync", unreadable), std::pair("reset", unreadable)}) {
    const auto result = call({command});
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_THAT(result.errors, EndsWith(problem)) << command;
  }
}

TEST_F(AgentProgram, distinguishes_unreadable_settings_from_a_device_that_is_not_enrolled) {
  fs::create_directories(data / "settings.db");
  const std::string problem = "quillmar-agent: The settings in " + data.string() + " can't be read.\n";
  for (const auto* command : {"run", "enroll", "status", "sync", "reset"}) {
    const auto result = call({command});
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_THAT(result.errors, EndsWith(problem)) << command;
  }
  EXPECT_THAT(call({"status", "--json"}).output, HasSubstr("can't be read."));
}

// A read-only disk.
struct OnReadOnlyDisk : AgentProgram {
  void SetUp() override {
    fs::create_directories(data);
    if (::mount("tmpfs", data.c_str(), "tmpfs", 0, "mode=0700") != 0) {
      GTEST_SKIP() << "only root can have a disk of its own";
    }
  }
  void TearDown() override { ::umount2(data.c_str(), MNT_DETACH); }
  void makeReadOnly() const {
    ASSERT_EQ(::mount(nullptr, data.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
  }
  void makeLocks() const {
    static_cast<void>(InstanceLock::acquire(data));
    static_cast<void>(InstanceLock::acquire(data, control::agentLock));
  }
  std::string problem() const {
    return "The folder " + data.string() + " can't be used: Read-only file system.";
  }
};

TEST_F(OnReadOnlyDisk, an_enrolled_device_is_protected) {
  enroll();
  makeLocks();
  makeReadOnly();
  auto run = start({"run"});
  EXPECT_THAT(run->readUntil("DNS Protection Active"), HasSubstr("Looking after this device.\n"));
  EXPECT_EQ(call({"status"}).status, 0);
  EXPECT_EQ(call({"run"}).errors, "quillmar-agent: quillmar-agent runs already.\n");
  EXPECT_TRUE(control::attemptLock(data).lock) << "it gives way as ever";
  EXPECT_THAT(run->readUntil("taken over"), HasSubstr("has taken over"));
}

TEST_F(OnReadOnlyDisk, an_enrolled_device_is_protected_without_a_lock_file) {
  enroll();
  makeReadOnly();
  auto run = start({"run"});
  EXPECT_THAT(run->readUntil("DNS Protection Active"),
              AllOf(HasSubstr(problem() + '\n'), HasSubstr("Looking after this device.\n")));
  EXPECT_EQ(call({"status"}).status, 0);
  EXPECT_EQ(call({"sync"}).status, 0);
  EXPECT_EQ(run->end(SIGTERM), 0);
  EXPECT_THAT(call({"status"}).output, HasSubstr("Kept up by   nobody"));
  EXPECT_FALSE(control::isAgentWaiting(data));
}

TEST_F(OnReadOnlyDisk, a_reset_fails_if_it_would_not_last) {
  enroll();
  makeReadOnly();
  const auto result = call({"reset", "--yes"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("The enrollment can't be removed from the disk"));
  EXPECT_EQ(call({"status"}).status, 6);
}

TEST_F(OnReadOnlyDisk, an_answer_for_a_script_stands_alone_and_the_disk_is_named_beside_it) {
  enroll();
  makeReadOnly();
  const auto result = call({"status", "--json"});
  EXPECT_THAT(result.output, StartsWith("{\"device\":"));
  EXPECT_EQ(result.errors, "[SettingsStore] Settings can't be saved: the disk is read-only\n");
}

TEST_F(OnReadOnlyDisk, enroll_reports_why_it_fails) {
  for (const bool hasLocks : {false, true}) {
    if (hasLocks) {
      ::mount(nullptr, data.c_str(), nullptr, MS_REMOUNT, nullptr);
      makeLocks();
    }
    makeReadOnly();
    const auto enrollment = call({"enroll"});
    EXPECT_EQ(enrollment.status, 1);
    EXPECT_THAT(enrollment.errors, EndsWith("quillmar-agent: " + problem() + '\n'));
    EXPECT_THAT(enrollment.output, Not(HasSubstr("Enrollment Code")));
    EXPECT_EQ(call({"status"}).status, 3);
  }
}

TEST_F(OnReadOnlyDisk, the_agent_does_not_wait_for_an_impossible_enrollment) {
  makeReadOnly();
  const auto run = call({"run"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "quillmar-agent: " + problem() + '\n');
}

TEST_F(AgentProgram, status_reports_an_agent_whose_runtime_directory_was_removed) {
  enroll();
  auto run = start({"run"});
  static_cast<void>(run->readUntil("DNS Protection Active"));
  fs::remove_all(session.runtime() / "quillmar");
  const auto status = call({"status"});
  EXPECT_EQ(status.status, 6);
  EXPECT_THAT(status.output, HasSubstr("Kept up by   a program that can't be asked at the moment"));
  EXPECT_EQ(run->end(SIGTERM), 0);
}

TEST_F(AgentProgram, refuses_a_parents_device) {
  store(settings::deviceRole, std::string("parent"));
  for (const auto* command : {"enroll", "run", "status", "sync", "reset"}) {
    EXPECT_EQ(call({command}).status, 4) << command;
  }
}

TEST_F(AgentProgram, leaves_an_open_window_alone) {
  const auto lock = InstanceLock::acquire(data);
  std::promise<AsioDispatch*> ready;
  std::thread window([&] {
    AsioDispatch dispatch;
    const control::ControlServer server(
        data, dispatch, [](const std::string& /*line*/, const control::ControlServer::Reply& reply) {
          reply({R"({"worker":"window"})"});
        });
    dispatch.main().async([&] { ready.set_value(&dispatch); });
    dispatch.run();
  });
  AsioDispatch* const dispatch = ready.get_future().get();
  const auto result = call({"enroll"});
  EXPECT_EQ(result.status, 5);
  EXPECT_EQ(result.errors, "quillmar-agent: The Quillmar window is open. Enroll there, or close it first.\n");
  dispatch->stop();
  window.join();
}

// The running agent does not wait for an occasion to write.
TEST_F(AgentProgram, a_reset_lasts_as_soon_as_the_disk_has_room) {
  fs::create_directories(data);
  if (::mount("tmpfs", data.c_str(), "tmpfs", 0, "size=256k,mode=0700") != 0) {
    GTEST_SKIP() << "only root can have a small disk";
  }
  enroll();
  auto run = start({"run"});
  EXPECT_THAT(run->readUntil("DNS Protection Active"), HasSubstr("Looking after this device."));
  std::ofstream(data / "filler") << std::string(300 * 1024, 'x');
  const auto reset = call({"reset", "--yes"});
  EXPECT_EQ(reset.status, 1);
  EXPECT_THAT(reset.errors,
              HasSubstr("It comes back with the next start, unless the disk can be written by then."));
  EXPECT_THAT(run->readUntil("can't be saved"), HasSubstr("has forgotten its enrollment"));
  fs::remove(data / "filler");
  EXPECT_THAT(run->readUntil("saved again"), HasSubstr("Settings are saved again."));
  EXPECT_EQ(run->end(SIGKILL), -SIGKILL);
  EXPECT_EQ(call({"status"}).status, 3);
  ::umount2(data.c_str(), MNT_DETACH);
}

// It keeps the enrollment in memory until there is room, and loses nothing.
TEST_F(AgentProgram, an_enrollment_waits_until_the_disk_has_room) {
  fs::create_directories(data);
  if (::mount("tmpfs", data.c_str(), "tmpfs", 0, "size=256k,mode=0700") != 0) {
    GTEST_SKIP() << "only root can have a small disk";
  }
  std::ofstream(data / "filler") << std::string(300 * 1024, 'x');
  {
    PseudoTerminal terminal(words({"enroll"}), session.environment());
    const std::string code = after(terminal.readUntil("Waiting for parent"), "Enrollment Code: ");
    EXPECT_TRUE(service->approve(code));
    EXPECT_THAT(terminal.readUntil("this program waits."), HasSubstr("The enrollment can't be saved yet."));
    fs::remove(data / "filler");
    EXPECT_THAT(terminal.readToEnd(), HasSubstr("This device is enrolled."));
    EXPECT_EQ(terminal.wait(), 0);
  }
  EXPECT_EQ(call({"status"}).status, 6);
  ::umount2(data.c_str(), MNT_DETACH);
}

#ifdef QUILLMAR_KILL_POINT

// Runs many enrollments at once, each on a device of its own.
struct Killed : AgentProgram {
  std::unique_ptr<RunningProgram> startIn(const fs::path& directory, const Words& more) const {
    return std::make_unique<RunningProgram>(
        session.running({QUILLMAR_AGENT, "--data-dir", directory.string(), "--service", service->url(),
                         "--simulate-tunnel", "enroll"},
                        more + Words{"LD_PRELOAD=" QUILLMAR_KILL_POINT}));
  }
  void approve(RunningProgram& program) const {
    if (const auto code = after(program.readUntil("Enrollment Code: "), "Enrollment Code: "); !code.empty()) {
      service->approve(code);
    }
  }
  std::string statusIn(const fs::path& directory) const {
    return runCommand(session.running({QUILLMAR_AGENT, "--data-dir", directory.string(), "--simulate-tunnel",
                                       "status", "--json"}))
        .output;
  }
};

TEST_F(Killed, at_any_of_fifty_points_a_device_is_either_enrolled_or_not) {
  constexpr long points = 50;
  const fs::path counted = session.home() / "count";
  {
    auto whole = startIn(session.home() / "whole", {"QUILLMAR_KILL_COUNT=" + counted.string()});
    approve(*whole);
    ASSERT_EQ(whole->end(0), 0);
  }
  long total = 0;
  std::ifstream(counted) >> total;
  ASSERT_GE(total, points);

  const auto directoryOf = [this](long point) { return session.home() / std::to_string(point); };
  std::vector<std::unique_ptr<RunningProgram>> programs;
  for (long point = 0; point < points; ++point) {
    const long number = 1 + point * (total - 1) / (points - 1);
    programs.push_back(startIn(directoryOf(point), {"QUILLMAR_KILL_AT=" + std::to_string(number)}));
  }
  for (const auto& program : programs) {
    approve(*program);
  }
  long killed = 0;
  long enrolled = 0;
  for (long point = 0; point < points; ++point) {
    killed += programs[static_cast<std::size_t>(point)]->end(0) == -SIGKILL ? 1 : 0;
    const std::string status = statusIn(directoryOf(point));
    if (status.find(R"("isEnrolled":true)") != std::string::npos) {
      ++enrolled;
      EXPECT_THAT(status, AllOf(HasSubstr(R"("deviceID":")"), HasSubstr(R"("dohEndpoint":"https://)")))
          << point;
    } else {
      EXPECT_THAT(status, AllOf(HasSubstr(R"("isEnrolled":false)"), Not(HasSubstr("deviceID")))) << point;
    }
  }
  // The calls differ a little between runs, so a few kill points may not be reached; both outcomes must
  // occur.
  EXPECT_GE(killed, points - 5);
  EXPECT_GE(enrolled, 1);
  EXPECT_LT(enrolled, points);
}

#endif

}  // namespace
}  // namespace quillmar::agent
