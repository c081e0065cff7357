#include "platform/common/state_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "testing/temporary_directory.h"

namespace quillmar {
namespace {

namespace fs = std::filesystem;

struct StateFileTest : testing::Test {
  TemporaryDirectory folder;
  const fs::path path = folder.path() / "state" / "window.state";
  const StateFile file{path};

  void put(const std::string& content) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
  }
  std::string content() const {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  std::size_t filesInTheFolder() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(path.parent_path()), {}));
  }
};

TEST_F(StateFileTest, keeps_rows) {
  EXPECT_EQ(file.value("window.width"), std::nullopt);
  EXPECT_TRUE(file.write({{"window.width", "460"}, {"window.place", "größer = größer"}}));
  EXPECT_EQ(StateFile(path).value("window.width"), "460");
  EXPECT_EQ(file.value("window.place"), "größer = größer");
  EXPECT_EQ(file.value("window"), std::nullopt);
}

TEST_F(StateFileTest, replaces_rows_and_keeps_those_of_others) {
  file.write({{"window.width", "460"}, {"notifications", "off"}});
  file.write({{"window.width", "500"}});
  EXPECT_EQ(file.value("window.width"), "500");
  EXPECT_EQ(file.value("notifications"), "off");
  EXPECT_EQ(content(), "notifications=off\nwindow.width=500\n");
}

TEST_F(StateFileTest, is_for_this_user_only) {
  file.write({{"window.width", "460"}});
  EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(fs::status(path.parent_path()).permissions(), fs::perms::owner_all);
  EXPECT_EQ(filesInTheFolder(), 1U);
}

TEST_F(StateFileTest, skips_what_is_no_row) {
  put("rubbish\n=5\nWindow=1\n\x01\x02=3\nwindow.width=4\x1B[2J\nwindow.height=860\nwindow.x=1");
  EXPECT_EQ(file.value("window.width"), std::nullopt);
  EXPECT_EQ(file.value("Window"), std::nullopt);
  EXPECT_EQ(file.value(""), std::nullopt);
  EXPECT_EQ(file.value("window.height"), "860");
  EXPECT_EQ(file.value("window.x"), "1");
}

TEST_F(StateFileTest, reads_any_bytes_and_not_without_end) {
  std::string noise;
  for (int i = 0; i < 300000; ++i) {
    noise.push_back(static_cast<char>(i * 31 % 256));
  }
  put("window.x=1\n" + noise + "\nwindow.y=2\n");
  EXPECT_EQ(file.value("window.x"), "1");
  EXPECT_EQ(file.value("window.y"), std::nullopt) << "it lies behind the longest file that is read";
  EXPECT_TRUE(file.write({{"window.y", "3"}}));
  EXPECT_LE(content().size(), StateFile::longest + 20);
  EXPECT_EQ(file.value("window.x"), "1");
}

TEST_F(StateFileTest, does_not_wait_for_a_pipe) {
  fs::create_directories(path.parent_path());
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(file.value("window.width"), std::nullopt);
}

TEST_F(StateFileTest, reads_no_folder) {
  fs::create_directories(path);
  EXPECT_EQ(file.value("window.width"), std::nullopt);
  EXPECT_FALSE(file.write({{"window.width", "460"}}));
  EXPECT_EQ(filesInTheFolder(), 1U) << "the unfinished file was left behind";
}

TEST_F(StateFileTest, refuses_a_row_that_would_be_two) {
  file.write({{"window.width", "460"}});
  EXPECT_FALSE(file.write({{"window.width", "1\nnotifications=off"}}));
  EXPECT_FALSE(file.write({{"a=b", "1"}}));
  EXPECT_FALSE(file.write({{"", "1"}}));
  EXPECT_EQ(content(), "window.width=460\n");
}

// Not even root can create a folder in /proc, or a file below a file.
TEST_F(StateFileTest, says_that_it_can_not_be_written) {
  EXPECT_FALSE(StateFile("/proc/quillmar/window.state").write({{"window.width", "460"}}));
  put("window.width=460\n");
  EXPECT_FALSE(StateFile(path / "window.state").write({{"window.width", "500"}}));
  EXPECT_EQ(file.value("window.width"), "460");
}

}  // namespace
}  // namespace quillmar
