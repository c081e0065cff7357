#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "platform/linux/data_directory.h"
#include "programs/agent/options.h"

namespace quillmar::agent {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(AgentOptions, have_defaults) {
  const auto parsed = parse({"run"});
  ASSERT_TRUE(parsed.options);
  EXPECT_EQ(parsed.options->command, Command::run);
  EXPECT_EQ(parsed.options->dataDirectory, dataDirectory());
  EXPECT_EQ(parsed.options->service, std::nullopt);
  EXPECT_FALSE(parsed.options->simulatesTunnel);
  EXPECT_FALSE(parsed.options->tellsEverything);
}

TEST(AgentOptions, may_stand_before_and_after_the_command) {
  for (const auto& words :
       {std::vector<std::string>{"--data-dir", "/d", "--service=https://s", "status", "--json"},
        std::vector<std::string>{"status", "--json", "--service", "https://s", "--data-dir=/d"}}) {
    const auto parsed = parse(words);
    ASSERT_TRUE(parsed.options);
    EXPECT_EQ(parsed.options->command, Command::status);
    EXPECT_EQ(parsed.options->dataDirectory, "/d");
    EXPECT_EQ(parsed.options->service, "https://s");
    EXPECT_TRUE(parsed.options->writesJson);
  }
}

TEST(AgentOptions, have_a_help_text) {
  const auto parsed = parse({"--help"});
  EXPECT_FALSE(parsed.options);
  EXPECT_EQ(parsed.status, ExitStatus::done);
  EXPECT_THAT(parsed.text, StartsWith("Usage: quillmar-agent"));
  for (const auto* command : {"enroll", "run", "status", "sync", "reset", "doctor"}) {
    EXPECT_THAT(parsed.text, HasSubstr(std::string("\n  ") + command));
    EXPECT_THAT(parse({command, "--help"}).text, StartsWith(std::string("Usage: quillmar-agent ") + command));
    EXPECT_THAT(parse({"--help", command}).text, StartsWith(std::string("Usage: quillmar-agent ") + command));
  }
}

TEST(AgentOptions, have_a_help_text_of_ascii_in_eighty_columns) {
  for (const auto& words : {std::vector<std::string>{"--help"},
                            {"enroll", "--help"},
                            {"run", "--help"},
                            {"status", "--help"},
                            {"sync", "--help"},
                            {"reset", "--help"},
                            {"doctor", "--help"}}) {
    std::istringstream text(parse(words).text);
    for (std::string line; std::getline(text, line);) {
      EXPECT_LE(line.size(), 80U) << line;
      EXPECT_TRUE(std::ranges::all_of(line, [](char c) { return c >= ' ' && c <= '~'; })) << line;
    }
  }
}

TEST(AgentOptions, document_every_exit_status_as_the_manual_does) {
  std::ifstream file(QUILLMAR_MANUAL);
  const std::string manual{std::istreambuf_iterator<char>(file), {}};
  const std::string section = manual.substr(manual.find(".Sh EXIT STATUS"));
  const std::string help = parse({"--help"}).text;
  for (const auto status : {ExitStatus::done, ExitStatus::failed, ExitStatus::usage, ExitStatus::notEnrolled,
                            ExitStatus::parentsDevice, ExitStatus::busy, ExitStatus::notProtected,
                            ExitStatus::noAuthorities, ExitStatus::cancelled}) {
    const auto number = std::to_string(static_cast<int>(status));
    EXPECT_THAT(section, HasSubstr("\n.It " + number + '\n'));
    EXPECT_THAT(help.substr(help.find("Exit status:")), testing::ContainsRegex("[ \n]" + number + " "));
  }
}

TEST(AgentOptions, are_refused_if_unknown) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> rows = {
      {{}, "a command is missing."},
      {{"dance"}, "there is no command 'dance'."},
      {{"run", "status"}, "there is no command 'status'."},
      {{"--dance", "run"}, "there is no option '--dance'."},
      {{"run", "--data-dir"}, "the option '--data-dir' needs a value."},
      {{"run", "--json"}, "the option '--json' belongs to 'status'."},
      {{"sync", "--yes"}, "the option '--yes' belongs to 'reset'."},
      {{"enroll", "--autostart", "--service", "https://s"},
       "'--autostart' starts the agent without any options"},
      {{"enroll", "--autostart", "--simulate-tunnel"}, "'--autostart' starts the agent without any options"},
  };
  for (const auto& [words, problem] : rows) {
    const auto parsed = parse(words);
    EXPECT_FALSE(parsed.options);
    EXPECT_EQ(parsed.status, ExitStatus::usage);
    EXPECT_THAT(parsed.text, StartsWith(problem));
  }
}

}  // namespace
}  // namespace quillmar::agent
