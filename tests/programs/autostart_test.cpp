#include "platform/linux/autostart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "testing/scoped_environment.h"
#include "testing/temporary_directory.h"

namespace quillmar::control {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

// A user's session in which the test provides the programs.
struct Autostart : testing::Test {
  Autostart() { fs::permissions(place.path(), fs::perms::owner_all); }

  void install(const std::string& program, const std::string& script) const {
    const fs::path file = place.path() / program;
    std::ofstream(file) << "#!/bin/sh\n" << script << '\n';
    fs::permissions(file, fs::perms::owner_all);
  }
  void runSystemd(int exitStatus) const {
    fs::create_directories(place.path() / "systemd");
    std::ofstream(place.path() / "systemd" / "private");
    install("systemctl",
            "echo \"$@\" >> " + (place.path() / "calls").string() + "\nexit " + std::to_string(exitStatus));
  }
  static std::string contents(const fs::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  const TemporaryDirectory place;
  const fs::path entry = place.path() / "autostart" / "quillmar-agent.desktop";
  const ScopedEnvironment runtime{"XDG_RUNTIME_DIR", place.path().c_str()};
  const ScopedEnvironment config{"XDG_CONFIG_HOME", place.path().c_str()};
  const ScopedEnvironment path{"PATH", place.path().c_str()};
};

TEST_F(Autostart, is_a_systemd_unit_if_systemd_manages_the_session) {
  runSystemd(0);
  EXPECT_EQ(enableAutostart(), std::nullopt);
  EXPECT_EQ(contents(place.path() / "calls"), "--user enable --now quillmar-agent.service\n");
  EXPECT_FALSE(fs::exists(entry));
  EXPECT_EQ(disableAutostart(), std::nullopt);
  EXPECT_THAT(contents(place.path() / "calls"), HasSubstr("--user disable quillmar-agent.service\n"));
}

TEST_F(Autostart, reports_that_systemd_refused) {
  runSystemd(1);
  EXPECT_THAT(enableAutostart().value_or(""), HasSubstr("systemd could not enable"));
  EXPECT_THAT(disableAutostart().value_or(""), HasSubstr("systemd could not disable"));
}

TEST_F(Autostart, is_a_desktop_entry_without_systemd_and_starts_at_once) {
  ASSERT_EQ(::mkfifo((place.path() / "started").c_str(), 0600), 0);
  install("quillmar-agent", "echo \"$@\" > " + (place.path() / "started").string());
  EXPECT_EQ(enableAutostart(), std::nullopt);
  EXPECT_EQ(contents(place.path() / "started"), "run\n");
  EXPECT_THAT(contents(entry), HasSubstr("\nExec=quillmar-agent run\n"));
  EXPECT_THAT(contents(entry), HasSubstr("\nTryExec=quillmar-agent\n")) << "nothing where it was removed";
  EXPECT_EQ(disableAutostart(), std::nullopt);
  EXPECT_FALSE(fs::exists(entry));
  EXPECT_EQ(disableAutostart(), std::nullopt);
}

TEST_F(Autostart, reports_that_the_agent_is_not_installed) {
  EXPECT_EQ(enableAutostart(), "quillmar-agent could not be started.");
}

TEST_F(Autostart, reports_an_entry_that_can_not_be_written) {
  std::ofstream(place.path() / "autostart") << "a file in the way";
  EXPECT_THAT(enableAutostart().value_or(""), HasSubstr("could not be written"));
}

}  // namespace
}  // namespace quillmar::control
