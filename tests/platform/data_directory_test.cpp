#include "platform/linux/data_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

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

TEST(ConfigDirectory, is_where_the_desktop_says_or_in_the_home_directory) {
  const ScopedEnvironment home("HOME", "/home/ann");
  const ScopedEnvironment config("XDG_CONFIG_HOME", "/config");
  EXPECT_EQ(configDirectory(), "/config");
  const ScopedEnvironment unusable("XDG_CONFIG_HOME", "relative/path");
  EXPECT_EQ(configDirectory(), "/home/ann/.config");
}

TEST(RuntimeDirectory, is_where_the_session_says_if_nobody_else_may_enter) {
  const TemporaryDirectory temporary;
  const ScopedEnvironment runtime("XDG_RUNTIME_DIR", temporary.path().c_str());
  EXPECT_EQ(runtimeDirectory(), temporary.path() / "quillmar");
  ASSERT_EQ(chmod(temporary.path().c_str(), 0750), 0);
  EXPECT_EQ(runtimeDirectory(), std::nullopt);
}

TEST(RuntimeDirectory, is_nowhere_without_a_usable_session) {
  for (const char* value :
       {static_cast<const char*>(nullptr), "", "relative/path", "/dev/null", "/nowhere/at/all"}) {
    const ScopedEnvironment runtime("XDG_RUNTIME_DIR", value);
    EXPECT_EQ(runtimeDirectory(), std::nullopt);
  }
}

}  // namespace
}  // namespace quillmar
