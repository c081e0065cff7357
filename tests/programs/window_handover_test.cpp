#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "sandbox/service.h"
#include "tests/programs/enrolled_device.h"
#include "tests/programs/program_session.h"
#include "tests/sandbox/support/run_command.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;
using namespace sandbox::test;
using namespace test;
using testing::HasSubstr;

// A desktop with a display, on which the programs run as a person would start them.
struct Desktop : testing::Test {
  Words inSession(const Words& words) const {
    return session.running(words, {"QT_QPA_PLATFORM=xcb", "QT_QUICK_BACKEND=software", "DISPLAY=:" + display,
                                   "XDG_DATA_HOME=" + session.home().string()});
  }
  CommandResult call(const Words& words) const { return runCommand(inSession(words)); }
  std::unique_ptr<RunningProgram> start(const Words& words) const {
    return std::make_unique<RunningProgram>(inSession(words));
  }
  // Waits for the window and returns its number on the display.
  std::string windowNumber() const { return onWindow({}).output; }
  // The first key closes the window, so the tool fails at the second one; that status is ignored.
  void closeWindow() const { static_cast<void>(onWindow({"windowfocus", "--sync", "key", "ctrl+w"})); }
  CommandResult onWindow(const Words& deed) const {
    return call(Words{"xdotool", "search", "--sync", "--onlyvisible", "--name", "Quillmar"} + deed);
  }

  const test::ProgramSession session;
  RunningProgram screen{{"Xvfb", "-displayfd", "1", "-screen", "0", "1024x768x24"}};
  const std::string display = screen.readLine();
};

// A desktop with an enrolled child's device.
struct ChildsDesktop : Desktop {
  ChildsDesktop() { test::enrollDevice(*service, data); }

  Words withOptions(const std::string& program, const Words& command = {}) const {
    return programFor(program, data, *service, command);
  }

  const std::unique_ptr<sandbox::Service> service = std::move(*sandbox::Service::start({}));
  const fs::path data = session.home() / "data";
};

TEST_F(ChildsDesktop, a_window_takes_the_work_over_and_gives_it_back_when_closed) {
  const auto agent = start(withOptions(QUILLMAR_AGENT, {"run"}));
  EXPECT_THAT(agent->readUntil("The service is reached."), HasSubstr("Looking after this device."));
  EXPECT_EQ(test::checkinsAt(*service), 1);

  const auto window = start(withOptions(QUILLMAR_PROGRAM));
  EXPECT_THAT(agent->readUntil("taken over"),
              HasSubstr("Another program of this installation has taken over."));
  EXPECT_THAT(window->readUntil("checkin - status: 200"), HasSubstr("checkin - status: 200"));
  EXPECT_NE(windowNumber(), "");
  EXPECT_THAT(call(withOptions(QUILLMAR_AGENT, {"status"})).output,
              HasSubstr("Kept up by   the Quillmar window"));
  const auto before = test::checkinsAt(*service);
  EXPECT_EQ(call(withOptions(QUILLMAR_AGENT, {"sync"})).status, 0);
  EXPECT_EQ(test::checkinsAt(*service), before + 1) << "the window alone checked in";

  closeWindow();
  EXPECT_EQ(window->end(0), 0);
  EXPECT_THAT(agent->readUntil("The service is reached."), HasSubstr("Looking after this device."));
  EXPECT_THAT(call(withOptions(QUILLMAR_AGENT, {"status"})).output, HasSubstr("Kept up by   quillmar-agent"));
}

TEST_F(ChildsDesktop, a_closed_window_goes_on_protecting_if_no_agent_waits) {
  const auto window = start(withOptions(QUILLMAR_PROGRAM));
  EXPECT_THAT(window->readUntil("checkin - status: 200"), HasSubstr("checkin - status: 200"));
  const std::string first = windowNumber();
  closeWindow();
  EXPECT_THAT(call(withOptions(QUILLMAR_AGENT, {"status"})).output,
              HasSubstr("Kept up by   the Quillmar window"));
  // A second start makes the first process open a new window, and ends.
  EXPECT_EQ(call(withOptions(QUILLMAR_PROGRAM)).status, 0);
  EXPECT_NE(windowNumber(), first);
}

