#include "command_line/command_line.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "command_line/standard_streams.h"

namespace quillmar::command_line {
namespace {

using Reason = Answer::Reason;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Words = std::vector<std::string>;

enum class Sauce { none, red };

// A program that uses every feature of the table.
struct Kitchen {
  Program program() {
    return {
        .name = "kitchen",
        .about = "Cooks.",
        .version = "3.1",
        .versionLetter = "-v",
        .commands = {{.name = "boil",
                      .help = "In water",
                      .details = "For as long as it takes.\n",
                      .choose = [this] { boils = true; }},
                     {.name = "fetch",
                      .help = "From the cellar",
                      .arguments = {{.name = "THING", .take = to(thing)}}}},
        .options =
            {
                {"--pot", "POT", "What to cook in", to(pot)},
                {"--recipe", "FILE", "What to cook", to(recipe)},
                {"--heat", "1..9", "How hot", within(heat, 1, 9)},
                {"--salt", "GRAMS", "How salty", within(salt, 0.5, 2.5)},
                {"--sauce", "none|red", "With what",
                 oneOf(sauce, {{"none", Sauce::none}, {"red", Sauce::red}})},
                {"--quietly", "", "Without a word", to(isQuiet)},
                {"--lid", "", "With the lid on", to(hasLid), "boil"},
            },
        .toolkitOptions = {{"-stove", "NAME", "Which stove"}, {"-lefty", "", "For the left hand"}},
        .notes = "Wash your hands.\n",
    };
  }
  std::optional<Answer> read(const Words& words) { return command_line::read(program(), words); }
  std::string problem(const Words& words, Reason reason) {
    const auto answer = read(words);
    EXPECT_TRUE(answer && answer->reason == reason) << testing::PrintToString(words);
    return answer ? answer->text.substr(0, answer->text.find('\n')) : "";
  }

