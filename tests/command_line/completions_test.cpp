#include "command_line/completions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "testing/temporary_directory.h"
#include "tests/sandbox/support/run_command.h"

namespace quillmar::command_line {
namespace {

using sandbox::test::runCommand;
using testing::UnorderedElementsAre;
using Words = std::vector<std::string>;

// A program, and a folder that holds its completions and files to complete.
struct Completions : testing::Test {
  Completions() {
    std::filesystem::create_directory(folder());
    std::ofstream(home.path() / "food");
  }
  std::string folder() const { return home.path() / "folder"; }

  std::string written(const std::string& text) const {
    const auto file = home.path() / "completion";
    std::ofstream(file) << text;
    return file;
  }
  static Words lines(const std::string& text) {
    std::istringstream stream(text);
    Words all;
    for (std::string line; std::getline(stream, line);) {
      all.push_back(line);
    }
    return all;
  }
  // What bash offers for the last of these words.
  Words bash(const Words& words) const {
    constexpr auto ask = R"(source "$0"; COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)); _bake_cake
                            [ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\n' "${COMPREPLY[@]}")";
    Words command{"bash", "--norc", "-c", ask, written(bashCompletion(program)), "bake-cake"};
    command.insert(command.end(), words.begin(), words.end());
    const auto result = runCommand(command);
    EXPECT_EQ(result.errors, "");
    return lines(result.output);
  }
  // What fish offers for a line, each with its description.
  Words fish(const std::string& line) const {
    const auto result =
        runCommand({"env", "HOME=" + home.path().string(), "fish", "--no-config", "-c",
                    "source " + written(fishCompletion(program)) + "; complete -C '" + line + "'"});
    EXPECT_EQ(result.errors, "");
    return lines(result.output);
  }
  static bool isThere(const std::string& shell) {
    return runCommand({"sh", "-c", "command -v " + shell}).status == 0;
  }

  const TemporaryDirectory home;
  bool flag = false;
  const Program program{
      .name = "bake-cake",
      .about = "Bakes.",
      .version = "1",
      .versionLetter = "-v",
      .commands = {{.name = "mix", .help = "Stir: don't shake"}, {.name = "bake", .help = "Heat"}},
      .options = {{"--tray", "DIR", "Where to bake. Mind the heat", {}},
                  {"--recipe", "FILE", "What to bake", {}},
                  {"--heat", "DEGREES", "How hot", {}},
                  {"--quietly", "", "Don't tell", to(flag)},
                  {"--lid", "", "With a lid", to(flag), "bake"}}};
};

TEST_F(Completions, bash_offers_commands_and_options) {
  EXPECT_THAT(bash({""}), UnorderedElementsAre("mix", "bake", "--tray", "--recipe", "--heat", "--quietly",
                                               "--help", "--version"));
  EXPECT_THAT(bash({"--q"}), UnorderedElementsAre("--quietly"));
  EXPECT_THAT(bash({"--x"}), UnorderedElementsAre());
}

TEST_F(Completions, bash_offers_the_options_of_the_current_command) {
  EXPECT_THAT(bash({"bake", "--l"}), UnorderedElementsAre("--lid"));
  EXPECT_THAT(bash({"mix", "--l"}), UnorderedElementsAre());
  EXPECT_THAT(bash({"bake", "m"}), UnorderedElementsAre()) << "one command is enough";
  EXPECT_THAT(bash({"--heat", "bake", "m"}), UnorderedElementsAre("mix")) << "that was a value";
  EXPECT_THAT(bash({"--quietly", "bake", "--l"}), UnorderedElementsAre("--lid"));
}

TEST_F(Completions, bash_offers_folders_and_files_as_values) {
  const std::string start = home.path() / "fo";
  EXPECT_THAT(bash({"--tray", start}), UnorderedElementsAre(folder()));
  EXPECT_THAT(bash({"bake", "--recipe", start}), UnorderedElementsAre(folder(), home.path() / "food"));
  EXPECT_THAT(bash({"--heat", start}), UnorderedElementsAre());
  EXPECT_THAT(bash({"--heat", ""}), UnorderedElementsAre());
}

TEST_F(Completions, fish_offers_commands_and_options_with_descriptions) {
  if (!isThere("fish")) {
    GTEST_SKIP() << "fish is not installed";
  }
  EXPECT_THAT(fish("bake-cake "), UnorderedElementsAre("mix\tStir", "bake\tHeat"));
  EXPECT_THAT(
      fish("bake-cake --"),
      UnorderedElementsAre("--tray\tWhere to bake", "--recipe\tWhat to bake", "--heat\tHow hot",
                           "--quietly\tDon't tell", "--help\tShow this help", "--version\tShow the version"));
  EXPECT_THAT(fish("bake-cake bake --l"), UnorderedElementsAre("--lid\tWith a lid"));
  EXPECT_THAT(fish("bake-cake mix --l"), UnorderedElementsAre());
  EXPECT_THAT(fish("bake-cake --tray " + home.path().string() + "/f"),
              UnorderedElementsAre(folder() + "/\tDirectory"));
}

// zsh completes in its line editor only, so this checks the script itself.
TEST_F(Completions, the_zsh_script_is_valid_and_complete) {
  const auto text = zshCompletion(program);
  for (const auto* part : {"#compdef bake-cake\n", "'--tray[Where to bake]:DIR:_files -/'\n",
                           "'--recipe[What to bake]:FILE:_files'\n", "'--heat[How hot]:DEGREES:'\n",
                           "'--quietly[Don'\\''t tell]'\n", "{-h,--help}'[Show this help]'\n", "'mix:Stir'\n",
                           "bake) own=(\n        '--lid[With a lid]'\n      ) ;;\n"}) {
    EXPECT_THAT(text, testing::HasSubstr(part));
  }
  if (!isThere("zsh")) {
    GTEST_SKIP() << "zsh is not installed";
  }
  const auto result = runCommand({"zsh", "-n", written(text)});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
}

}  // namespace
}  // namespace quillmar::command_line