TEST_F(ChildsDesktop, a_window_opens_with_a_read_only_installation) {
  const fs::path disk = session.home() / "disk";
  fs::create_directories(disk);
  if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "mode=0700") != 0) {
    GTEST_SKIP() << "only root can have a disk of its own";
  }
  test::enrollDevice(*service, disk);
  ::mount(nullptr, disk.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
  {
    const auto window = start(programFor(QUILLMAR_PROGRAM, disk, *service));
    EXPECT_THAT(window->readUntil("checkin - status: 200"), HasSubstr("checkin - status: 200"));
  }
  ::umount2(disk.c_str(), MNT_DETACH);
}

TEST_F(ChildsDesktop, a_crashed_window_writes_no_memory_to_the_disk_and_its_files_are_its_users_only) {
  const auto window =
      start(Words{"sh", "-c", "ulimit -c $(ulimit -H -c); umask 000; echo $$; exec \"$@\"", "-"} +
            withOptions(QUILLMAR_PROGRAM));
  const fs::path process = fs::path("/proc") / window->readLine();
  EXPECT_THAT(window->readUntil("checkin - status: 200"), HasSubstr("checkin - status: 200"));
  std::ostringstream limits;
  limits << std::ifstream(process / "limits").rdbuf();
  EXPECT_THAT(limits.str(), testing::ContainsRegex("Max core file size +0 +0 "));
  EXPECT_NE(windowNumber(), "");
  EXPECT_EQ(window->end(SIGTERM), 0);
  for (const auto& entry : fs::recursive_directory_iterator(data)) {
    const auto others = entry.status().permissions() & (fs::perms::group_all | fs::perms::others_all);
    EXPECT_EQ(others, fs::perms::none) << entry.path();
  }
}

TEST_F(ChildsDesktop, a_window_refuses_a_folder_of_another_user_with_a_sentence) {
  constexpr uid_t somebody = 65534;
  if (::chown(data.c_str(), somebody, somebody) != 0) {
    GTEST_SKIP() << "only root can give a folder away";
  }
  const auto result = call(withOptions(QUILLMAR_PROGRAM));
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("quillmar: The folder " + data.string() +
                                       " can't be used: it belongs to another user.\n"));
}

TEST_F(ChildsDesktop, a_killed_window_gives_the_work_back) {
  const auto agent = start(withOptions(QUILLMAR_AGENT, {"run"}));
  EXPECT_THAT(agent->readUntil("The service is reached."), HasSubstr("Looking after this device."));
  const auto window = start(withOptions(QUILLMAR_PROGRAM));
  EXPECT_THAT(agent->readUntil("taken over"),
              HasSubstr("Another program of this installation has taken over."));
  EXPECT_EQ(window->end(SIGKILL), -SIGKILL);
  EXPECT_THAT(agent->readUntil("The service is reached."), HasSubstr("Looking after this device."));
}

// SIGTERM at the end of a session, SIGHUP of a closed terminal, SIGINT of Ctrl-C.
TEST_F(ChildsDesktop, a_window_ended_by_a_signal_removes_its_socket) {
  for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
    const auto window = start(withOptions(QUILLMAR_PROGRAM));
    EXPECT_NE(windowNumber(), "");
    EXPECT_FALSE(fs::is_empty(session.runtime()));
    EXPECT_EQ(window->end(signal), 0);
    EXPECT_TRUE(fs::is_empty(session.runtime())) << "after signal " << signal;
  }
}

// The default installation, on its own bus. Its closed window comes back as a new one.
TEST_F(Desktop, an_activation_over_the_bus_shows_a_closed_window_again) {
  const auto service = std::move(*sandbox::Service::start({}));
  test::enrollDevice(*service, session.home() / "quillmar");
  const std::string script = R"(
    find_window() { timeout 60 xdotool search --sync --onlyvisible --name Quillmar "$@"; }
    "$1" & window=$!
    gdbus wait --session --timeout 60 live.quillmar.Quillmar
    first=$(find_window)
    find_window windowfocus --sync key ctrl+w
    gdbus call --session --dest live.quillmar.Quillmar --object-path /live/quillmar/Quillmar \
      --method org.freedesktop.Application.Activate '{}'
    second=$(find_window)
    [ "$first" != "$second" ] && echo "it is back"
    kill $window)";
  const auto result = call({"dbus-run-session", "--", "bash", "-c", script, "-", QUILLMAR_PROGRAM});
  EXPECT_THAT(result.output, HasSubstr("it is back")) << result.errors;
}

}  // namespace
}  // namespace quillmar