  std::string pot;
  std::optional<std::filesystem::path> recipe;
  int heat = 5;
  std::optional<double> salt;
  Sauce sauce = Sauce::none;
  bool isQuiet = false;
  bool hasLid = false;
  bool boils = false;
  std::string thing;
};

TEST(CommandLine, no_words_change_nothing) {
  Kitchen kitchen;
  EXPECT_FALSE(kitchen.read({}));
  EXPECT_EQ(kitchen.pot, "");
  EXPECT_EQ(kitchen.recipe, std::nullopt);
  EXPECT_EQ(kitchen.heat, 5);
  EXPECT_FALSE(kitchen.isQuiet || kitchen.hasLid || kitchen.boils);
}

TEST(CommandLine, options_may_stand_before_and_after_a_command) {
  for (const Words& words :
       {Words{"--pot", "wok", "--heat=9", "--sauce", "red", "--salt", "1.5", "boil", "--lid", "--recipe=/r"},
        Words{"boil", "--recipe", "/r", "--lid", "--salt=1.5", "--heat", "9", "--pot=wok", "--sauce=red"}}) {
    Kitchen kitchen;
    EXPECT_FALSE(kitchen.read(words));
    EXPECT_EQ(kitchen.pot, "wok");
    EXPECT_EQ(kitchen.recipe, "/r");
    EXPECT_EQ(kitchen.heat, 9);
    EXPECT_EQ(kitchen.salt, 1.5);
    EXPECT_EQ(kitchen.sauce, Sauce::red);
    EXPECT_TRUE(kitchen.boils && kitchen.hasLid);
    EXPECT_FALSE(kitchen.isQuiet);
  }
}

TEST(CommandLine, a_value_may_be_any_text_and_the_last_one_counts) {
  Kitchen kitchen;
  EXPECT_FALSE(kitchen.read({"--pot", "--quietly", "--pot=a=b"}));
  EXPECT_EQ(kitchen.pot, "a=b");
  EXPECT_FALSE(kitchen.isQuiet);
  EXPECT_FALSE(kitchen.read({"--pot="}));
  EXPECT_EQ(kitchen.pot, "");
}

TEST(CommandLine, words_after_two_dashes_are_not_options) {
  Kitchen kitchen;
  EXPECT_FALSE(kitchen.read({"fetch", "--", "--quietly"}));
  EXPECT_EQ(kitchen.thing, "--quietly");
  EXPECT_FALSE(kitchen.isQuiet);
}

TEST(CommandLine, toolkit_options_are_skipped) {
  Kitchen kitchen;
  EXPECT_FALSE(kitchen.read({"-stove", "boil", "--lefty", "--stove", "--quietly", "-lefty"}));
  EXPECT_FALSE(kitchen.boils || kitchen.isQuiet);
  EXPECT_EQ(kitchen.problem({"-stove"}, Reason::wrongOption), "the option '-stove' needs a value.");
  EXPECT_EQ(kitchen.problem({"-stove=gas"}, Reason::wrongOption), "there is no option '-stove=gas'.");
}

TEST(CommandLine, unknown_and_misused_options_are_refused) {
  Kitchen kitchen;
  for (const auto& [words, problem] : std::vector<std::pair<Words, std::string>>{
           {{"--dance"}, "there is no option '--dance'."},
           {{"--dance=a"}, "there is no option '--dance=a'."},
           {{"-q"}, "there is no option '-q'."},
           {{"--po", "wok"}, "there is no option '--po'."},
           {{"boil", "--pot"}, "the option '--pot' needs a value."},
           {{"--quietly=yes"}, "the option '--quietly' takes no value."},
           {{"--heat", "10"}, "the option '--heat' can't be '10'."},
           {{"--heat=0"}, "the option '--heat' can't be '0'."},
           {{"--heat="}, "the option '--heat' can't be ''."},
           {{"--heat", "5x"}, "the option '--heat' can't be '5x'."},
           {{"--heat", "99999999999999999999"}, "the option '--heat' can't be '99999999999999999999'."},
           {{"--salt", "nan"}, "the option '--salt' can't be 'nan'."},
           {{"--sauce", "blue"}, "the option '--sauce' can't be 'blue'."},
           {{"--lid"}, "the option '--lid' belongs to 'boil'."},
           {{"fetch", "milk", "--lid"}, "the option '--lid' belongs to 'boil'."},
       }) {
    EXPECT_EQ(kitchen.problem(words, Reason::wrongOption), problem);
  }
}

TEST(CommandLine, unknown_and_missing_words_are_refused) {
  Kitchen kitchen;
  for (const auto& [words, problem] : std::vector<std::pair<Words, std::string>>{
           {{"dance"}, "there is no command 'dance'."},
           {{"-"}, "there is no command '-'."},
           {{"boil", "fetch"}, "there is no command 'fetch'."},
           {{"fetch"}, "THING is missing."},
           {{"fetch", "milk", "eggs"}, "'eggs' is one word too many."},
       }) {
    EXPECT_EQ(kitchen.problem(words, Reason::wrongWord), problem);
  }
  auto strict = kitchen.program();
  strict.needsCommand = true;
  EXPECT_THAT(read(strict, Words{"--quietly"})->text,
              StartsWith("a command is missing.\nTry 'kitchen --help'."));
}

TEST(CommandLine, required_options_and_arguments_must_be_given) {
  std::string from;
  std::string where;
  const Program program{
      .name = "copy",
      .about = "Copies.",
      .arguments = {{"WHERE", "The place", to(where)}},
      .options = {
          {.name = "--from", .value = "X", .help = "The source", .take = to(from), .isNeeded = true}}};
  EXPECT_THAT(read(program, Words{"there"})->text, StartsWith("the option '--from' is missing."));
  EXPECT_THAT(read(program, Words{"--from=here"})->text, StartsWith("WHERE is missing."));
  EXPECT_THAT(read(program, Words{"--from=here", "there", "now"})->text,
              StartsWith("'now' is one word too many."));
  EXPECT_FALSE(read(program, Words{"--from=here", "there"}));
  EXPECT_EQ(from + where, "herethere");
  EXPECT_EQ(read(program, Words{"--help"})->reason, Reason::asked) << "and nothing is missing for that";
  EXPECT_THAT(read(program, Words{"--version"})->text, StartsWith("there is no option '--version'."));
}

TEST(CommandLine, options_required_by_a_command_must_be_given_with_that_command_only) {
  std::string from;
  const Program program{.name = "copy",
                        .about = "Copies.",
                        .commands = {{"take", "Take something"}, {"look", "Look at it"}},
                        .options = {{.name = "--from",
                                     .value = "X",
                                     .help = "The source",
                                     .take = to(from),
                                     .command = "take",
                                     .isNeeded = true}}};
  EXPECT_THAT(read(program, Words{"take"})->text, StartsWith("the option '--from' is missing."));
  EXPECT_FALSE(read(program, Words{"take", "--from", "here"}));
  EXPECT_FALSE(read(program, Words{"look"}));
  EXPECT_THAT(help(program), HasSubstr("  take --from X  Take something\n"));
}

TEST(CommandLine, an_error_takes_precedence_over_help) {
  Kitchen kitchen;
  EXPECT_EQ(kitchen.problem({"--help", "--dance"}, Reason::wrongOption), "there is no option '--dance'.");
  EXPECT_EQ(kitchen.problem({"dance", "--version"}, Reason::wrongWord), "there is no command 'dance'.");
}

TEST(CommandLine, prints_its_version) {
  Kitchen kitchen;
  for (const auto* word : {"--version", "-v"}) {
    EXPECT_EQ(kitchen.read({word})->text, "kitchen 3.1\n");
  }
}

TEST(CommandLine, prints_its_help) {
  Kitchen kitchen;
  for (const auto* word : {"--help", "-h"}) {
    EXPECT_EQ(kitchen.read({word})->text, R"(Usage: kitchen [OPTION]... [boil|fetch THING]

Cooks.

Commands:
  boil [--lid]      In water
  fetch THING       From the cellar

Options:
  --pot POT         What to cook in
  --recipe FILE     What to cook
  --heat 1..9       How hot
  --salt GRAMS      How salty
  --sauce none|red  With what
  --quietly         Without a word
  -h, --help        Show this help
  --help-all        The options of the toolkit, too
  -v, --version     Show the version
  COMMAND --help    Show the help of a command

Wash your hands.
)");
  }
  EXPECT_THAT(kitchen.read({"--help-all"})->text,
              HasSubstr("\nOptions of the toolkit:\n  -stove NAME       Which stove\n"));
}

TEST(CommandLine, prints_the_help_of_a_command) {
  Kitchen kitchen;
  for (const Words& words : {Words{"boil", "--help"}, Words{"--help", "boil"}}) {
    EXPECT_EQ(kitchen.read(words)->text,
              "Usage: kitchen boil [--lid]\n\nFor as long as it takes.\n\n  --lid  With the lid on\n");
  }
  EXPECT_EQ(kitchen.read({"fetch", "--help"})->text, kitchen.read({"--help"})->text)
      << "there is no more to say";
}

TEST(CommandLine, lists_a_glossary_in_the_column_of_the_options) {
  bool isLoud = false;
  const Program program{.name = "sing",
                        .about = "Sings.",
                        .options = {{"--loud", "", "Sing loudly", to(isLoud)}},
                        .glossary = {"Songs", {{"carol LENGTH", "Sing a carol"}}}};
  EXPECT_THAT(help(program), HasSubstr("  --loud        Sing loudly\n"));
  EXPECT_THAT(help(program), HasSubstr("\nSongs:\n  carol LENGTH  Sing a carol\n"));
  EXPECT_EQ(read(program, Words{"carol"})->reason, Reason::wrongWord);
}

TEST(CommandLine, wraps_long_texts_at_words) {
  bool isSet = false;
  const std::string words =
      "one two three four five six seven eight nine ten eleven twelve thirteen fourteen fifteen";
  const std::string name = "--" + std::string(30, 'x');
  const Program program{.name = "long",
                        .about = words,
                        .options = {{"--a", "", words, to(isSet)}, {name, "", words, to(isSet)}}};
  const auto text = help(program);
  EXPECT_THAT(
      text,
      HasSubstr(
          "\none two three four five six seven eight nine ten eleven twelve thirteen fourteen\nfifteen\n"));
  EXPECT_THAT(text,
              HasSubstr("\n  --a         one two three four five six seven eight nine ten eleven twelve\n"
                        "              thirteen fourteen fifteen\n"));
  EXPECT_THAT(text, HasSubstr("\n  " + name + "\n              one two three"));
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 80U) << line;
    EXPECT_THAT(line, Not(testing::EndsWith(" ")));
  }
}

TEST(CommandLine, fails_if_its_answer_can_not_be_written) {
  const Program program{.name = "kitchen", .about = "Cooks."};
  const Answer help{.text = "Usage"};
  const auto saySomewhereFull = [&] {
    const auto full = ::open("/dev/full", O_WRONLY);
    ::dup2(full, STDOUT_FILENO);
    std::_Exit(say(program, help));
  };
  EXPECT_EXIT(saySomewhereFull(), testing::ExitedWithCode(1), "^kitchen: The output can't be written: ");
}

TEST(StandardStreams, that_are_closed_do_not_become_the_next_file) {
  const auto openWithoutStreams = [] {
    ::close(STDIN_FILENO);
    ::close(STDOUT_FILENO);
    holdStandardStreams();
    const bool isBeyond = ::open("/dev/zero", O_RDWR) > STDERR_FILENO;
    const bool isHeard = ::write(STDOUT_FILENO, "line", 4) > 0;
    std::_Exit(isBeyond && !isHeard ? 0 : 1);
  };
  EXPECT_EXIT(openWithoutStreams(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace quillmar::command_line
