#include "platform/linux/data_directory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "platform/common/private_directory.h"
#include "testing/scoped_environment.h"
#include "testing/temporary_directory.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;

TEST(DataDirectory, is_in_the_xdg_directory) {
  const ScopedEnvironment data("XDG_DATA_HOME", "/data");
  EXPECT_EQ(dataDirectory(), "/data/quillmar");
}

TEST(DataDirectory, is_in_the_home_directory_without_a_usable_variable) {
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

TEST(StateDirectory, is_in_the_xdg_directory_or_the_home_directory) {
  const ScopedEnvironment home("HOME", "/home/ann");
  {
    const ScopedEnvironment state("XDG_STATE_HOME", "/state");
    EXPECT_EQ(stateDirectory(), "/state/quillmar");
  }
  for (const char* value : {static_cast<const char*>(nullptr), "", "relative/path"}) {
    const ScopedEnvironment state("XDG_STATE_HOME", value);
    EXPECT_EQ(stateDirectory(), "/home/ann/.local/state/quillmar");
  }
}

mode_t modeOf(const fs::path& file) {
  struct stat status {};
  EXPECT_EQ(stat(file.c_str(), &status), 0) << file;
  return status.st_mode & 07777U;
}

TEST(DataDirectory, is_created_with_its_parents_for_its_user_only_at_any_umask) {
  for (const mode_t mask : {0000U, 0022U, 0077U, 0377U}) {
    const TemporaryDirectory temporary;
    const fs::path share = temporary.path() / ".local" / "share";
    const mode_t before = umask(mask);
    EXPECT_TRUE(createPrivateDirectory(share / "quillmar"));
    umask(before);
    for (const auto& made : {share.parent_path(), share, share / "quillmar"}) {
      EXPECT_EQ(modeOf(made), 0700U) << made << " at " << mask;
    }
  }
}

TEST(DataDirectory, that_others_may_enter_is_closed_and_its_parents_are_left_alone) {
  const TemporaryDirectory temporary;
  const fs::path above = temporary.path() / "above";
  const fs::path directory = above / "quillmar";
  for (const mode_t open : {0750U, 0705U, 0777U}) {
    fs::create_directories(directory);
    ASSERT_EQ(chmod(above.c_str(), 0755), 0);
    ASSERT_EQ(chmod(directory.c_str(), open), 0);
    EXPECT_TRUE(createPrivateDirectory(directory));
    EXPECT_EQ(modeOf(directory), 0700U);
    EXPECT_EQ(modeOf(above), 0755U);
  }
}

TEST(DataDirectory, with_stricter_rights_keeps_them) {
  const TemporaryDirectory temporary;
  ASSERT_EQ(chmod(temporary.path().c_str(), 0500), 0);
  EXPECT_TRUE(createPrivateDirectory(temporary.path()));
  EXPECT_EQ(modeOf(temporary.path()), 0500U);
}

TEST(DataDirectory, that_is_shared_stays_shared) {
  const TemporaryDirectory temporary;
  ASSERT_EQ(chmod(temporary.path().c_str(), 01777), 0);
  EXPECT_TRUE(createPrivateDirectory(temporary.path()));
  EXPECT_EQ(modeOf(temporary.path()), 01777U);
}

TEST(DataDirectory, of_another_user_is_refused_and_left_as_it_is) {
  const TemporaryDirectory temporary;
  EXPECT_FALSE(belongsToAnother(temporary.path()));
  EXPECT_FALSE(belongsToAnother(temporary.path() / "absent"));
  constexpr uid_t nobody = 65534;
  if (chown(temporary.path().c_str(), nobody, nobody) != 0) {
    GTEST_SKIP() << "only root can give a folder away";
  }
  ASSERT_EQ(chmod(temporary.path().c_str(), 0777), 0);
  EXPECT_TRUE(belongsToAnother(temporary.path()));
  EXPECT_FALSE(createPrivateDirectory(temporary.path()));
  EXPECT_EQ(errno, EPERM);
  EXPECT_EQ(modeOf(temporary.path()), 0777U);
}

TEST(DataDirectory, is_not_created_in_place_of_a_file) {
  const TemporaryDirectory temporary;
  std::ofstream(temporary.path() / "file") << "x";
  EXPECT_FALSE(createPrivateDirectory(temporary.path() / "file"));
  EXPECT_FALSE(createPrivateDirectory(temporary.path() / "file" / "below"));
}

TEST(ConfigDirectory, is_in_the_xdg_directory_or_in_the_home_directory) {
  const ScopedEnvironment home("HOME", "/home/ann");
  const ScopedEnvironment config("XDG_CONFIG_HOME", "/config");
  EXPECT_EQ(configDirectory(), "/config");
  const ScopedEnvironment unusable("XDG_CONFIG_HOME", "relative/path");
  EXPECT_EQ(configDirectory(), "/home/ann/.config");
}

TEST(RuntimeDirectory, is_in_the_sessions_directory_if_nobody_else_may_enter) {
  const TemporaryDirectory temporary;
  const ScopedEnvironment runtime("XDG_RUNTIME_DIR", temporary.path().c_str());
  EXPECT_EQ(runtimeDirectory(), temporary.path() / "quillmar");
  ASSERT_EQ(chmod(temporary.path().c_str(), 0750), 0);
  EXPECT_EQ(runtimeDirectory(), std::nullopt);
}

TEST(RuntimeDirectory, is_absent_without_a_usable_session) {
  for (const char* value :
       {static_cast<const char*>(nullptr), "", "relative/path", "/dev/null", "/nowhere/at/all"}) {
    const ScopedEnvironment runtime("XDG_RUNTIME_DIR", value);
    EXPECT_EQ(runtimeDirectory(), std::nullopt);
  }
}

}  // namespace
}  // namespace quillmar
