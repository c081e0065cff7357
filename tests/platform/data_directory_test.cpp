#include "platform/linux/data_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/support/scoped_environment.h"
#include "tests/support/temporary_directory.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;

TEST(DataDirectory, is_where_the_desktop_says) {
  const ScopedEnvironment data("XDG_DATA_HOME", "/data");
  EXPECT_EQ(dataDirectory(), "/data/quillmar");
}

TEST(DataDirectory, is_in_the_home_directory_when_the_desktop_says_nothing_usable) {
  const ScopedEnvironment home("HOME", "/home/ann");
  for (const char* value : {static_cast<const char*>(nullptr), "", "relative/path"}) {
    const ScopedEnvironment data("XDG_DATA_HOME", value);
    EXPECT_EQ(dataDirectory(), "/home/ann/.local/share/quillmar");
  }
}

TEST(DataDirectory, is_found_without_any_environment) {
  const ScopedEnvironment home("HOME", nullptr);
  const ScopedEnvironment data("XDG_DATA_HOME", nullptr);
  EXPECT_TRUE(dataDirectory().is_absolute());
  EXPECT_EQ(dataDirectory().filename(), "quillmar");
}

TEST(DataDirectory, is_made_for_its_user_only_and_left_alone_once_it_exists) {
  const TemporaryDirectory temporary;
  const fs::path directory = temporary.path() / "a" / "b";
  EXPECT_TRUE(createPrivateDirectory(directory));
  struct stat status {};
  ASSERT_EQ(stat(directory.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0700U);
  ASSERT_EQ(chmod(directory.c_str(), 0750), 0);
  EXPECT_TRUE(createPrivateDirectory(directory));
  ASSERT_EQ(stat(directory.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0750U);
}

TEST(DataDirectory, is_not_made_over_a_file) {
  const TemporaryDirectory temporary;
  std::ofstream(temporary.path() / "file") << "x";
  EXPECT_FALSE(createPrivateDirectory(temporary.path() / "file"));
  EXPECT_FALSE(createPrivateDirectory(temporary.path() / "file" / "below"));
}

TEST(InstanceLock, is_held_by_one_at_a_time_and_given_back_at_its_end) {
  const TemporaryDirectory directory;
  {
    const auto first = InstanceLock::acquire(directory.path());
    EXPECT_TRUE(first);
    EXPECT_FALSE(InstanceLock::acquire(directory.path()));
  }
  EXPECT_TRUE(InstanceLock::acquire(directory.path()));
}

TEST(InstanceLock, ends_with_its_process_however_that_ends) {
  const TemporaryDirectory directory;
  const pid_t other = fork();
  if (other == 0) {
    const auto held = InstanceLock::acquire(directory.path());
    raise(held ? SIGKILL : SIGTERM);
  }
  int status = 0;
  ASSERT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(WTERMSIG(status), SIGKILL);
  EXPECT_TRUE(InstanceLock::acquire(directory.path()));
}

TEST(InstanceLock, needs_a_directory) { EXPECT_FALSE(InstanceLock::acquire("/dev/null/x")); }

}  // namespace
}  // namespace quillmar
