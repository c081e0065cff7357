#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <sstream>

#include "tests/sandbox/support/household.h"
#include "tests/sandbox/support/run_command.h"
#include "tests/tunnel/support/messages.h"
#include "tests/tunnel/support/running_server.h"
#include "tunnel/options.h"

namespace quillmar::tunnel {
namespace {

using sandbox::test::runCommand;
using sandbox::test::RunningProgram;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Words = std::vector<std::string>;

TEST(TunnelOptions, have_defaults) {
  const auto parsed = parse({"serve", "--endpoint", "https://doh.example/q"});
  ASSERT_TRUE(parsed.options);
  EXPECT_EQ(parsed.options->endpoint.host, "doh.example");
  EXPECT_EQ(parsed.options->listen.port(), 53);
  EXPECT_TRUE(parsed.options->listen.address().is_loopback());
  EXPECT_EQ(parsed.options->caFile, "");
}

TEST(TunnelOptions, may_have_their_value_after_a_blank_or_an_equals_sign) {
  for (const auto& words :
       {Words{"--endpoint=https://a/b", "serve", "--listen=[::1]:5", "--ca-file=/c"},
        Words{"serve", "--endpoint", "https://a/b", "--listen", "[::1]:5", "--ca-file", "/c"}}) {
    const auto parsed = parse(words);
    ASSERT_TRUE(parsed.options);
    EXPECT_EQ(parsed.options->endpoint.path, "/b");
    EXPECT_EQ(parsed.options->listen.port(), 5);
    EXPECT_EQ(parsed.options->caFile, "/c");
  }
}

TEST(TunnelOptions, of_run_and_release_are_few) {
  EXPECT_EQ(parse({"run"}).options->command, Command::run);
  EXPECT_EQ(parse({"run", "--ca-file", "/c"}).options->caFile, "/c");
  EXPECT_EQ(parse({"release"}).options->command, Command::release);
}

TEST(TunnelOptions, that_are_wrong_are_named) {
  const std::vector<std::pair<Words, std::string>> cases{
      {{}, "a command is missing."},
      {{"dance"}, "there is no command 'dance'."},
      {{"worker"}, "there is no command 'worker'."},
      {{"serve"}, "the option '--endpoint' is missing."},
      {{"serve", "--fast"}, "there is no option '--fast'."},
      {{"serve", "--endpoint"}, "the option '--endpoint' needs a value."},
      {{"serve", "--endpoint", ""}, "the option '--endpoint' can't be ''."},
      {{"serve", "--endpoint", "http://a/"}, "the option '--endpoint' can't be 'http://a/'."},
      {{"serve", "--endpoint", "https:///"}, "the option '--endpoint' can't be 'https:///'."},
      {{"serve", "--endpoint", "https://a/", "--listen", "x"}, "the option '--listen' can't be 'x'."},
      {{"serve", "run"}, "there is no command 'run'."},
      {{"run", "--endpoint", "https://a/"}, "the option '--endpoint' belongs to 'serve'."},
      {{"run", "--listen", "127.0.0.1"}, "the option '--listen' belongs to 'serve'."}};
  for (const auto& [words, text] : cases) {
    const auto parsed = parse(words);
    EXPECT_FALSE(parsed.options);
    EXPECT_EQ(parsed.text, text + "\nTry 'quillmar-tunnel --help'.");
    EXPECT_EQ(parsed.status, ExitStatus::usage);
  }
}

TEST(TunnelOptions, have_a_help_of_eighty_columns_of_ascii) {
  const std::vector<std::pair<Words, std::vector<std::string>>> cases{
      {{"--help"},
       {"Usage: quillmar-tunnel [OPTION]... COMMAND", "  run ", "  release ", "  serve ", "--ca-file FILE",
        "--version"}},
      {{"run", "--help"}, {"Usage: quillmar-tunnel run", "Needs root."}},
      {{"release", "--help"}, {"Usage: quillmar-tunnel release"}},
      {{"serve", "--help"},
       {"Usage: quillmar-tunnel serve --endpoint URL [--listen ADDRESS]", "--endpoint URL",
        "--listen ADDRESS", "the system's own resolver"}}};
  for (const auto& [words, said] : cases) {
    const auto parsed = parse(words);
    EXPECT_FALSE(parsed.options);
    EXPECT_EQ(parsed.status, ExitStatus::done);
    for (const auto& text : said) {
      EXPECT_THAT(parsed.text, HasSubstr(text));
    }
    std::istringstream text(parsed.text);
    for (std::string line; std::getline(text, line);) {
      EXPECT_LE(line.size(), 80U) << line;
      EXPECT_TRUE(std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; })) << line;
    }
  }
}

// The running program with the stand-in service as its endpoint, over verified TLS.
class TunnelProgram : public sandbox::test::ServiceTest {
 protected:
  TunnelProgram() {
    givenDevice(token, child);
    endpoint = given("GET", "/children/" + child, token).at("devices")[0].at("doh_endpoint");
  }
  void start(const std::string& url) {
    program =
        std::make_unique<RunningProgram>(Words{QUILLMAR_TUNNEL, "serve", "--endpoint", url, "--listen",
                                               "127.0.0.1:0", "--ca-file", service().caFile().string()});
    said = program->readLine();
    const auto start = said.find(':') + 1;
    port = said.substr(start, said.find(',') - start);
  }
  std::string kdig(const Words& more) const {
    Words words{"kdig", "@127.0.0.1", "-p", port, "+retry=0"};
    words.insert(words.end(), more.begin(), more.end());
    return runCommand(words).output;
  }

