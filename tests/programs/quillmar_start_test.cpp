#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/programs/program_session.h"
#include "tests/sandbox/support/run_command.h"

namespace quillmar {
namespace {

using sandbox::test::CommandResult;
using sandbox::test::runCommand;
using test::operator+;
using test::Words;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// The program without a display, as in a remote shell.
struct QuillmarWithoutDisplay : testing::Test {
  CommandResult run(const Words& words, const Words& variables = {}) const {
    return runCommand(session.running(Words{QUILLMAR_PROGRAM} + words, variables));
  }
  void expectOneSentence(const CommandResult& result, const std::string& reason) const {
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "quillmar: No window can be shown here: " + reason +
                                 "; quillmar-agent protects a child's device without one.\n");
    EXPECT_FALSE(std::filesystem::exists(data)) << "nothing was begun";
  }

  const test::ProgramSession session;
  const std::filesystem::path data = session.home() / "data";
};

TEST_F(QuillmarWithoutDisplay, prints_its_help) {
  for (const auto* word : {"--help", "-h", "--help-all"}) {
    const auto result = run({word});
    EXPECT_EQ(result.status, 0) << word;
    EXPECT_THAT(result.output, StartsWith("Usage: quillmar [OPTION]... [doctor]\n"));
    EXPECT_THAT(result.output, HasSubstr("\n  --data-dir DIR "));
    EXPECT_EQ(result.errors, "");
  }
  EXPECT_THAT(run({"--help-all"}).output, HasSubstr("\n  -platform NAME "));
}

TEST_F(QuillmarWithoutDisplay, prints_its_version) {
  for (const auto* word : {"--version", "-v"}) {
    const auto result = run({word});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, testing::MatchesRegex("quillmar [0-9.]+\n"));
    EXPECT_EQ(result.errors, "");
  }
}

TEST_F(QuillmarWithoutDisplay, reports_wrong_options) {
  for (const auto& [words, status, problem] : std::vector<std::tuple<Words, int, std::string>>{
           {{"--dance"}, 1, "there is no option '--dance'."},
           {{"--data-dir"}, 1, "the option '--data-dir' needs a value."},
           {{"--sandbox=3"}, 1, "the option '--sandbox' takes no value."},
           {{"dance"}, 2, "there is no command 'dance'."},
           {{"-platform", "offscreen", "--dance"}, 1, "there is no option '--dance'."},
       }) {
    const auto result = run(words);
    EXPECT_EQ(result.status, status) << words.back();
    EXPECT_EQ(result.errors, "quillmar: " + problem + "\nTry 'quillmar --help'.\n");
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(QuillmarWithoutDisplay, reports_that_in_one_sentence) {
  expectOneSentence(run({"--data-dir", data.string()}), "there is no display");
}

TEST_F(QuillmarWithoutDisplay, reports_that_without_a_runtime_directory_too) {
  expectOneSentence(run({"--data-dir", data.string()}, {"XDG_RUNTIME_DIR="}), "there is no display");
}

// As root often is.
TEST_F(QuillmarWithoutDisplay, needs_no_runtime_directory_and_leaves_none) {
  const std::filesystem::path temporary = session.home() / "tmp";
  std::filesystem::create_directory(temporary);
  const Words untilItSpeaks{"bash", "-c",
                            R"(coproc "$@"; read -r line <&"${COPROC[0]}"; kill "$COPROC_PID"; wait)", "sh"};
  for (const auto* platform : {"offscreen", "crayon"}) {
    const auto result = runCommand(session.running(
        untilItSpeaks + Words{QUILLMAR_PROGRAM, "--data-dir", data.string()},
        {"XDG_RUNTIME_DIR=", "TMPDIR=" + temporary.string(), std::string("QT_QPA_PLATFORM=") + platform}));
    EXPECT_THAT(result.errors, testing::Not(HasSubstr("QStandardPaths"))) << platform;
    EXPECT_EQ(std::filesystem::exists(data), platform == std::string("offscreen"));
    EXPECT_TRUE(std::filesystem::is_empty(temporary)) << platform;
    std::filesystem::remove_all(data);
  }
}

TEST_F(QuillmarWithoutDisplay, names_a_display_that_does_not_answer) {
  expectOneSentence(run({"--data-dir", data.string()}, {"DISPLAY=:987"}),
                    "could not connect to display :987");
}

TEST_F(QuillmarWithoutDisplay, names_a_platform_plugin_that_is_missing) {
  const auto result = run({"--data-dir", data.string()}, {"QT_QPA_PLATFORM=crayon"});
  expectOneSentence(result, R"(Could not find the Qt platform plugin "crayon" in "")");
}

}  // namespace
}  // namespace quillmar
