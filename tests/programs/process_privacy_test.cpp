#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
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

namespace quillmar::agent {
namespace {

namespace fs = std::filesystem;
using sandbox::test::runCommand;
using sandbox::test::RunningProgram;
using test::operator+;
using test::programFor;
using test::Words;
using testing::HasSubstr;

constexpr uid_t somebody = 65534;

std::string contents(const fs::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

mode_t modeOf(const fs::path& file) {
  struct stat status {};
  EXPECT_EQ(::lstat(file.c_str(), &status), 0) << file;
  return status.st_mode & 07777U;
}

void giveTo(uid_t user, const fs::path& place) {
  ASSERT_EQ(::chown(place.c_str(), user, user), 0);
  for (const auto& entry : fs::recursive_directory_iterator(place)) {
    ASSERT_EQ(::lchown(entry.path().c_str(), user, user), 0);
  }
}

void expectPrivate(const fs::path& place) {
  EXPECT_EQ(modeOf(place), 0700U) << place;
  for (const auto& entry : fs::recursive_directory_iterator(place)) {
    EXPECT_EQ(modeOf(entry.path()), entry.is_directory() ? 0700U : 0600U) << entry.path();
  }
}

struct AgentPrivacy : testing::Test {
  // A shell runs `given`, prints its process id and becomes the program.
  std::unique_ptr<RunningProgram> start(const std::string& given, const Words& before = {}) {
    auto agent = std::make_unique<RunningProgram>(
        before + session.running(Words{"sh", "-c", given + "; echo $$; exec \"$@\"", "-"} +
                                 programFor(QUILLMAR_AGENT, data, *service, {"run"})));
    process = fs::path("/proc") / agent->readLine();
    return agent;
  }

  const std::unique_ptr<sandbox::Service> service = std::move(*sandbox::Service::start({}));
  const test::ProgramSession session;
  const fs::path data = session.home() / "share" / "quillmar";
  fs::path process;
};

TEST_F(AgentPrivacy, a_crash_writes_no_memory_to_the_disk) {
  const auto agent = start("ulimit -c $(ulimit -H -c)");
  EXPECT_THAT(agent->readUntil("not enrolled"), HasSubstr("not enrolled"));
  EXPECT_THAT(contents(process / "limits"), testing::ContainsRegex("Max core file size +0 +0 "));
}

// The kernel makes root the owner of such a process's files in /proc.
TEST_F(AgentPrivacy, its_user_can_not_inspect_its_process_and_it_still_works) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can start a program for somebody else";
  }
  test::enrollDevice(*service, data);
  for (const auto& place : {session.home(), session.runtime(), service->caFile().parent_path()}) {
    giveTo(somebody, place);
  }
  const Words asSomebody{"setpriv", "--reuid", std::to_string(somebody), "--clear-groups"};
  const auto agent = start("true", asSomebody);
  EXPECT_THAT(agent->readUntil("The service is reached."), HasSubstr("Looking after this device."));
  EXPECT_THAT(contents(process / "status"), HasSubstr("Uid:\t" + std::to_string(somebody)));
  EXPECT_NE(runCommand(asSomebody + Words{"cat", process / "environ"}).status, 0);
  EXPECT_NE(runCommand(asSomebody + Words{"ls", process / "fd"}).status, 0);
  const auto told =
      runCommand(asSomebody + session.running(programFor(QUILLMAR_AGENT, data, *service, {"status"})));
  EXPECT_THAT(told.output, HasSubstr("Kept up by   quillmar-agent"));
  EXPECT_EQ(agent->end(SIGTERM), 0);
}

TEST_F(AgentPrivacy, creates_files_for_its_user_only_at_any_umask) {
  for (const char* mask : {"000", "022", "077"}) {
    fs::remove_all(data.parent_path());
    const auto agent = start("umask " + std::string(mask));
    EXPECT_THAT(agent->readUntil("not enrolled"), HasSubstr("not enrolled"));
    expectPrivate(data.parent_path());
  }
}

TEST_F(AgentPrivacy, closes_a_folder_that_was_open_to_others) {
  fs::create_directories(data);
  fs::permissions(data, fs::perms::all);
  const auto agent = start("true");
  EXPECT_THAT(agent->readUntil("not enrolled"), HasSubstr("not enrolled"));
  EXPECT_EQ(modeOf(data), 0700U);
}

TEST_F(AgentPrivacy, refuses_a_folder_of_another_user_with_a_sentence) {
  test::enrollDevice(*service, data);
  if (::chown(data.c_str(), somebody, somebody) != 0) {
    GTEST_SKIP() << "only root can give a folder away";
  }
  const auto result = runCommand(session.running(programFor(QUILLMAR_AGENT, data, *service, {"run"})));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors,
            "quillmar-agent: The folder " + data.string() + " can't be used: it belongs to another user.\n");
}

}  // namespace
}  // namespace quillmar::agent