  const std::string token = givenAccount("ann@example.com");
  const std::string child = givenChild(token);
  std::string endpoint;
  std::unique_ptr<RunningProgram> program;
  std::string said;
  std::string port;
};

TEST_F(TunnelProgram, carries_a_devices_dns_to_the_service) {
  ASSERT_THAT(endpoint, StartsWith("https://"));
  start(endpoint);
  EXPECT_THAT(said, StartsWith("Answers at 127.0.0.1:"));
  EXPECT_THAT(kdig({"www.site.example"}), HasSubstr("status: NOERROR"));
  EXPECT_THAT(kdig({"+tcp", "AAAA", "www.site.example"}), HasSubstr("2001:db8::"));
  given("POST", "/children/" + child + "/policy/block", token, {{"domain", "ads.example"}});
  EXPECT_THAT(kdig({"pixel.ads.example"}), HasSubstr("status: NXDOMAIN"));
}

TEST_F(TunnelProgram, does_not_log_the_endpoints_path) {
  start(endpoint);
  service().misbehave({.failEverything = true});
  kdig({"www.site.example"});
  const auto lines = said + program->readUntil("The endpoint answered with an HTTP error: status 500.");
  const auto secret = endpoint.substr(endpoint.rfind('/') + 1);
  ASSERT_GT(secret.size(), 8U);
  EXPECT_THAT(lines, Not(HasSubstr(secret)));
  EXPECT_THAT(lines, HasSubstr("asks 127.0.0.1:"));
}

// Not with kdig: a child process would inherit the connections that this process closes.
TEST_F(TunnelProgram, copes_with_a_service_that_misbehaves) {
  start(endpoint);
  const auto ask = [this](const std::string& name) {
    return test::askServer(std::stoi(port), test::queryText({.name = name, .payload = 1232}));
  };
  const auto resolves = [&](const std::string& name) { return readHeader(ask(name))->answers == 1; };
  service().misbehave({.errorCount = 1, .errorBody = sandbox::ErrorBody::html});
  EXPECT_THAT(ask("a.example"), HasSubstr("status 500"));
  EXPECT_TRUE(resolves("b.example"));
  service().misbehave({.dropCount = 1, .drop = sandbox::Drop::beforeAnswer});
  EXPECT_TRUE(resolves("c.example")) << "asked again";
  service().misbehave({.dropCount = 1, .drop = sandbox::Drop::inBody});
  EXPECT_TRUE(resolves("d.example"));
  service().misbehave({.bodyTime = std::chrono::milliseconds(50)});
  EXPECT_TRUE(resolves("e.example"));
}

TEST_F(TunnelProgram, ends_with_success_on_sigint_and_sigterm) {
  for (const int signal : {SIGINT, SIGTERM}) {
    start(endpoint);
    kdig({"www.site.example"});
    EXPECT_EQ(program->end(signal), 0);
  }
}

TEST_F(TunnelProgram, says_that_the_endpoints_address_is_not_found) {
  // A resolver rejects a label of 64 characters without a query.
  start("https://" + std::string(64, 'x') + ".example/dns-query");
  EXPECT_THAT(kdig({"+edns", "www.site.example"}),
              AllOf(HasSubstr("status: SERVFAIL"), HasSubstr("The endpoint's address can't be found: ")));
  EXPECT_EQ(program->end(SIGTERM), 0);
}

TEST_F(TunnelProgram, says_that_its_answer_can_not_be_written) {
  for (const std::string words : {"--help >/dev/full", "--version >&-", "serve --help >&-"}) {
    const auto result = runCommand({"sh", "-c", "exec " QUILLMAR_TUNNEL " " + words});
    EXPECT_EQ(result.status, 1) << words;
    EXPECT_THAT(result.errors, StartsWith("quillmar-tunnel: The output can't be written: ")) << words;
  }
}

TEST_F(TunnelProgram, says_why_it_does_not_start) {
  const auto run = [](const Words& more) {
    Words words{QUILLMAR_TUNNEL};
    words.insert(words.end(), more.begin(), more.end());
    return runCommand(words);
  };
  const auto misused = run({"dance"});
  EXPECT_EQ(misused.status, 2);
  EXPECT_EQ(misused.output, "");
  EXPECT_EQ(misused.errors, "quillmar-tunnel: there is no command 'dance'.\nTry 'quillmar-tunnel --help'.\n");

  start(endpoint);
  const auto taken = run({"serve", "--endpoint", endpoint, "--listen", "127.0.0.1:" + port});
  EXPECT_EQ(taken.status, 1);
  EXPECT_EQ(taken.errors,
            "quillmar-tunnel: 127.0.0.1:" + port + " can't be listened on: Address already in use.\n");

  for (const auto* file : {"/nowhere/ca.pem", "/dev/null"}) {
    const auto noFile = run({"serve", "--endpoint", endpoint, "--listen", "127.0.0.1:0", "--ca-file", file});
    EXPECT_EQ(noFile.status, 1);
    EXPECT_THAT(noFile.errors,
                HasSubstr("certificate authorities in '" + std::string(file) + "' can't be read"));
  }
  EXPECT_THAT(run({"--help"}).output, StartsWith("Usage: quillmar-tunnel"));
  EXPECT_THAT(run({"--version"}).output, testing::MatchesRegex("quillmar-tunnel [0-9.]+\n"));
}

}  // namespace
}  // namespace quillmar::tunnel
