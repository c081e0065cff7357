#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/service.h"
#include "tests/programs/enrolled_device.h"
#include "tests/sandbox/support/run_command.h"
#include "tests/support/temporary_directory.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;
using sandbox::test::CommandResult;
using sandbox::test::runCommand;
using sandbox::test::RunningProgram;
using testing::HasSubstr;
using Words = std::vector<std::string>;

Words operator+(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

// A desktop with a display, on which the programs run as a person would start them.
struct Desktop : testing::Test {
  Desktop() { fs::permissions(runtime.path(), fs::perms::owner_all); }

  Words inSession(const Words& words) const {
    return Words{"env",
                 "-i",
                 "PATH=/usr/bin:/bin",
                 "LC_ALL=C.UTF-8",
                 "QT_QPA_PLATFORM=xcb",
                 "QT_QUICK_BACKEND=software",
                 "DISPLAY=:" + display,
                 "HOME=" + home.path().string(),
                 "XDG_DATA_HOME=" + home.path().string(),
                 "XDG_RUNTIME_DIR=" + runtime.path().string()} +
           words;
  }
  CommandResult call(const Words& words) const { return runCommand(inSession(words)); }
  std::unique_ptr<RunningProgram> start(const Words& words) const {
    return std::make_unique<RunningProgram>(inSession(words));
  }
  // Waits for the window.
  CommandResult onWindow(const std::string& deed) const {
    return call({"xdotool", "search", "--sync", "--onlyvisible", "--name", "Quillmar", deed});
  }

  const TemporaryDirectory runtime;
  const TemporaryDirectory home;
  RunningProgram screen{{"Xvfb", "-displayfd", "1", "-screen", "0", "1024x768x24"}};
  const std::string display = screen.readLine();
};

// An enrolled child's device on it.
struct ChildsDesktop : Desktop {
  ChildsDesktop() { test::enrollDevice(*service, data); }

  Words withOptions(const std::string& program, const Words& command = {}) const {
    return Words{program,
                 "--data-dir",
                 data.string(),
                 "--service",
                 service->secureUrl(),
                 "--ca-file",
                 service->caFile().string(),
                 "--simulate-tunnel"} +
           command;
  }

  const std::unique_ptr<sandbox::Service> service = std::move(*sandbox::Service::start({}));
  const fs::path data = home.path() / "data";
};

TEST_F(ChildsDesktop, a_window_takes_the_work_over_and_gives_it_back_when_it_is_closed) {
  const auto agent = start(withOptions(QUILLMAR_AGENT, {"run"}));
  EXPECT_THAT(agent->readUntil("The service is reached."), HasSubstr("Looking after this device."));
  EXPECT_EQ(test::checkinsAt(*service), 1);

  const auto window = start(withOptions(QUILLMAR_PROGRAM));
  EXPECT_THAT(agent->readUntil("taken over"),
              HasSubstr("Another program of this installation has taken over."));
  EXPECT_THAT(window->readUntil("checkin - status: 200"), HasSubstr("checkin - status: 200"));
  EXPECT_EQ(onWindow("getwindowname").status, 0);
  EXPECT_THAT(call(withOptions(QUILLMAR_AGENT, {"status"})).output,
              HasSubstr("Kept up by   the Quillmar window"));
  const auto before = test::checkinsAt(*service);
  EXPECT_EQ(call(withOptions(QUILLMAR_AGENT, {"sync"})).status, 0);
  EXPECT_EQ(test::checkinsAt(*service), before + 1) << "the window alone checked in";

  EXPECT_EQ(onWindow("windowquit").status, 0);
  EXPECT_EQ(window->end(0), 0);
  EXPECT_THAT(agent->readUntil("The service is reached."), HasSubstr("Looking after this device."));
  EXPECT_THAT(call(withOptions(QUILLMAR_AGENT, {"status"})).output, HasSubstr("Kept up by   quillmar-agent"));
}

TEST_F(ChildsDesktop, a_closed_window_goes_on_protecting_where_no_agent_waits) {
  const auto window = start(withOptions(QUILLMAR_PROGRAM));
  EXPECT_THAT(window->readUntil("checkin - status: 200"), HasSubstr("checkin - status: 200"));
  EXPECT_EQ(onWindow("windowquit").status, 0);
  EXPECT_THAT(call(withOptions(QUILLMAR_AGENT, {"status"})).output,
              HasSubstr("Kept up by   the Quillmar window"));
  // A second start shows it again, and ends.
  EXPECT_EQ(call(withOptions(QUILLMAR_PROGRAM)).status, 0);
  EXPECT_EQ(onWindow("getwindowname").status, 0);
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

TEST_F(Desktop, starts_and_raises_the_window_by_its_name_on_the_bus) {
  // The installation that desktops mean, on a bus of its own: a window that is out of sight comes back.
  const std::string script = R"(
    "$1" & window=$!
    gdbus wait --session --timeout 60 live.quillmar.Quillmar &&
    id=$(xdotool search --sync --onlyvisible --name Quillmar | tail -1) &&
    xdotool windowunmap --sync "$id" &&
    gdbus call --session --dest live.quillmar.Quillmar --object-path /live/quillmar/Quillmar \
      --method org.freedesktop.Application.Activate '{}' &&
    xdotool search --sync --onlyvisible --name Quillmar >/dev/null && echo "it is back"
    kill $window)";
  const auto result = call({"dbus-run-session", "--", "bash", "-c", script, "-", QUILLMAR_PROGRAM});
  EXPECT_THAT(result.output, HasSubstr("it is back")) << result.errors;
}

}  // namespace
}  // namespace quillmar
