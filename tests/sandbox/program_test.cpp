#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>
#include <thread>

#include "sandbox/json.h"
#include "testing/scoped_environment.h"
#include "testing/temporary_directory.h"
#include "tests/sandbox/support/raw_connection.h"
#include "tests/sandbox/support/run_command.h"

namespace quillmar::sandbox::test {
namespace {

const std::string program = QUILLMAR_SANDBOX_PROGRAM;

int portOf(const std::string& url) { return std::stoi(url.substr(url.rfind(':') + 1)); }

struct Addresses {
  std::string plain;
  std::string secure;
  std::string ca;

  int port() const { return portOf(plain); }
};

Addresses addressesIn(const std::string& line) {
  EXPECT_THAT(line, testing::MatchesRegex("quillmar-sandbox http://127\\.0\\.0\\.[12]:[0-9]+ "
                                          "https://127\\.0\\.0\\.[12]:[0-9]+ ca=/.+"));
  std::istringstream words(line);
  std::string name;
  Addresses addresses;
  words >> name >> addresses.plain >> addresses.secure;
  words.ignore(std::string_view(" ca=").size());
  std::getline(words, addresses.ca);
  return addresses;
}

std::vector<std::string> command(const std::vector<std::string>& more) {
  std::vector<std::string> words{program, "--port", "0", "--tls-port", "0"};
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

std::string post(const std::string& url, const std::string& body) {
  return runCommand({"curl", "--silent", "--max-time", "30", "--data-binary", "@-", url}, body).output;
}

Json login(const Addresses& service) {
  return Json::parse(
      post(service.plain + "/api/v1/auth/login", R"({"email":"ann@example.com","password":"quillmar-demo"})"),
      nullptr, false);
}

// Runs programs with a temporary folder that is deleted with the test, even if the program was killed.
struct Program : testing::Test {
  std::string place(const std::string& name) const { return directory.path() / name; }

  const TemporaryDirectory directory;
  const ScopedEnvironment temporary{"TMPDIR", directory.path().c_str()};
};

TEST_F(Program, keeps_what_it_makes_to_its_user_at_any_umask) {
  for (const auto* mask : {"000", "077"}) {
    const auto root = place(mask);
    std::vector<std::string> words{"sh", "-c", "umask " + std::string{mask} + "; exec \"$@\"", "-"};
    std::ranges::copy(command({"--data", root + "/data"}), std::back_inserter(words));
    RunningProgram running{words};
    EXPECT_NE(running.readLine(), "");
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
      using std::filesystem::perms;
      EXPECT_EQ(entry.status().permissions(),
                entry.is_directory() ? perms::owner_all : perms::owner_read | perms::owner_write)
          << entry.path() << " at " << mask;
      names.insert(entry.path().filename());
    }
    EXPECT_THAT(names, testing::IsSupersetOf({"server.key", "sandbox.sqlite", "sandbox.sqlite-wal"}));
    EXPECT_EQ(running.end(SIGTERM), 0);
  }
}

TEST_F(Program, says_first_where_it_is_and_ends_cleanly_on_a_signal) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    RunningProgram running{command({"--memory"})};
    const auto service = addressesIn(running.readLine());
    EXPECT_NE(service.plain, service.secure);
    EXPECT_TRUE(std::filesystem::exists(service.ca));
    EXPECT_THAT(post(service.plain + "/api/v1/device/checkin", "{}"), testing::HasSubstr("error"));
    EXPECT_EQ(running.end(signal), 0);
    EXPECT_FALSE(std::filesystem::exists(service.ca)) << "in memory nothing stays";
  }
}

TEST_F(Program, several_run_beside_one_another) {
  RunningProgram first{command({})};
  RunningProgram second{command({})};
  EXPECT_NE(addressesIn(first.readLine()).plain, addressesIn(second.readLine()).plain);
}

TEST_F(Program, says_what_is_wrong_with_its_options) {
  for (const auto& [words, problem] : std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{"--port"}, "the option '--port' needs a value."},
           {{"--port", "x"}, "the option '--port' can't be 'x'."},
           {{"--port", "70000"}, "the option '--port' can't be '70000'."},
           {{"--listen", "example.org"}, "the option '--listen' can't be 'example.org'."},
           {{"--tls-port", "-1"}, "the option '--tls-port' can't be '-1'."},
           {{"--seed", "much"}, "the option '--seed' can't be 'much'."},
           {{"--sead", "demo"}, "there is no option '--sead'."},
           {{"--memory", "--data", "/tmp/x"}, "'--data' and '--memory' exclude each other."},
           {{"approve"}, "CODE is missing."},
           {{"approve", "A", "B"}, "'B' is one word too many."},
           {{"dance"}, "there is no command 'dance'."}}) {
    std::vector<std::string> whole{program};
    whole.insert(whole.end(), words.begin(), words.end());
    const auto result = runCommand(whole);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(words);
    EXPECT_EQ(result.errors, "quillmar-sandbox: " + problem + "\nTry 'quillmar-sandbox --help'.\n");
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(Program, explains_itself) {
  const auto result = runCommand({program, "--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, testing::StartsWith("Usage: quillmar-sandbox [OPTION]... [approve CODE]\n"));
  EXPECT_EQ(result.errors, "");
}

TEST_F(Program, says_which_port_is_taken) {
  RunningProgram running{command({})};
  const auto port = std::to_string(addressesIn(running.readLine()).port());
  const auto result = runCommand({program, "--port", port, "--tls-port", "0"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, testing::HasSubstr("Port " + port + " can't be used"));
}

// The local addresses that listen on this port, as /proc/net prints them.
std::set<std::string> listening(int port) {
  std::set<std::string> found;
  for (const auto* table : {"/proc/net/tcp", "/proc/net/tcp6"}) {
    std::ifstream lines{table};
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words{line};
      std::string number;
      std::string local;
      std::string remote;
      std::string state;
      words >> number >> local >> remote >> state;
      const auto colon = local.find(':');
      if (state != "0A" || std::stoi(local.substr(colon + 1), nullptr, 16) != port) continue;
      found.insert(local.substr(0, colon));
    }
  }
  return found;
}

TEST_F(Program, is_heard_on_this_machine_only) {
  RunningProgram running{command({})};
  const auto service = addressesIn(running.readLine());
  const std::set<std::string> loopback{"0100007F"};
  EXPECT_EQ(listening(portOf(service.plain)), loopback);
  EXPECT_EQ(listening(portOf(service.secure)), loopback);
}

TEST_F(Program, approves_a_code_from_the_command_line) {
  RunningProgram running{command({})};
  const auto service = addressesIn(running.readLine());
  const auto port = std::to_string(service.port());
  const auto pending = Json::parse(post(service.plain + "/api/v1/enrollment/init",
                                        R"({"device_id":"A","device_name":"Phone","device_type":"ios"})"));
  const std::string code = pending.at("enrollment_code");
  const auto approved = runCommand({program, "approve", code, "--port", port});
  EXPECT_EQ(approved.status, 0) << approved.errors;
  EXPECT_EQ(approved.output, "The device was added to your family.\n");
  const auto again = runCommand({program, "approve", code, "--port", port});
  EXPECT_EQ(again.status, 1);
  EXPECT_THAT(again.errors, testing::HasSubstr("used already"));
  EXPECT_EQ(running.end(SIGTERM), 0);
  const auto alone = runCommand({program, "approve", code, "--port", port});
  EXPECT_EQ(alone.status, 1);
  EXPECT_THAT(alone.errors, testing::HasSubstr("Is it running?"));
}

TEST_F(Program, answers_at_the_address_that_it_is_told) {
  RunningProgram running{command({"--listen", "127.0.0.2"})};
  const auto service = addressesIn(running.readLine());
  EXPECT_THAT(service.secure, testing::StartsWith("https://127.0.0.2:"));
  EXPECT_EQ(runCommand({"curl", "--silent", "--fail", "--cacert", service.ca, "--max-time", "30",
                        service.secure + "/sandbox/requests"})
                .status,
            0);
}

TEST_F(Program, keeps_its_data_and_its_certificates_from_one_run_to_the_next) {
  const auto data = place("kept");
  std::string first;
  {
    RunningProgram running{command({"--data", data, "--seed", "demo"})};
    first = login(addressesIn(running.readLine())).at("parent_id");
    EXPECT_EQ(running.end(SIGTERM), 0);
  }
  const auto ca = runCommand({"cat", data + "/ca.pem"}).output;
  EXPECT_THAT(ca, testing::HasSubstr("BEGIN CERTIFICATE"));
  EXPECT_EQ(runCommand({"stat", "-c", "%a", data + "/server.key"}).output, "600\n");
  RunningProgram running{command({"--data", data, "--seed", "demo"})};
  EXPECT_EQ(login(addressesIn(running.readLine())).at("parent_id"), first) << "seeds are for new ground only";
  EXPECT_EQ(runCommand({"cat", data + "/ca.pem"}).output, ca);
}

TEST_F(Program, refuses_a_directory_that_holds_something_else) {
  const auto data = place("foreign");
  std::filesystem::create_directories(data);
  std::ofstream{data + "/sandbox.sqlite"} << std::string(4096, 'x');
  const auto result = runCommand(command({"--data", data}));
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, testing::HasSubstr("not one of this program's"));
}

TEST_F(Program, is_believed_only_by_those_who_know_its_authority) {
  RunningProgram running{command({})};
  const auto service = addressesIn(running.readLine());
  const auto url = service.secure + "/api/v1/children";
  constexpr int notVerified = 60;
  EXPECT_EQ(runCommand({"curl", "--silent", "--max-time", "30", url}).status, notVerified);
  EXPECT_EQ(runCommand({"curl", "--silent", "--max-time", "30", "--cacert", service.ca, url}).status, 0);
  EXPECT_EQ(
      runCommand({"curl", "--silent", "--max-time", "30", "--cacert", service.ca, "--tls-max", "1.1", url})
          .status,
      35);
}

// Adds list entries one after another over one connection and counts the answers.
class Writer {
 public:
  Writer(int port, std::string path, std::string token, std::string prefix)
      : connection_{port}, path_{std::move(path)}, token_{std::move(token)}, prefix_{std::move(prefix)} {}

  bool write() {
    const auto body = Json{{"domain", nameOf(answered_)}}.dump();
    connection_.send("POST " + path_ + " HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer " + token_ +
                     "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    if (statusOf(connection_.readAnswer()) != 200) return false;
    ++answered_;
    return true;
  }
  int answered() const { return answered_; }
  std::string nameOf(int number) const { return prefix_ + std::to_string(number) + ".example"; }

 private:
  RawConnection connection_;
  std::string path_;
  std::string token_;
  std::string prefix_;
  int answered_ = 0;
};

TEST_F(Program, killed_in_the_middle_of_a_thousand_writes_has_lost_nothing_that_it_answered) {
  static constexpr int writers = 4;
  static constexpr int writes = 1000;
  const auto data = place("killed");
  std::vector<std::unique_ptr<Writer>> writing;
  std::string path;
  {
    RunningProgram running{command({"--data", data, "--seed", "demo"})};
    const auto service = addressesIn(running.readLine());
    const std::string token = login(service).at("token");
    const auto children =
        Json::parse(runCommand({"curl", "--silent", "--header", "Authorization: Bearer " + token,
                                service.plain + "/api/v1/children"})
                        .output);
    path = "/api/v1/children/" + children.at("children")[0].at("id").get<std::string>() + "/policy/block";
    for (int i = 0; i < writers; ++i) {
      writing.push_back(std::make_unique<Writer>(service.port(), path, token, std::string(1, char('a' + i))));
    }
    std::atomic<int> total = 0;
    std::vector<std::thread> threads;
    for (auto& writer : writing) {
      threads.emplace_back([&] {
        while (total < writes && writer->write()) {
          if (++total == writes / 2) running.end(SIGKILL);
        }
      });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_GE(total, writes / 2);
    EXPECT_LT(total, writes);
  }
  RunningProgram running{command({"--data", data})};
  const auto service = addressesIn(running.readLine());
  const std::string token = login(service).at("token");
  const auto reply = runCommand(
      {"curl", "--silent", "--request", "PUT", "--header", "Authorization: Bearer " + token, "--data-binary",
       R"({"is_blocked":false,"block_mode":"blacklist"})", service.plain + path.substr(0, path.rfind('/'))});
  const auto kept = Json::parse(reply.output).at("blocked_domains").get<std::set<std::string>>();
  int answered = 0;
  for (const auto& writer : writing) {
    answered += writer->answered();
    for (int number = 0; number < writer->answered(); ++number) {
      EXPECT_TRUE(kept.contains(writer->nameOf(number))) << writer->nameOf(number);
    }
    EXPECT_FALSE(kept.contains(writer->nameOf(writer->answered() + 1)))
        << "nothing was written that wasn't asked for";
  }
  EXPECT_GE(answered, writes / 2);
}

}  // namespace
}  // namespace quillmar::sandbox::test
